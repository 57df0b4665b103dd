#ifndef TESSEL_TREE_CGALLERY_H
#define TESSEL_TREE_CGALLERY_H

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/Database.h"
#include "app/GalleryLayout.h"
#include "tree/CFolderFinder.h"
#include "tree/GalleriesPage.h"
#include "tree/STreeOptions.h"

class CReport;
struct STaskResult;
struct SThumbResult;

/// A picture that needs a thumbnail.
struct SGalleryTask
{
    std::size_t mPicture;  ///< its number in the gallery
    std::string mRequest;  ///< see ThumbWork.h
};

/// One folder, from its lock to its pages. It says which pictures need a thumbnail, and takes in
/// what became of them; who makes them is no matter of this class. A plain run of tessel makes the
/// same page, thumbnails and database, byte for byte.
///
/// Open it, make what NextPicture gives, hand each result to Finish, and close it when IsFinished
/// says so. What goes wrong is said in the report, which outlives the gallery. The folder stays
/// locked until the object goes away. Used by one thread.
class CGallery
{
public:
    CGallery(SFoundFolder folder, const STreeOptions& options, CReport& report);
    CGallery(const CGallery&) = delete;
    CGallery& operator=(const CGallery&) = delete;

    const SFolder& Folder() const { return mFolder; }
    std::size_t PictureCount() const { return mNames.size(); }
    /// The pictures that need nothing more.
    std::size_t DoneCount() const { return mNext - mUnderWay.size(); }

    /// Locks the folder, and reads the database. False when another process holds a lock on it.
    bool Open();
    /// The next picture that needs a thumbnail; nothing when there is none left.
    std::optional<SGalleryTask> NextPicture();
    /// Takes in what became of a picture that NextPicture gave.
    void Finish(std::size_t picture, const STaskResult& result);
    /// True when all pictures have been given and have come back.
    bool IsFinished() const { return mNext == mNames.size() && mUnderWay.empty(); }

    /// Writes the database with what is finished, if that is news.
    void Save();
    /// Ends the gallery before it is finished: saves, and removes what is half made.
    void Abandon();
    /// Writes pages and database, removes what is no longer wanted, and reports.
    void Close();
    /// The entry on the page of all galleries; the gallery's first thumbnail is known once it is
    /// closed.
    const SGalleryEntry& Entry() const { return mEntry; }

private:
    struct SUnderWay
    {
        SPictureState mState;
        bool mHadThumb;
    };

    int Handle() const { return dirfd(mFolder.mHandle.get()); }
    bool Lock();
    void RemoveDrafts() const;
    std::string Picture(std::size_t picture) const { return mPaths.Picture(mNames[picture]); }
    const SFileInfo* RecordOf(const std::string& name) const;
    bool HasThumb(std::size_t picture) const;
    bool HasDrafts() const;
    bool Stands(const std::string& path) const;
    void Record(std::size_t picture, const SPictureState& state);
    void Forget(std::size_t picture);
    void RemoveHalf(std::size_t picture, const SUnderWay& work) const;
    void ReportPicture(std::size_t picture, const STaskResult& result, const SThumbResult& thumb);
    void ReportLost(std::size_t picture, const STaskResult& result);
    void AddUnwritten(std::size_t picture, const std::string& reason);
    void ReportUnwritten();
    bool WriteRecords();
    void Prune();
    bool RemoveThumb(int folder, const std::string& name) const;
    void WritePage();
    void WriteAlbum();
    void WriteUnlessThere(const std::string& name, const std::string& text);
    void ReportMissing();
    void Fail(const std::string& reason);

    SFoundFolder mFolder;
    const STreeOptions& mOptions;
    CReport& mReport;
    SGalleryPaths mPaths;
    const std::vector<std::string>& mNames;  // of the pictures
    bool mIsLocked = false;
    bool mHasThumbs = false;    // the thumbnail folder may be written to
    bool mHasDatabase = false;  // it was read, and may be written
    std::set<SFileInfo> mRecords;
    std::string mSaved;           // what the database file holds
    std::vector<bool> mMade;      // which pictures have a new thumbnail
    std::vector<bool> mReported;  // which pictures the report has
    std::size_t mNext = 0;        // the picture that NextPicture looks at next
    std::map<std::size_t, SUnderWay> mUnderWay;
    bool mIsMaking = false;  // a picture was given away
    long mUnwritten = 0;     // thumbnails that could not be written
    std::string mWhyUnwritten;
    SGalleryEntry mEntry;
};

#endif
