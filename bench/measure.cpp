// Runs a command, its output dropped, and prints what it took as a line of JSON: seconds of
// processor, all that it started included, and of wall time; KiB of memory at the peak, of its
// largest process. A program of its own, as the system counts the peak of whoever starts a command
// as the command's own, and an interpreter's is higher than what small runs of tessel need.
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>

namespace {

double Seconds(const timeval& time)
{
    return static_cast<double>(time.tv_sec) + 1e-6 * static_cast<double>(time.tv_usec);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
        return 2;
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0) {
        dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
        execvp(argv[1], argv + 1);
        std::perror(argv[1]);
        _exit(127);
    }
    int status = 0;
    rusage usage = {};
    if (child < 0 || wait4(child, &status, 0, &usage) < 0)
        return 1;
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    std::printf("{\"cpu\": %.6f, \"wall\": %.6f, \"peak\": %ld}\n",
                Seconds(usage.ru_utime) + Seconds(usage.ru_stime), wall.count(), usage.ru_maxrss);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
