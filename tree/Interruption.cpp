#include "tree/Interruption.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <initializer_list>

namespace {

volatile std::sig_atomic_t signalThatCame = 0;
int wakePipe[2] = {-1, -1};

void Note(int signal)
{
    const int error = errno;
    if (signalThatCame == 0)
        signalThatCame = signal;
    // A full pipe wakes as well.
    static_cast<void>(!write(wakePipe[1], "", 1));
    errno = error;
}

}  // namespace

int WatchInterruption()
{
    if (pipe(wakePipe) != 0)
        return -1;
    for (const int file : wakePipe) {
        fcntl(file, F_SETFL, O_NONBLOCK);
        fcntl(file, F_SETFD, FD_CLOEXEC);
    }
    struct sigaction action = {};
    action.sa_handler = Note;
    sigemptyset(&action.sa_mask);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        struct sigaction before = {};
        sigaction(signal, nullptr, &before);
        // What was ignored when the program was started, such as by nohup, stays so.
        if (before.sa_handler != SIG_IGN)
            sigaction(signal, &action, nullptr);
    }
    return wakePipe[0];
}

int Interruption()
{
    return signalThatCame;
}
