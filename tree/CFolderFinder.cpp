#include "tree/CFolderFinder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "app/GalleryLayout.h"
#include "app/ReplaceFile.h"
#include "tree/AlbumPage.h"
#include "tree/CReport.h"
#include "tree/Interruption.h"
#include "tree/NaturalOrder.h"
#include "util/CFileIO.h"

namespace {

constexpr const char* kPassedOverSuffix = ".jpeg";
/// Folders that network storage keeps for itself, with pictures of its own in them.
constexpr const char* kSystemFolder = "@eaDir";

bool IsPassedOver(std::string_view name)
{
    const std::size_t length = std::strlen(kPassedOverSuffix);
    return name.size() >= length &&
           CFileIO::Strcmpx(name.data() + name.size() - length, kPassedOverSuffix);
}

/// Whether an entry of an open folder is of a type, which has a number in lists and one in modes. A
/// link is not what it leads to.
bool Is(unsigned char type, mode_t mode, const dirent& entry, const SFoundFolder& folder)
{
    if (entry.d_type != DT_UNKNOWN)
        return entry.d_type == type;
    struct stat status = {};
    return fstatat(dirfd(folder.mHandle.get()), entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 &&
           (status.st_mode & S_IFMT) == mode;
}

/// Whether an open folder has a gallery.
bool HasGallery(const SFoundFolder& found)
{
    struct stat status = {};
    return !found.mPictures.empty() ||
           (stat(SGalleryPaths(found.mPath).mDbase.c_str(), &status) == 0 &&
            S_ISREG(status.st_mode));
}

}  // namespace

CFolderFinder::CFolderFinder(const STreeOptions& options, CReport& report)
    : mOptions(options), mReport(report)
{
    struct stat status = {};
    for (const std::string& root : options.mFolders) {
        if (stat(root.c_str(), &status) == 0)
            mRoots.insert({status.st_dev, status.st_ino});
    }
}

std::optional<SFoundFolder> CFolderFinder::Next()
{
    while (Interruption() == 0 && (!mToDo.empty() || BeginNextRoot())) {
        SFolder folder = std::move(mToDo.back());
        mToDo.pop_back();
        std::optional<SFoundFolder> found = Visit(std::move(folder));
        if (found)
            return found;
    }
    return std::nullopt;
}

bool CFolderFinder::BeginNextRoot()
{
    if (mRoot == mOptions.mFolders.size())
        return false;
    mToDo.push_back({mRoot, mOptions.mFolders[mRoot], ""});
    ++mRoot;
    return true;
}

std::optional<SFoundFolder> CFolderFinder::Again(const SFolder& folder)
{
    SFoundFolder found(folder);
    std::vector<std::string> unused;
    if (!Open(found) || !List(found, unused) || !HasGallery(found))
        return std::nullopt;
    return found;
}

/// Lists a folder: what is in it decides whether it has a gallery, and which folders follow.
std::optional<SFoundFolder> CFolderFinder::Visit(SFolder folder)
{
    SFoundFolder found(std::move(folder));
    if (!Open(found) || IsOthersTurn(found))
        return std::nullopt;
    std::vector<std::string> folders;
    const bool isListed = List(found, folders);
    // The last one is visited first.
    std::sort(folders.rbegin(), folders.rend(), IsBefore);
    const std::string prefix = found.mRelative.empty() ? "" : found.mRelative + "/";
    for (const std::string& name : folders)
        mToDo.push_back({found.mRoot, found.mPath + "/" + name, prefix + name});
    if (!isListed || !HasGallery(found))
        return std::nullopt;
    return found;
}

bool CFolderFinder::Open(SFoundFolder& found) const
{
    found.mHandle.reset(opendir(found.mPath.c_str()));
    if (!found.mHandle)
        mReport.AddUnfinished(found.mPath, std::strerror(errno));
    return found.mHandle != nullptr;
}

/// True for a folder that is found in another turn: that of the root that it is itself.
bool CFolderFinder::IsOthersTurn(const SFoundFolder& found)
{
    struct stat status = {};
    if (fstat(dirfd(found.mHandle.get()), &status) != 0)
        return false;
    const Identity identity(status.st_dev, status.st_ino);
    return found.mRelative.empty() ? !mBegun.insert(identity).second : mRoots.count(identity) != 0;
}

/// Takes down what is in an open folder, and adds the names of the folders to enter. False where it
/// can't be listed to its end.
bool CFolderFinder::List(SFoundFolder& found, std::vector<std::string>& folders) const
{
    errno = 0;
    while (const dirent* entry = readdir(found.mHandle.get())) {
        Add(*entry, found, folders);
        errno = 0;
    }
    if (errno == 0)
        return true;
    mReport.AddUnfinished(found.mPath, std::strerror(errno));
    return false;
}

void CFolderFinder::Add(const dirent& entry, SFoundFolder& found,
                        std::vector<std::string>& folders) const
{
    const std::string_view name = entry.d_name;
    if (IsPictureName(name))
        found.mPictures.emplace_back(name);
    if (IsPassedOver(name))
        ++found.mPassedOver;
    if (name.ends_with(kDraftSuffix))
        found.mHasDrafts = true;
    if ((name == kPageFile || name == kAlbumFile) && Is(DT_REG, S_IFREG, entry, found))
        found.mPages.emplace_back(name);
    if (name == kThumbFolder)
        found.mHasThumbFolder = Is(DT_DIR, S_IFDIR, entry, found);
    else if (!mOptions.mOnly && IsEntered(name) && Is(DT_DIR, S_IFDIR, entry, found))
        folders.emplace_back(name);
}

bool CFolderFinder::IsEntered(std::string_view name) const
{
    const std::vector<std::string>& excluded = mOptions.mExcluded;
    return name[0] != '.' && name != kSystemFolder &&
           std::find(excluded.begin(), excluded.end(), name) == excluded.end();
}
