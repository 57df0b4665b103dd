// Runs a command, its output dropped, and prints what it took as a line of JSON: seconds of
// processor and wall time, KiB of memory at the peak, page faults. A program of its own, because
// the system counts the peak of the process that starts a command as the command's own, and that of
// an interpreter is higher than what small runs of tessel need.
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

[[noreturn]] void Run(char** command)
{
    dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
    execvp(command[0], command);
    std::perror(command[0]);
    _exit(127);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc < 2)
        return 2;
    const auto start = std::chrono::steady_clock::now();
    const pid_t child = fork();
    if (child == 0)
        Run(argv + 1);
    int status = 0;
    rusage usage = {};
    if (child < 0 || wait4(child, &status, 0, &usage) < 0)
        return 1;
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - start;
    std::printf("{\"cpu\": %.6f, \"wall\": %.6f, \"peak\": %ld, \"faults\": %ld}\n",
                Seconds(usage.ru_utime) + Seconds(usage.ru_stime), wall.count(), usage.ru_maxrss,
                usage.ru_minflt);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
