#include <sys/resource.h>

#include <algorithm>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "app/Process.h"
#include "tree/CLog.h"
#include "tree/CReport.h"
#include "tree/CTreeRun.h"
#include "tree/CWorkerPool.h"
#include "tree/Escape.h"
#include "tree/Interruption.h"
#include "tree/Machines.h"
#include "tree/STreeOptions.h"
#include "tree/ThumbWork.h"

namespace {

constexpr int kWrongUsage = 2;
constexpr int kSignalStatus = 128;  // added to the signal's number, as shells do

int Stop(const std::string& reason, int status)
{
    std::cerr << "tessel-tree: " << Printable(reason) << std::endl;
    return status;
}

/// A path that leads to the same place on every machine, and ends in the folder's name. What stands
/// above a link is known to the system alone.
std::string WholePath(const std::string& folder)
{
    const std::filesystem::path absolute = std::filesystem::absolute(folder);
    std::string path = absolute.lexically_normal().string();
    if (std::find(absolute.begin(), absolute.end(), "..") != absolute.end()) {
        std::error_code error;
        const std::filesystem::path real = std::filesystem::canonical(absolute, error);
        path = error ? absolute.string() : real.string();
    }
    if (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

/// As many jobs as the descriptors of a process do for, but one at least.
std::size_t MostJobs()
{
    constexpr rlim_t kForOneJob = 6;  // two pipes, and the galleries of four pictures in hand
    constexpr rlim_t kForOthers = 10;
    struct rlimit limit = {};
    if (getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur < kForOthers + kForOneJob)
        return 1;
    return static_cast<std::size_t>((limit.rlim_cur - kForOthers) / kForOneJob);
}

std::size_t JobCount(const STreeOptions& options)
{
    const unsigned cores = std::thread::hardware_concurrency();
    const int jobs = options.mJobs > 0 ? options.mJobs : std::max(1, static_cast<int>(cores));
    return std::min(static_cast<std::size_t>(jobs), MostJobs());
}

int MakeGalleries(const STreeOptions& options, int wakeFile)
{
    const auto work = [&options](const std::string& request) {
        return MakeRequestedThumb(request, options);
    };
    CWorkerPool pool(JobCount(options), work, wakeFile);
    CLog log;
    CReport report;
    if (!options.mLog.empty() && !log.Open(options.mLog))
        return Stop("the log can't be written: " + options.mLog, EXIT_FAILURE);
    if (!options.mMachines.empty() && !RunOnMachines(options))
        return Stop("GNU parallel can't be started", EXIT_FAILURE);
    CTreeRun(options, pool, log, report).Run();
    if (!log.Close())
        report.AddFailure(options.mLog);
    if (Interruption() != 0)
        return kSignalStatus + Interruption();
    report.Write(std::cout);
    return report.IsComplete() ? EXIT_SUCCESS : EXIT_FAILURE;
}

int RunCommand(const std::vector<std::string>& arguments)
{
    STreeOptions options = ParseOptions(arguments);
    if (options.mHelp) {
        std::cout << UsageText() << std::flush;
        return EXIT_SUCCESS;
    }
    if (options.mVersion) {
        std::cout << "tessel-tree " TESSEL_VERSION << std::endl;
        return EXIT_SUCCESS;
    }
    for (std::string& folder : options.mFolders)
        folder = WholePath(folder);
    return MakeGalleries(options, WatchInterruption());
}

}  // namespace

int main(int argc, char** argv)
{
    PrepareProcess();
    try {
        return RunCommand({argv + 1, argv + argc});
    } catch (const CUsageError& error) {
        return Stop(error.what(), kWrongUsage);
    } catch (const std::exception& error) {
        return Stop(error.what(), EXIT_FAILURE);
    }
}
