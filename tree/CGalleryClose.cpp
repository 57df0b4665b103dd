// The end of a gallery: what is gone is removed, and the pages are written.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

#include "app/CIndexPage.h"
#include "app/ReplaceFile.h"
#include "tree/AlbumPage.h"
#include "tree/CGallery.h"
#include "tree/CReport.h"

namespace {

constexpr std::size_t kMarkupBytes = 96;  // about what surrounds the three names in a cell

/// From a gallery to the page of all galleries, which stands in the folder that was named.
std::string BackLink(const std::string& relative)
{
    std::string link = kGalleriesFile;
    if (!relative.empty())
        link.insert(0, "../");
    for (auto slash = relative.find('/'); slash != std::string::npos;
         slash = relative.find('/', slash + 1))
        link.insert(0, "../");
    return link;
}

}  // namespace

void CGallery::Close()
{
    if (mOptions.mPrune)
        Prune();
    Save();
    if (mIsMaking)
        RemoveDrafts();
    WritePage();
    if (mOptions.mPage)
        WriteAlbum();
    ReportMissing();
    ReportUnwritten();
    mReport.AddGallery(static_cast<long>(mNames.size()));
    mReport.AddPassedOver(mFolder.mPassedOver);
}

/// Removes a thumbnail whose name stands in the database; false when it is still there.
bool CGallery::RemoveThumb(int folder, const std::string& name) const
{
    const bool isThumbName = IsPictureName(name) && name.find('/') == std::string::npos;
    return !isThumbName || unlinkat(folder, name.c_str(), 0) == 0 || errno == ENOENT;
}

/// Removes the records of pictures that are gone, and their thumbnails. Nothing is removed through
/// a link.
void CGallery::Prune()
{
    const int folder = mHasDatabase ? open(mPaths.mThumbFolder.c_str(),
                                           O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)
                                    : -1;
    if (folder < 0)
        return;
    const std::set<std::string> present(mNames.begin(), mNames.end());
    bool complete = true;
    for (auto record = mRecords.begin(); record != mRecords.end();) {
        const bool isGone = present.count(record->mName) == 0;
        const bool isRemoved = isGone && RemoveThumb(folder, record->mName);
        complete = complete && isRemoved == isGone;
        record = isRemoved ? mRecords.erase(record) : std::next(record);
    }
    close(folder);
    if (!complete)
        Fail("a thumbnail can't be removed");
}

void CGallery::WritePage()
{
    CIndexPage page;
    std::string text = page.Head(mPaths.Heading());
    // Growing by itself, the text of a large page would take twice its memory.
    std::size_t size = text.size();
    for (const std::string& name : mNames)
        size += kMarkupBytes + 3 * name.size();
    text.reserve(size);
    for (const std::string& name : mNames)
        text += page.Cell(name);
    text += page.Tail();
    WriteUnlessThere(kPageFile, text);
}

void CGallery::WriteAlbum()
{
    std::vector<SAlbumPicture> pictures;
    for (std::size_t i = 0; i < mNames.size(); ++i) {
        const SFileInfo* const record = RecordOf(mNames[i]);
        pictures.push_back({mNames[i], record ? record->mTime : 0, HasThumb(i)});
    }
    SortPictures(pictures, mOptions.mByTime);
    const auto first = std::find_if(pictures.begin(), pictures.end(),
                                    [](const SAlbumPicture& picture) { return picture.mHasThumb; });
    mEntry.mFirstThumb = first == pictures.end() ? "" : first->mName;
    WriteUnlessThere(kAlbumFile, MakeAlbumPage(mPaths.Heading(), pictures,
                                               BackLink(mFolder.mRelative), mOptions.mThumbSize));
}

/// Writes a page. One that is there already keeps its time.
void CGallery::WriteUnlessThere(const std::string& name, const std::string& text)
{
    const std::vector<std::string>& pages = mFolder.mPages;
    const bool isThere = std::find(pages.begin(), pages.end(), name) != pages.end() &&
                         HasContents(name, text, Handle());
    if (!isThere && !ReplaceFile(mPaths.Picture(name), text))
        Fail(name + " can't be written");
}

/// Names the pictures without a thumbnail that this run has not tried.
void CGallery::ReportMissing()
{
    for (std::size_t i = 0; i < mNames.size(); ++i) {
        if (!mReported[i] && !HasThumb(i))
            mReport.AddMissing(Picture(i), "");
    }
}
