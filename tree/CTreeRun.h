#ifndef TESSEL_TREE_CTREERUN_H
#define TESSEL_TREE_CTREERUN_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tree/CFolderFinder.h"
#include "tree/CGallery.h"
#include "tree/CLog.h"
#include "tree/CProgress.h"
#include "tree/CReport.h"
#include "tree/CWorkerPool.h"
#include "tree/STreeOptions.h"

/// A run over all galleries: it finds and opens them, hands their pictures to the workers, of as
/// many galleries at once as it takes to keep all of them busy, and closes each gallery when its
/// last picture has come back. One thread.
class CTreeRun
{
public:
    /// What the run needs is owned by the caller and outlives it.
    CTreeRun(const STreeOptions& options, CWorkerPool& pool, CLog& log, CReport& report);

    /// Makes all galleries and their pages. Returns early when the run is interrupted: what is
    /// finished is saved then.
    void Run();

private:
    using Clock = std::chrono::steady_clock;
    using Galleries = std::list<CGallery>;
    struct STaken
    {
        Galleries::iterator mGallery;
        std::size_t mPicture;
    };

    void CountPictures();
    void MakeGalleries();
    void MakeLocked();
    void FillPool();
    bool GivePicture();
    bool OpenNext();
    std::optional<SFoundFolder> NextFolder();
    void OpenGallery(SFoundFolder folder);
    bool TakeResults();
    void CloseIfFinished(Galleries::iterator gallery);
    void AddEntry(const SGalleryEntry& entry, std::size_t root);
    void SaveSometimes();
    void ShowProgress();
    void Abandon();
    void WritePages();

    const STreeOptions& mOptions;
    CWorkerPool& mPool;
    CLog& mLog;
    CReport& mReport;
    CFolderFinder mFinder;
    CProgress mProgress;
    Galleries mOpen;                         // the galleries in work, in the order of opening
    std::vector<SFolder> mLocked;            // put off
    std::vector<SFolder> mAgain;             // were put off, and are to be opened next
    std::map<std::uint64_t, STaken> mTaken;  // pictures that are with the workers
    std::uint64_t mNextTag = 0;
    long mDone = 0;  // pictures
    Clock::time_point mNextSave;
    std::vector<std::vector<SGalleryEntry>> mEntries;  // of each named folder, for its page
};

#endif
