#include "tree/CGallery.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <utility>

#include "app/GalleryLayout.h"
#include "app/OutputFile.h"
#include "app/ReplaceFile.h"
#include "tree/AlbumPage.h"
#include "tree/CReport.h"
#include "tree/CWorkerPool.h"
#include "tree/PageFrame.h"
#include "tree/ThumbWork.h"
#include "util/CFileIO.h"

namespace {

/// The path from a gallery's folder to a file in its thumbnail folder.
std::string InThumbs(const std::string& name)
{
    return std::string(kThumbFolder) + '/' + name;
}

}  // namespace

CGallery::CGallery(SFoundFolder folder, const STreeOptions& options, CReport& report)
    : mFolder(std::move(folder)),
      mOptions(options),
      mReport(report),
      mPaths(mFolder.mPath),
      mNames(mFolder.mPictures),
      mMade(mNames.size()),
      mReported(mNames.size()),
      mEntry{mFolder.mRelative, static_cast<long>(mNames.size()), ""}
{
}

/// False when another process holds the lock. A file system without locks lets the run go on.
bool CGallery::Lock()
{
    mIsLocked = flock(Handle(), LOCK_EX | LOCK_NB) == 0;
    return mIsLocked || errno != EWOULDBLOCK;
}

bool CGallery::Open()
{
    if (!Lock())
        return false;
    mHasThumbs = mFolder.mHasThumbFolder || MakeThumbFolder(mPaths.mThumbFolder, mPaths.mDbase);
    if (!mHasThumbs)
        Fail("tessel is a link that is not followed");
    mHasDatabase =
        mHasThumbs && ReadDatabase(InThumbs(kDbaseFile).c_str(), &mRecords, &mSaved, Handle());
    if (mHasThumbs && !mHasDatabase)
        Fail("the database can't be read");
    if (!mHasDatabase)
        mNext = mNames.size();  // without it, every picture would be made again in every run
    if (HasDrafts())
        RemoveDrafts();
    return true;
}

/// Whether a killed run has left drafts.
bool CGallery::HasDrafts() const
{
    return mFolder.mHasDrafts || Stands(InThumbs(kThumbDrafts)) ||
           Stands(InThumbs(DraftFolderOf(kDbaseFile)));
}

/// Removes what a killed run has left. Without a lock it could be somebody's work.
void CGallery::RemoveDrafts() const
{
    if (!mIsLocked)
        return;
    RemoveLeftDrafts(DraftFolderOf(mPaths.mPage));
    RemoveLeftDrafts(DraftFolderOf(mPaths.Picture(kAlbumFile)));
    if (!mHasThumbs)
        return;
    RemoveLeftDrafts(DraftFolderOf(mPaths.mDbase));
    RemoveLeftDrafts(mPaths.mThumbFolder + "/" + kThumbDrafts);
}

bool CGallery::HasThumb(std::size_t picture) const
{
    return mMade[picture] || (mHasThumbs && Stands(InThumbs(mNames[picture])));
}

/// Whether there is anything at a path below the folder. What can't be told counts as there.
bool CGallery::Stands(const std::string& path) const
{
    return faccessat(Handle(), path.c_str(), F_OK, 0) == 0 || (errno != ENOENT && errno != ENOTDIR);
}

const SFileInfo* CGallery::RecordOf(const std::string& name) const
{
    const auto found = mRecords.find({name});
    return found == mRecords.end() ? nullptr : &*found;
}

std::optional<SGalleryTask> CGallery::NextPicture()
{
    while (mNext < mNames.size()) {
        const std::size_t picture = mNext++;
        const std::string& name = mNames[picture];
        const SFileInfo* const record = RecordOf(name);
        const bool mayKeep = record && !mOptions.mRemake && !mOptions.mRepair;
        if (mayKeep && IsUpToDate(name.c_str(), *record, Handle()))
            continue;
        const SPictureState state = TestPicture(name.c_str(), record, Handle());
        const bool must = state.mMustMake || mOptions.mRemake ||
                          (mOptions.mRepair && record->mTime != state.mTime);
        if (must || mOptions.mRepair) {
            mUnderWay[picture] = {state, !IsMissing(mPaths.Thumbnail(name))};
            mIsMaking = true;
            return SGalleryTask{picture, ThumbRequest(Picture(picture), !must)};
        }
    }
    return std::nullopt;
}

