#include "tree/CWorkerPool.h"

#include <unistd.h>

#include <csignal>
#include <map>

#include "tests/support/TestSupport.h"

using testing::SizeIs;

const std::string kMuch(1 << 20, 'x');

/// What a request makes a worker do, besides replying "done" and the request.
static std::string Work(const std::string& request)
{
    std::cout << "out " << request << std::endl;
    std::cerr << "err" << std::endl;
    if (request == "crash")
        std::raise(SIGKILL);
    if (request == "exit")
        std::exit(3);
    if (request == "much")
        std::cout << kMuch << std::endl;
    if (request == "files")
        return std::to_string(lseek(9, 0, SEEK_CUR));
    return "done " + request;
}

/// The results of requests, by the requests' numbers.
static std::map<std::size_t, STaskResult> ResultsOf(CWorkerPool& pool, const Names& requests)
{
    for (std::size_t i = 0; i < requests.size(); ++i)
        pool.Give(i, requests[i]);
    std::map<std::size_t, STaskResult> results;
    while (pool.IsBusy()) {
        for (const STaskResult& result : pool.Wait(1000))
            results[static_cast<std::size_t>(result.mTag)] = result;
    }
    return results;
}

struct CWorkerPoolTest : testing::TestWithParam<std::size_t>
{
    CWorkerPoolTest() { std::signal(SIGPIPE, SIG_IGN); }
    CWorkerPool mPool{GetParam(), Work, -1};
};

INSTANTIATE_TEST_SUITE_P(Workers, CWorkerPoolTest, testing::Values(1, 3));

TEST_P(CWorkerPoolTest, EachTaskComesBackWithWhatItPrintedAlsoFromAWorkerThatEnds)
{
    const Names requests{"a", "crash", "line\nfeed", "exit", "much", "crash", "crash", ""};
    const std::map<std::string, std::string> ends{{"crash", "ended by signal 9"},
                                                  {"exit", "ended with status 3"}};
    const auto results = ResultsOf(mPool, requests);
    ASSERT_THAT(results, SizeIs(requests.size()));
    for (const auto& [tag, result] : results) {
        const std::string& request = requests[tag];
        SCOPED_TRACE(request);
        const auto end = ends.find(request);
        const std::string more = request == "much" ? kMuch + "\n" : "";
        const std::string printed = "out " + request + "\nerr\n" + more;
        EXPECT_EQ(result.mPrinted.substr(0, 100), printed.substr(0, 100));
        EXPECT_EQ(result.mPrinted.size(), printed.size());
        EXPECT_EQ(result.mReply, end == ends.end() ? "done " + request : "");
        EXPECT_EQ(result.mEnd, end == ends.end() ? "" : end->second);
    }
}

TEST_P(CWorkerPoolTest, WorkersAreKeptBusyAndNotFlooded)
{
    std::uint64_t given = 0;
    while (mPool.WantsWork() && given < 100)
        mPool.Give(given++, "a");
    EXPECT_GE(given, 2 * GetParam());
    EXPECT_LT(given, 100U);
}

TEST_P(CWorkerPoolTest, AWorkerThatIsStartedLaterKeepsNothingElseOpen)
{
    dup2(STDIN_FILENO, 9);
    const auto results = ResultsOf(mPool, {"crash", "crash", "crash", "files"});
    close(9);
    EXPECT_EQ(results.at(3).mReply, "-1");
}

TEST(CWorkerPool, AByteAtTheWakeFileEndsTheWait)
{
    int files[2];
    ASSERT_EQ(pipe(files), 0);
    CWorkerPool pool(1, Work, files[0]);
    ASSERT_EQ(write(files[1], "", 1), 1);
    EXPECT_THAT(pool.Wait(600'000), SizeIs(0));
    close(files[0]);
    close(files[1]);
}

TEST(CWorkerPool, NothingComesBackAfterAKill)
{
    CWorkerPool pool(2, Work, -1);
    pool.Give(1, "a");
    pool.Kill();
    EXPECT_FALSE(pool.IsBusy());
    EXPECT_THAT(pool.Wait(0), SizeIs(0));
}

TEST(CWorkerPool, WithoutWorkersTasksFail)
{
    CWorkerPool pool(0, Work, -1);
    EXPECT_TRUE(pool.WantsWork());
    const auto results = ResultsOf(pool, {"a"});
    EXPECT_EQ(results.at(0).mEnd, "never started");
}
