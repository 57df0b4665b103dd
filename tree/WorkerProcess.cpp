#include "tree/WorkerProcess.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <iostream>
#include <string_view>
#ifdef __linux__
#include <sys/prctl.h>
#endif

namespace {

/// No process of this program opens more descriptors.
constexpr int kMostDescriptors = 4096;
constexpr std::size_t kPieceBytes = 1 << 16;

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

/// Closes all descriptors from a number on: those of other workers, and the locks of galleries.
void CloseFrom(int first)
{
#ifdef CLOSE_RANGE_CLOEXEC  // there is the function, too; many times as fast as what follows
    if (close_range(static_cast<unsigned>(first), ~0U, 0) == 0)
        return;
#endif
    for (int file = first; file < kMostDescriptors; ++file)
        close(file);
}

/// Does what is requested until nobody can request any more.
void Serve(const std::function<std::string(const std::string&)>& work)
{
    std::string received;
    std::string request;
    std::array<char, kPieceBytes> piece = {};
    for (;;) {
        while (TakePart(received, request)) {
            const std::string reply = work(request);
            std::cout.flush();
            if (!WriteWhole(STDOUT_FILENO, std::string(1, '\0') + reply + '\0'))
                return;
        }
        const ssize_t count = read(STDIN_FILENO, piece.data(), piece.size());
        if (count == 0 || (count < 0 && errno != EINTR))
            return;
        received.append(piece.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
    }
}

}  // namespace

bool TakePart(std::string& text, std::string& part)
{
    const auto end = text.find('\0');
    if (end == std::string::npos)
        return false;
    part = text.substr(0, end);
    text.erase(0, end + 1);
    return true;
}

void RunWorker(pid_t parent, int requests, int results,
               const std::function<std::string(const std::string& request)>& work)
{
    EndWithParent(parent);
    // A key press on the terminal reaches all processes; the first one decides what it means.
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGTERM, SIG_DFL);
    std::signal(SIGHUP, SIG_DFL);
    dup2(requests, STDIN_FILENO);
    dup2(results, STDOUT_FILENO);
    dup2(results, STDERR_FILENO);
    CloseFrom(STDERR_FILENO + 1);
    try {
        Serve(work);
    } catch (const std::exception& error) {
        // Further up stand the objects of the process that this one is a copy of: they would save,
        // and kill, a second time.
        std::cerr << error.what() << std::endl;
        std::_Exit(EXIT_FAILURE);
    }
    std::_Exit(EXIT_SUCCESS);
}
