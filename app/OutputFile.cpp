#include "app/OutputFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <string_view>
#include <system_error>

#include "util/CFileIO.h"

namespace {

constexpr std::string_view kDraftPrefix = "draft-";
constexpr int kMostDrafts = 100;  // of one process number, left behind by killed runs

/// A file whose contents are its own, and which a writer may therefore empty.
bool IsOrdinary(const struct stat& status)
{
    return S_ISREG(status.st_mode) && status.st_nlink == 1;
}

bool IsRemovable(const struct stat& status)
{
    return S_ISREG(status.st_mode) || S_ISLNK(status.st_mode) || S_ISFIFO(status.st_mode) ||
           S_ISSOCK(status.st_mode);
}

bool IsEmptyFolder(const std::string& path)
{
    std::error_code error;
    const std::filesystem::directory_iterator entries(path, error);
    return !error && entries == std::filesystem::directory_iterator();
}

}  // namespace

bool MakeWay(const char* path)
{
    struct stat status = {};
    if (lstat(path, &status) != 0)
        return errno == ENOENT;
    return IsOrdinary(status) || (IsRemovable(status) && unlink(path) == 0);
}

bool MakeThumbFolder(const std::string& folder, const std::string& dbase)
{
    CFileIO::CreateDir(folder.c_str());
    struct stat status = {};
    if (lstat(folder.c_str(), &status) != 0 || !S_ISLNK(status.st_mode))
        return true;
    if (IsEmptyFolder(folder))
        std::ofstream{dbase};  // so that it is known again after a run that is killed
    return stat(dbase.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool IsReadable(const char* path)
{
    struct stat status = {};
    return stat(path, &status) == 0 && (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}

CDraft::CDraft(const std::string& path) : mPath(path), mFolder(path + ".new")
{
    struct stat status = {};
    if (lstat(mFolder.c_str(), &status) == 0 && !S_ISDIR(status.st_mode))
        unlink(mFolder.c_str());
    mkdir(mFolder.c_str(), 0777);
    if (Create())
        mStream.open(mName);
}

/// Creates the draft's file; false where that can't be.
bool CDraft::Create()
{
    for (int i = 0; i < kMostDrafts; ++i) {
        mName = mFolder + "/" + std::string(kDraftPrefix) + std::to_string(getpid()) + "-" +
                std::to_string(i);
        const int file = open(mName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (file >= 0) {
            const bool same = TakeOn(file);
            close(file);
            return same;
        }
        if (errno != EEXIST)
            break;
    }
    mName.clear();
    return false;
}

/// Gives the draft the owner and the mode of an ordinary file in its place.
bool CDraft::TakeOn(int file) const
{
    struct stat old = {};
    if (lstat(mPath.c_str(), &old) != 0 || !IsOrdinary(old))
        return true;
    return fchown(file, old.st_uid, old.st_gid) == 0 && fchmod(file, old.st_mode & 07777) == 0;
}

CDraft::~CDraft()
{
    if (!mName.empty())
        unlink(mName.c_str());
    rmdir(mFolder.c_str());
}

bool CDraft::MayReplace(const char* path)
{
    struct stat status = {};
    if (lstat(path, &status) != 0)
        return errno == ENOENT;
    if (IsOrdinary(status))
        return faccessat(AT_FDCWD, path, R_OK | W_OK, AT_EACCESS) == 0;
    return IsRemovable(status);
}

bool CDraft::PutInPlace()
{
    if (std::rename(mName.c_str(), mPath.c_str()) != 0)
        return false;
    mName.clear();
    RemoveDrafts();
    return true;
}

/// Also those of runs that still write: they notice and begin again.
void CDraft::RemoveDrafts() const
{
    DIR* const folder = opendir(mFolder.c_str());
    if (!folder)
        return;
    while (const dirent* entry = readdir(folder)) {
        if (std::string_view(entry->d_name).substr(0, kDraftPrefix.size()) == kDraftPrefix)
            unlink((mFolder + "/" + entry->d_name).c_str());
    }
    closedir(folder);
}
