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

bool EndsWith(const std::string& name, const std::string& suffix)
{
    return name.size() >= suffix.size() &&
           CFileIO::Strcmpx(name.c_str() + name.size() - suffix.size(), suffix.c_str());
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
    while (!mToDo.empty() || BeginNextRoot()) {
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

/// Lists a folder: what is in it decides whether it has a gallery, and which folders follow.
std::optional<SFoundFolder> CFolderFinder::Visit(const SFolder& folder)
{
    const std::unique_ptr<DIR, SFolderCloser> handle(opendir(folder.mPath.c_str()));
    struct stat status = {};
    if (!handle || fstat(dirfd(handle.get()), &status) != 0) {
        mReport.AddUnfinished(folder.mPath, std::strerror(errno));
        return std::nullopt;
    }
    // Below another folder, one that is named itself is left to its own turn.
    const Identity identity(status.st_dev, status.st_ino);
    if (folder.mRelative.empty() ? mBegun.count(identity) != 0 : mRoots.count(identity) != 0)
        return std::nullopt;
    if (folder.mRelative.empty())
        mBegun.insert(identity);

    SFoundFolder found{mRoot - 1, folder.mPath, folder.mRelative};
    std::vector<std::string> folders;
    errno = 0;
    while (const dirent* entry = readdir(handle.get())) {
        const std::string name = entry->d_name;
        found.mPictures += EndsWith(name, kPicturePattern + 1) ? 1 : 0;
        found.mPassedOver += EndsWith(name, kPassedOverSuffix) ? 1 : 0;
        if (!mOptions.mOnly && IsEntered(name) &&
            IsFolder(dirfd(handle.get()), entry->d_name, entry->d_type))
            folders.push_back(name);
        errno = 0;
    }
    if (errno != 0)
        mReport.AddUnfinished(folder.mPath, std::strerror(errno));
    // The last one is visited first.
    std::sort(folders.rbegin(), folders.rend(), IsBefore);
    for (const std::string& name : folders)
        mToDo.push_back({folder.mPath + "/" + name,
                         folder.mRelative.empty() ? name : folder.mRelative + "/" + name});
    const std::string dbase = SGalleryPaths(folder.mPath).mDbase;
    if (found.mPictures == 0 && (stat(dbase.c_str(), &status) != 0 || !S_ISREG(status.st_mode)))
        return std::nullopt;
    return found;
}
