#include "tree/CFolderFinder.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <memory>
#include <system_error>

#include "app/GalleryLayout.h"
#include "tree/CReport.h"
#include "tree/Interruption.h"
#include "tree/NaturalOrder.h"
#include "util/CFileIO.h"

namespace {

constexpr const char* kPassedOverSuffix = ".jpeg";
/// Folders that network storage keeps for itself, with pictures of its own in them.
constexpr const char* kSystemFolder = "@eaDir";

struct SFolderCloser
{
    void operator()(DIR* folder) const { closedir(folder); }
};

bool IsPassedOver(const std::string& name)
{
    const std::size_t length = std::strlen(kPassedOverSuffix);
    return name.size() >= length &&
           CFileIO::Strcmpx(name.c_str() + name.size() - length, kPassedOverSuffix);
}

/// Whether an entry is a real folder, and no link to one.
bool IsFolder(int parent, const char* name, int type)
{
    if (type != DT_UNKNOWN)
        return type == DT_DIR;
    struct stat status = {};
    return fstatat(parent, name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
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
        const SFolder folder = mToDo.back();
        mToDo.pop_back();
        std::optional<SFoundFolder> found = Visit(folder);
        if (found)
            return found;
    }
    return std::nullopt;
}

bool CFolderFinder::BeginNextRoot()
{
    if (mRoot == mOptions.mFolders.size())
        return false;
    mToDo.push_back({mOptions.mFolders[mRoot], ""});
    ++mRoot;
    return true;
}

bool CFolderFinder::IsEntered(const std::string& name) const
{
    const std::vector<std::string>& excluded = mOptions.mExcluded;
    return name[0] != '.' && name != kThumbFolder && name != kSystemFolder &&
           std::find(excluded.begin(), excluded.end(), name) == excluded.end();
}

/// True for a folder that is found in another turn: that of the root that it is itself.
bool CFolderFinder::IsOthersTurn(const struct stat& status, bool isRoot)
{
    const Identity identity(status.st_dev, status.st_ino);
    return isRoot ? !mBegun.insert(identity).second : mRoots.count(identity) != 0;
}

/// Lists a folder: what is in it decides whether it has a gallery, and which folders follow.
std::optional<SFoundFolder> CFolderFinder::Visit(const SFolder& folder)
{
    const std::unique_ptr<DIR, SFolderCloser> handle(opendir(folder.mPath.c_str()));
    struct stat status = {};
    if (!handle || fstat(dirfd(handle.get()), &status) != 0) {
        mReport.AddUnfinished(folder.mPath, std::strerror(errno));
        return std::nullopt;
    }
    if (IsOthersTurn(status, folder.mRelative.empty()))
        return std::nullopt;
    SFoundFolder found{mRoot - 1, folder.mPath, folder.mRelative};
    std::vector<std::string> folders;
    if (!List(handle.get(), found, folders))
        mReport.AddUnfinished(folder.mPath, std::strerror(errno));
    // The last one is visited first.
    std::sort(folders.rbegin(), folders.rend(), IsBefore);
    const std::string prefix = folder.mRelative.empty() ? "" : folder.mRelative + "/";
    for (const std::string& name : folders)
        mToDo.push_back({folder.mPath + "/" + name, prefix + name});
    const std::string dbase = SGalleryPaths(folder.mPath).mDbase;
    if (found.mPictures == 0 && (stat(dbase.c_str(), &status) != 0 || !S_ISREG(status.st_mode)))
        return std::nullopt;
    return found;
}

/// Counts the pictures of an open folder, and adds the names of the folders to enter. False with
/// the system's errno where it can't be listed to its end.
bool CFolderFinder::List(DIR* folder, SFoundFolder& found, std::vector<std::string>& folders) const
{
    errno = 0;
    while (const dirent* entry = readdir(folder)) {
        const std::string name = entry->d_name;
        found.mPictures += IsPictureName(name) ? 1 : 0;
        found.mPassedOver += IsPassedOver(name) ? 1 : 0;
        if (!mOptions.mOnly && IsEntered(name) &&
            IsFolder(dirfd(folder), entry->d_name, entry->d_type))
            folders.push_back(name);
        errno = 0;
    }
    return errno == 0;
}