void CGallery::Finish(std::size_t picture, const STaskResult& result)
{
    const SUnderWay work = mUnderWay.at(picture);
    mUnderWay.erase(picture);
    if (result.mReply.empty()) {
        Forget(picture);
        RemoveHalf(picture, work);
        ReportLost(picture, result);
        return;
    }
    const SThumbResult thumb = ReadThumbReply(result.mReply);
    mMade[picture] = thumb.mOutcome == EThumb::kMade;
    if (mMade[picture])
        mReport.AddThumbnail();
    if (thumb.mOutcome == EThumb::kUnwritable)
        Forget(picture);
    else if (thumb.mOutcome != EThumb::kKept)
        Record(picture, work.mState);
    ReportPicture(picture, result, thumb);
}

/// Records a picture with the time that it had before it was read.
void CGallery::Record(std::size_t picture, const SPictureState& state)
{
    if (!state.mHasTime)
        return;
    mRecords.insert({mNames[picture], state.mTime}).first->mTime = state.mTime;
}

/// Drops the record of a picture without the thumbnail that it should have: the next run tries
/// again.
void CGallery::Forget(std::size_t picture)
{
    mRecords.erase({mNames[picture]});
}

void CGallery::ReportPicture(std::size_t picture, const STaskResult& result,
                             const SThumbResult& thumb)
{
    const std::string path = Picture(picture);
    const std::string message =
        JpegMessage(result.mPrinted, path, mPaths.Thumbnail(mNames[picture]));
    mReported[picture] = true;
    if (thumb.mOutcome == EThumb::kUnwritable)
        AddUnwritten(picture, message);
    else if (thumb.mOutcome == EThumb::kUnreadable && !HasThumb(picture))
        mReport.AddMissing(path, message);
    else if (thumb.mOutcome == EThumb::kUnreadable || thumb.mWarnings > 0)
        mReport.AddDamaged(path, message, !mMade[picture]);
    else
        mReported[picture] = false;
}

/// A worker has ended in the middle of a picture: by libjpeg, which ends the process when it can't
/// write, or because of the picture.
void CGallery::ReportLost(std::size_t picture, const STaskResult& result)
{
    const std::string message =
        JpegMessage(result.mPrinted, Picture(picture), mPaths.Thumbnail(mNames[picture]));
    mReported[picture] = true;
    if (result.mIsKilled)
        Fail("the process that made " + mNames[picture] + " was " + result.mEnd);
    else
        AddUnwritten(picture, message.empty() ? "its process " + result.mEnd : message);
}

/// Keeps the first reason: on a full disk, all have the same.
void CGallery::AddUnwritten(std::size_t picture, const std::string& reason)
{
    if (mUnwritten++ == 0)
        mWhyUnwritten = mNames[picture] + (reason.empty() ? "" : ": " + reason);
}

void CGallery::ReportUnwritten()
{
    if (mUnwritten > 0)
        Fail(CountOf(mUnwritten, "thumbnail", "thumbnails") +
             " can't be written, such as that of " + mWhyUnwritten);
}

void CGallery::Save()
{
    if (mHasDatabase && !WriteRecords())
        Fail("the database can't be written");
}

/// Writes the database if it has changed. False when that can't be, also for lack of memory: a
/// gallery with a hostile database must not end the run over all others.
bool CGallery::WriteRecords()
{
    try {
        std::string text = DatabaseText(mRecords);
        struct stat status = {};
        if (text == mSaved && (!text.empty() || lstat(mPaths.mDbase.c_str(), &status) == 0))
            return true;
        if (!ReplaceFile(mPaths.mDbase, text))
            return false;
        mSaved.swap(text);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void CGallery::Abandon()
{
    for (const auto& [picture, work] : mUnderWay)
        RemoveHalf(picture, work);
    Save();
    RemoveDrafts();
}

/// Removes what a worker that was ended may have left in the place of a new thumbnail. An older one
/// is replaced only when its draft is complete, and stays.
void CGallery::RemoveHalf(std::size_t picture, const SUnderWay& work) const
{
    if (!work.mHadThumb)
        unlink(mPaths.Thumbnail(mNames[picture]).c_str());
}

void CGallery::Fail(const std::string& reason)
{
    mReport.AddUnfinished(mFolder.mPath, reason);
}
