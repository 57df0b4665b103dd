#include "app/OutputFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "util/CFileIO.h"

namespace {

/// True for what is replaced rather than overwritten.
bool IsReplaceable(const struct stat& status)
{
    return S_ISREG(status.st_mode) || S_ISLNK(status.st_mode) || S_ISFIFO(status.st_mode) ||
           S_ISSOCK(status.st_mode);
}

/// Opens an ordinary file and empties it; -1 where that can't be. What was ordinary a moment ago
/// may have been exchanged since: it is tested once more, now that it is open.
int OpenOrdinary(const char* path)
{
    constexpr int kFlags = O_WRONLY | O_NOFOLLOW | O_CLOEXEC;
    // Without waiting, should it be a FIFO by now. A file that a server holds a lease on can't be
    // opened so: the server is asked to give it up.
    int file = open(path, kFlags | O_NONBLOCK);
    if (file < 0 && errno == EWOULDBLOCK && IsFileOrFolder(path))
        file = open(path, kFlags);
    if (file < 0)
        return -1;
    struct stat status = {};
    if (fstat(file, &status) == 0 && IsOrdinary(status) && ftruncate(file, 0) == 0)
        return file;
    close(file);
    return -1;
}

int OpenForWriting(const char* path)
{
    struct stat status = {};
    if (lstat(path, &status) == 0) {
        if (IsOrdinary(status))
            return OpenOrdinary(path);
        if (!IsReplaceable(status) || unlink(path) != 0)
            return -1;
    }
    return open(path, O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, kNewFileMode);
}

bool IsEmptyFolder(const std::string& path)
{
    std::error_code error;
    const std::filesystem::directory_iterator entries(path, error);
    return !error && entries == std::filesystem::directory_iterator();
}

/// Whether a link is the user's own, or was made by the owner of the folder that it leads to. A
/// stranger's link could lead onto a gallery of somebody else's.
bool IsTrustedLink(const struct stat& link, const std::string& path)
{
    struct stat target = {};
    return stat(path.c_str(), &target) == 0 &&
           (link.st_uid == geteuid() || link.st_uid == target.st_uid);
}

}  // namespace

bool IsOrdinary(const struct stat& status)
{
    return S_ISREG(status.st_mode) && status.st_nlink == 1;
}

bool IsMissing(const std::string& path)
{
    struct stat status = {};
    return lstat(path.c_str(), &status) != 0 && errno == ENOENT;
}

bool MayReplace(const std::string& path)
{
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0)
        return errno == ENOENT;
    if (IsOrdinary(status))
        return faccessat(AT_FDCWD, path.c_str(), R_OK | W_OK, AT_EACCESS) == 0;
    return IsReplaceable(status);
}

std::FILE* OpenOutput(const char* path)
{
    const int file = OpenForWriting(path);
    if (file < 0)
        return nullptr;
    std::FILE* stream = fdopen(file, "wb");
    if (!stream)
        close(file);
    return stream;
}

bool CloseOutput(std::FILE* stream)
{
    const bool written = std::ferror(stream) == 0;
    return std::fclose(stream) == 0 && written;
}

bool MakeThumbFolder(const std::string& folder, const std::string& dbase)
{
    CFileIO::CreateDir(folder.c_str());
    struct stat status = {};
    if (lstat(folder.c_str(), &status) != 0 || !S_ISLNK(status.st_mode))
        return true;
    if (!IsTrustedLink(status, folder))
        return false;
    if (IsEmptyFolder(folder)) {
        // The folder gets its database at once, so that it is known again after a killed run.
        if (std::FILE* stream = OpenOutput(dbase.c_str()))
            CloseOutput(stream);
    }
    return stat(dbase.c_str(), &status) == 0 && S_ISREG(status.st_mode);
}

bool IsFileOrFolder(const char* path, int folder)
{
    struct stat status = {};
    return fstatat(folder, path, &status, 0) == 0 &&
           (S_ISREG(status.st_mode) || S_ISDIR(status.st_mode));
}
