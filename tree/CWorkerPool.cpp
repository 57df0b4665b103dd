#include "tree/CWorkerPool.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <initializer_list>
#include <iostream>
#include <string_view>
#include <utility>
#ifdef __linux__
#include <sys/prctl.h>
#endif

namespace {

/// Tasks that a worker has in hand: the one that it does, and those it goes on with while this
/// process is busy.
constexpr std::size_t kTasksInHand = 4;
/// No process of this program opens more descriptors.
constexpr int kMostDescriptors = 4096;
constexpr std::size_t kPieceBytes = 1 << 16;

void CloseFile(int& file)
{
    if (file >= 0)
        close(file);
    file = -1;
}

bool WriteWhole(int file, std::string_view text)
{
    while (!text.empty()) {
        const ssize_t count = write(file, text.data(), text.size());
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

/// Lets this process end at once when its parent does, whatever it does: a picture that it finished
/// later could take the place of what the next run has made. Linux alone has this; elsewhere a
/// worker ends with the picture that it is at.
void EndWithParent(pid_t parent)
{
#ifdef __linux__
    prctl(PR_SET_PDEATHSIG, SIGKILL);
#endif
    if (getppid() != parent)
        std::_Exit(EXIT_FAILURE);
}

/// Waits for the end of a process, and says how it came.
void TakeEnd(pid_t pid, STaskResult& result)
{
    int status = 0;
    while (waitpid(pid, &status, 0) < 0) {
        if (errno != EINTR)
            return;
    }
    result.mIsKilled = WIFSIGNALED(status);
    result.mEnd = result.mIsKilled ? "ended by signal " + std::to_string(WTERMSIG(status))
                                   : "ended with status " + std::to_string(WEXITSTATUS(status));
}

/// Takes the part in front of the next zero byte out of a text; false where there is none.
bool TakePart(std::string& text, std::string& part)
{
    const auto end = text.find('\0');
    if (end == std::string::npos)
        return false;
    part = text.substr(0, end);
    text.erase(0, end + 1);
    return true;
}

/// Does what is requested until nobody can request any more.
void Serve(int requests, const CWorkerPool::Work& work)
{
    std::string received;
    std::string request;
    std::array<char, kPieceBytes> piece;
    for (;;) {
        while (TakePart(received, request)) {
            const std::string reply = work(request);
            std::cout.flush();
            if (!WriteWhole(STDOUT_FILENO, std::string(1, '\0') + reply + '\0'))
                return;
        }
        const ssize_t count = read(requests, piece.data(), piece.size());
        if (count == 0 || (count < 0 && errno != EINTR))
            return;
        received.append(piece.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
}

}  // namespace

CWorkerPool::CWorkerPool(std::size_t workers, Work work, int wakeFile)
    : mWork(std::move(work)), mWakeFile(wakeFile), mWorkers(workers)
{
    for (SWorker& worker : mWorkers)
        Start(worker);
    // Wait could not ask for more files than a process may open, not even for none in their place.
    std::erase_if(mWorkers, [](const SWorker& worker) { return worker.mPid < 0; });
}

CWorkerPool::~CWorkerPool()
{
    Kill();
}

void CWorkerPool::Kill()
{
    mWaiting.clear();
    for (SWorker& worker : mWorkers) {
        if (worker.mPid > 0)
            kill(worker.mPid, SIGKILL);
    }
    for (SWorker& worker : mWorkers) {
        STaskResult unused;
        if (worker.mPid > 0)
            TakeEnd(worker.mPid, unused);
        CloseFile(worker.mRequests);
        CloseFile(worker.mResults);
        worker = SWorker{};
    }
}

/// Starts a worker in a free place; false where the system has no process or pipe for it.
bool CWorkerPool::Start(SWorker& worker)
{
    int down[2] = {-1, -1};
    int up[2] = {-1, -1};
    const bool piped = pipe(down) == 0 && pipe(up) == 0;
    std::cout.flush();  // or the copy would write it again
    const pid_t parent = getpid();
    const pid_t pid = piped ? fork() : -1;
    if (pid == 0) {
        EndWithParent(parent);
        RunWorker(down[0], up[1]);
    }
    CloseFile(down[0]);
    CloseFile(up[1]);
    if (pid < 0) {
        CloseFile(down[1]);
        CloseFile(up[0]);
        return false;
    }
    for (const int file : {down[1], up[0]}) {
        fcntl(file, F_SETFL, O_NONBLOCK);
        fcntl(file, F_SETFD, FD_CLOEXEC);
    }
    worker.mPid = pid;
    worker.mRequests = down[1];
    worker.mResults = up[0];
    return true;
}

/// The life of a worker, in its own process. Whatever else this process has open is the others'.
void CWorkerPool::RunWorker(int requests, int results) const
{
    // A key press on the terminal reaches all processes; the first one decides what it means.
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGTERM, SIG_DFL);
    std::signal(SIGHUP, SIG_DFL);
    dup2(results, STDOUT_FILENO);
    dup2(results, STDERR_FILENO);
    for (int file = STDERR_FILENO + 1; file < kMostDescriptors; ++file) {
        if (file != requests)
            close(file);
    }
    try {
        Serve(requests, mWork);
    } catch (const std::exception& error) {
        // Further up stand the objects of the process that this one is a copy of: they would save,
        // and kill, a second time.
        std::cerr << error.what() << std::endl;
        std::_Exit(EXIT_FAILURE);
    }
    std::_Exit(EXIT_SUCCESS);
}

/// The worker with the least in hand; null when all have enough.
CWorkerPool::SWorker* CWorkerPool::FreeWorker()
{
    SWorker* best = nullptr;
    for (SWorker& worker : mWorkers) {
        if (worker.mPid > 0 && (!best || worker.mTasks.size() < best->mTasks.size()))
            best = &worker;
    }
    return best && best->mTasks.size() < kTasksInHand ? best : nullptr;
}

bool CWorkerPool::HasWorkers() const
{
    return std::any_of(mWorkers.begin(), mWorkers.end(),
                       [](const SWorker& worker) { return worker.mPid > 0; });
}

bool CWorkerPool::WantsWork() const
{
    const auto isFree = [](const SWorker& worker) {
        return worker.mPid > 0 && worker.mTasks.size() < kTasksInHand;
    };
    return mWaiting.empty() &&
           (std::any_of(mWorkers.begin(), mWorkers.end(), isFree) || !HasWorkers());
}

bool CWorkerPool::IsBusy() const
{
    return !mWaiting.empty() ||
           std::any_of(mWorkers.begin(), mWorkers.end(),
                       [](const SWorker& worker) { return !worker.mTasks.empty(); });
}

void CWorkerPool::Give(std::uint64_t tag, const std::string& request)
{
    mWaiting.push_back({tag, request});
    Distribute();
}

void CWorkerPool::Distribute()
{
    while (!mWaiting.empty()) {
        SWorker* const worker = FreeWorker();
        if (!worker)
            return;
        worker->mUnsent += mWaiting.front().mRequest + '\0';
        worker->mTasks.push_back(std::move(mWaiting.front()));
        mWaiting.pop_front();
        Send(*worker);
    }
}

/// Sends as much as the pipe takes. An error shows when the results end.
void CWorkerPool::Send(SWorker& worker) const
{
    const ssize_t count = write(worker.mRequests, worker.mUnsent.data(), worker.mUnsent.size());
    if (count > 0)
        worker.mUnsent.erase(0, static_cast<std::size_t>(count));
}

std::vector<STaskResult> CWorkerPool::Wait(int milliseconds)
{
    std::vector<STaskResult> results;
    GiveUp(results);
    std::vector<pollfd> files{{mWakeFile, POLLIN, 0}};
    for (const SWorker& worker : mWorkers) {
        files.push_back({worker.mResults, POLLIN, 0});
        files.push_back({worker.mUnsent.empty() ? -1 : worker.mRequests, POLLOUT, 0});
    }
    if (poll(files.data(), files.size(), results.empty() ? milliseconds : 0) <= 0)
        return results;
    for (std::size_t i = 0; i < mWorkers.size(); ++i) {
        if (files[2 * i + 2].revents != 0)
            Send(mWorkers[i]);
        if (files[2 * i + 1].revents != 0)
            Receive(mWorkers[i], results);
    }
    Distribute();
    return results;
}

void CWorkerPool::Receive(SWorker& worker, std::vector<STaskResult>& results)
{
    std::array<char, kPieceBytes> piece;
    const ssize_t count = read(worker.mResults, piece.data(), piece.size());
    if (count > 0) {
        worker.mReceived.append(piece.data(), static_cast<std::size_t>(count));
        TakeReplies(worker, results);
    } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
        Bury(worker, results);
    }
}

void CWorkerPool::TakeReplies(SWorker& worker, std::vector<STaskResult>& results) const
{
    while (std::count(worker.mReceived.begin(), worker.mReceived.end(), '\0') >= 2) {
        STaskResult result;
        TakePart(worker.mReceived, result.mPrinted);
        TakePart(worker.mReceived, result.mReply);
        if (worker.mTasks.empty())
            continue;
        result.mTag = worker.mTasks.front().mTag;
        worker.mTasks.pop_front();
        results.push_back(std::move(result));
    }
}

/// Puts a new worker in the place of one that has ended. The task that it did has failed, the
/// others in its hand wait for another worker.
void CWorkerPool::Bury(SWorker& worker, std::vector<STaskResult>& results)
{
    CloseFile(worker.mRequests);
    CloseFile(worker.mResults);
    STaskResult result;
    TakeEnd(worker.mPid, result);
    if (!worker.mTasks.empty()) {
        result.mTag = worker.mTasks.front().mTag;
        if (!TakePart(worker.mReceived, result.mPrinted))
            result.mPrinted = worker.mReceived;
        worker.mTasks.pop_front();
        results.push_back(std::move(result));
    }
    mWaiting.insert(mWaiting.begin(), worker.mTasks.begin(), worker.mTasks.end());
    worker = SWorker{};
    Start(worker);
}

/// Fails the tasks that wait where there is no worker at all.
void CWorkerPool::GiveUp(std::vector<STaskResult>& results)
{
    for (; !HasWorkers() && !mWaiting.empty(); mWaiting.pop_front())
        results.push_back({mWaiting.front().mTag, "", "", "never started", false});
}
