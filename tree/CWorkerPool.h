#ifndef TESSEL_TREE_CWORKERPOOL_H
#define TESSEL_TREE_CWORKERPOOL_H

#include <sys/types.h>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

/// What became of a task.
struct STaskResult
{
    std::uint64_t mTag = 0;  ///< the caller's
    std::string mPrinted;    ///< what the work wrote to standard output and standard error
    std::string mReply;      ///< what it returned; empty where the worker ended
    std::string mEnd;        ///< how the worker ended, in words; empty where it did not
    bool mIsKilled = false;  ///< it did not end by itself, but by a signal
};

/// Processes that do work on request. Each is a copy of this process as it was when the first task
/// was given, without what was open, and does one task after the other. Whatever ends a worker,
/// such as a crash or a kill, costs the task that it had begun, and another worker takes its place.
/// The pool knows nothing of what the work is for. The workers end with the pool, and also when
/// this process is killed.
///
/// A worker's standard output and standard error lead back to the pool, through one pipe for each
/// worker: the text of a task ends with a zero byte, and so does the reply that follows it. Neither
/// text nor reply may hold a zero byte; names of files and libjpeg's messages don't.
///
/// Used by one thread, in a process that ignores SIGPIPE.
class CWorkerPool
{
public:
    /// The work: takes a request and returns the reply.
    using Work = std::function<std::string(const std::string& request)>;

    /// A pool of so many workers, or as many of them as the system allows. `wakeFile` is a
    /// descriptor at which Wait returns as soon as it can be read; -1 for none.
    CWorkerPool(std::size_t workers, Work work, int wakeFile);
    CWorkerPool(const CWorkerPool&) = delete;
    CWorkerPool& operator=(const CWorkerPool&) = delete;
    /// Ends the workers at once, whatever they do.
    ~CWorkerPool();

    /// True while a worker has less in hand than it should, so that none waits for this process.
    /// Also where no worker could be started: what is given then comes back as failed.
    bool WantsWork() const;
    /// Hands a task to a worker. The first one starts them all.
    void Give(std::uint64_t tag, const std::string& request);
    /// True while tasks are under way.
    bool IsBusy() const;
    /// Waits for results, `milliseconds` at most. Returns none when the time is over, or when the
    /// wake file can be read.
    std::vector<STaskResult> Wait(int milliseconds);
    /// Ends the workers at once. The tasks under way are lost, and no result comes of them.
    void Kill();

private:
    struct STask
    {
        std::uint64_t mTag;
        std::string mRequest;
    };
    struct SWorker
    {
        pid_t mPid = -1;  // -1 while there is no process
        int mRequests = -1;
        int mResults = -1;
        std::deque<STask> mTasks;  // handed over, the oldest first
        std::string mUnsent;       // requests that its pipe has no room for yet
        std::string mReceived;     // text and reply of the oldest task, as far as they have come
    };

    bool HasWorkers() const;
    void StartAll();
    bool Start(SWorker& worker);
    SWorker* FreeWorker();
    void Distribute();
    void Send(SWorker& worker) const;
    void Receive(SWorker& worker, std::vector<STaskResult>& results);
    void TakeReplies(SWorker& worker, std::vector<STaskResult>& results) const;
    void Bury(SWorker& worker, std::vector<STaskResult>& results);
    void GiveUp(std::vector<STaskResult>& results);

    Work mWork;
    int mWakeFile;
    std::vector<SWorker> mWorkers;
    std::deque<STask> mWaiting;  // for a worker with a free hand
};

#endif
