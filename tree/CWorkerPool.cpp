#include "tree/CWorkerPool.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <initializer_list>
#include <iostream>
#include <utility>

#include "tree/WorkerProcess.h"

namespace {

/// Tasks that a worker has in hand: the one that it does, and those it goes on with while this
/// process is busy.
constexpr std::size_t kTasksInHand = 4;
constexpr std::size_t kPieceBytes = 1 << 16;

void CloseFile(int& file)
{
    if (file >= 0)
        close(file);
    file = -1;
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

}  // namespace

CWorkerPool::CWorkerPool(std::size_t workers, Work work, int wakeFile)
    : mWork(std::move(work)), mWakeFile(wakeFile), mWorkers(workers)
{
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

void CWorkerPool::StartAll()
{
    for (SWorker& worker : mWorkers)
        Start(worker);
    // Wait could not ask for more files than a process may open, not even for none in their place.
    std::erase_if(mWorkers, [](const SWorker& worker) { return worker.mPid < 0; });
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
    if (pid == 0)
        RunWorker(parent, down[0], up[1], mWork);
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
    if (!HasWorkers())
        StartAll();
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
