#include "tree/CTreeRun.h"

#include <filesystem>
#include <iostream>
#include <iterator>
#include <optional>
#include <system_error>
#include <utility>

#include "app/ReplaceFile.h"
#include "tree/GalleriesPage.h"
#include "tree/Interruption.h"

namespace {

/// A gallery with much to do is saved this often: a kill costs no more.
constexpr std::chrono::seconds kSaveInterval(5);
/// How long folders that others have locked are waited for, all together.
constexpr std::chrono::seconds kLockPatience(60);
constexpr int kPollMilliseconds = 200;

/// The last part of a path.
std::string NameOf(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

}  // namespace

CTreeRun::CTreeRun(const STreeOptions& options, CWorkerPool& pool, CLog& log, CReport& report)
    : mOptions(options),
      mPool(pool),
      mLog(log),
      mReport(report),
      mFinder(options, report),
      mNextSave(Clock::now() + kSaveInterval),
      mEntries(options.mFolders.size())
{
}

void CTreeRun::Run()
{
    CountPictures();
    MakeGalleries();
    MakeLocked();
    mProgress.Clear();
    if (Interruption() != 0)
        Abandon();
    else if (mOptions.mPage)
        WritePages();
}

/// Makes the galleries that are open, and those that are still to be found.
void CTreeRun::MakeGalleries()
{
    do {
        FillPool();
    } while (TakeResults());
}

/// Ends the workers, and saves what they have finished.
void CTreeRun::Abandon()
{
    mPool.Kill();
    for (CGallery& gallery : mOpen)
        gallery.Abandon();
}

/// Only a terminal shows how far all is: elsewhere the folders are listed once.
void CTreeRun::CountPictures()
{
    if (!mProgress.IsShown())
        return;
    CReport unused;
    CFolderFinder finder(mOptions, unused);
    long total = 0;
    while (const std::optional<SFoundFolder> folder = finder.Next()) {
        if (Interruption() != 0)
            return;
        total += static_cast<long>(folder->mPictures.size());
    }
    mProgress.SetTotal(total);
}

void CTreeRun::FillPool()
{
    while (Interruption() == 0 && mPool.WantsWork() && (GivePicture() || OpenNext())) {
    }
}

/// Gives a picture of the gallery opened last to the pool; false when it has none left.
bool CTreeRun::GivePicture()
{
    if (mOpen.empty())
        return false;
    const auto gallery = std::prev(mOpen.end());
    const std::optional<SGalleryTask> task = gallery->NextPicture();
    if (!task) {
        CloseIfFinished(gallery);
        return false;
    }
    mTaken.insert({mNextTag, {gallery, task->mPicture}});
    mPool.Give(mNextTag++, task->mRequest);
    return true;
}

/// Opens another gallery; false when there is none.
bool CTreeRun::OpenNext()
{
    std::optional<SFoundFolder> folder = NextFolder();
    const bool isFound = folder.has_value();
    if (isFound)
        OpenGallery(*std::move(folder));
    return isFound;
}

std::optional<SFoundFolder> CTreeRun::NextFolder()
{
    while (!mAgain.empty()) {
        std::optional<SFoundFolder> folder = mFinder.Again(mAgain.back());
        mAgain.pop_back();
        if (folder)
            return folder;
    }
    return mFinder.Next();
}

/// Opens a gallery, or puts it off while its folder is locked.
void CTreeRun::OpenGallery(SFoundFolder folder)
{
    CGallery& gallery = mOpen.emplace_back(std::move(folder), mOptions, mReport);
    if (gallery.Open())
        return;
    mLocked.push_back(gallery.Folder());
    mOpen.pop_back();
}

/// Takes in what has become of pictures; false when none is under way, or the run is interrupted.
bool CTreeRun::TakeResults()
{
    if (Interruption() != 0 || !mPool.IsBusy())
        return false;
    for (const STaskResult& result : mPool.Wait(kPollMilliseconds)) {
        const auto taken = mTaken.find(result.mTag);
        const STaken picture = taken->second;
        mTaken.erase(taken);
        mLog.Add(result.mPrinted);
        picture.mGallery->Finish(picture.mPicture, result);
        CloseIfFinished(picture.mGallery);
    }
    SaveSometimes();
    ShowProgress();
    return true;
}

void CTreeRun::CloseIfFinished(Galleries::iterator gallery)
{
    if (!gallery->IsFinished())
        return;
    gallery->Close();
    mDone += static_cast<long>(gallery->PictureCount());
    AddEntry(gallery->Entry(), gallery->Folder().mRoot);
    mOpen.erase(gallery);
    ShowProgress();
}

/// Only pages need to know of all galleries; without them, memory doesn't grow with their number.
void CTreeRun::AddEntry(const SGalleryEntry& entry, std::size_t root)
{
    if (mOptions.mPage)
        mEntries[root].push_back(entry);
}

void CTreeRun::SaveSometimes()
{
    if (Clock::now() < mNextSave)
        return;
    for (CGallery& gallery : mOpen)
        gallery.Save();
    mNextSave = Clock::now() + kSaveInterval;
}

void CTreeRun::ShowProgress()
{
    if (!mProgress.IsShown())
        return;
    std::size_t done = 0;
    for (const CGallery& gallery : mOpen)
        done += gallery.DoneCount();
    mProgress.Show(mDone + static_cast<long>(done));
}

/// Tries the folders that were locked until they are free, but not for ever: whoever may read a
/// folder can hold a lock on it.
void CTreeRun::MakeLocked()
{
    const Clock::time_point end = Clock::now() + kLockPatience;
    bool isSaid = false;
    while (!mLocked.empty() && Interruption() == 0 && Clock::now() < end) {
        mAgain = std::exchange(mLocked, {});
        MakeGalleries();
        if (mLocked.empty())
            break;
        if (!isSaid) {
            mProgress.Clear();
            std::cerr << "tessel-tree: waiting for folders that another program has locked"
                      << std::endl;
        }
        isSaid = true;
        mPool.Wait(kPollMilliseconds);
    }
    for (const SFolder& folder : mLocked) {
        mReport.AddUnfinished(folder.mPath, "locked by another program");
        if (const std::optional<SFoundFolder> found = mFinder.Again(folder))
            AddEntry({folder.mRelative, static_cast<long>(found->mPictures.size()), ""},
                     folder.mRoot);
    }
}

void CTreeRun::WritePages()
{
    for (std::size_t i = 0; i < mOptions.mFolders.size(); ++i) {
        const std::string& root = mOptions.mFolders[i];
        const std::string path = root + "/" + kGalleriesFile;
        RemoveLeftDrafts(DraftFolderOf(path));
        std::error_code error;
        if (!std::filesystem::is_directory(root, error))
            continue;
        const std::string page = MakeGalleriesPage(NameOf(root), mEntries[i], mOptions.mThumbSize);
        const bool isFile = std::filesystem::symlink_status(path, error).type() ==
                            std::filesystem::file_type::regular;
        if (!(isFile && HasContents(path, page)) && !ReplaceFile(path, page))
            mReport.AddFailure(path);
    }
}
