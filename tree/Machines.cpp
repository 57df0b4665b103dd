#include "tree/Machines.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tree/CFolderFinder.h"
#include "tree/CReport.h"
#include "tree/Interruption.h"
#include "tree/STreeOptions.h"

extern char** environ;  // NOLINT(readability-redundant-declaration): not in every system's headers

namespace {

/// Galleries that a machine is given at a time: few enough that all machines end together, and
/// enough that starting the program there doesn't count.
constexpr int kGalleriesAtATime = 20;

std::string Joined(const std::vector<std::string>& parts)
{
    std::string text;
    for (const std::string& part : parts)
        text += (text.empty() ? "" : ",") + part;
    return text;
}

std::vector<std::string> ParallelCommand(const STreeOptions& options)
{
    std::vector<std::string> command{"parallel",   "--will-cite",
                                     "-0",         "--filter-hosts",
                                     "-n",         std::to_string(kGalleriesAtATime),
                                     "-j",         "1",
                                     "--sshlogin", Joined(options.mMachines),
                                     "tessel-tree"};
    // A shell reads the command: numbers and names of options need no care, and what is excluded
    // doesn't count for folders that are named.
    STreeOptions handed = options;
    handed.mOnly = true;
    handed.mExcluded.clear();
    const std::vector<std::string> arguments = ArgumentsForMachine(handed);
    command.insert(command.end(), arguments.begin(), arguments.end());
    command.insert(command.end(), {"--", "{}"});
    return command;
}

/// The environment without the settings that change what GNU parallel does, and with those that it
/// can't do without.
std::vector<std::string> Environment()
{
    std::vector<std::string> entries{"SHELL=/bin/sh"};
    for (char** entry = environ; *entry; ++entry) {
        const std::string_view text = *entry;
        if (!text.starts_with("PARALLEL") && !text.starts_with("SHELL="))
            entries.emplace_back(text);
    }
    if (!std::getenv("HOME"))
        entries.emplace_back("HOME=/");
    return entries;
}

/// As functions of the system take texts: an array with a null at its end.
std::vector<char*> Pointers(std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (std::string& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

/// Starts GNU parallel with `input` as its standard input and its output on standard error; -1
/// where that can't be.
pid_t Start(const STreeOptions& options, int input)
{
    std::vector<std::string> command = ParallelCommand(options);
    std::vector<std::string> environment = Environment();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, input, STDIN_FILENO);
    posix_spawn_file_actions_adddup2(&actions, STDERR_FILENO, STDOUT_FILENO);
    pid_t pid = -1;
    const int error = posix_spawnp(&pid, command[0].c_str(), &actions, nullptr,
                                   Pointers(command).data(), Pointers(environment).data());
    posix_spawn_file_actions_destroy(&actions);
    return error == 0 ? pid : -1;
}

/// Writes the folders of all galleries, each with a zero byte behind it, and closes the pipe.
void SendGalleries(const STreeOptions& options, int output)
{
    CReport unused;  // the run that follows reports
    CFolderFinder finder(options, unused);
    std::FILE* const stream = fdopen(output, "wb");
    bool sent = stream != nullptr;
    while (sent && Interruption() == 0) {
        const std::optional<SFoundFolder> folder = finder.Next();
        if (!folder)
            break;
        sent = std::fwrite(folder->mPath.c_str(), folder->mPath.size() + 1, 1, stream) == 1;
    }
    if (stream)
        std::fclose(stream);
}

/// Waits for GNU parallel, which is ended when the run is interrupted.
void WaitFor(pid_t pid)
{
    int status = 0;
    do {
        if (Interruption() != 0)
            kill(pid, SIGTERM);
    } while (waitpid(pid, &status, 0) < 0 && errno == EINTR);
}

}  // namespace

bool RunOnMachines(const STreeOptions& options)
{
    int files[2];
    if (pipe(files) != 0)
        return false;
    fcntl(files[1], F_SETFD, FD_CLOEXEC);  // or GNU parallel would wait for itself
    const pid_t pid = Start(options, files[0]);
    close(files[0]);
    if (pid < 0) {
        close(files[1]);
        return false;
    }
    SendGalleries(options, files[1]);
    WaitFor(pid);
    return true;
}
