#include "app/CDraft.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <iterator>
#include <string_view>
#include <vector>
#ifdef __linux__
#include <sys/xattr.h>
#endif

#include "app/OutputFile.h"

namespace {

constexpr std::string_view kDraftPrefix = "tessel-draft-";
constexpr int kMostDrafts = 100;  // of one process number, left behind by killed runs
constexpr int kNewFolderMode = 0777;

/// What an error of the system says of a draft. Lack of space, memory or descriptors passes; these
/// don't, and overwriting the file in place may still be allowed.
EReplaced ReasonOf(int error)
{
    constexpr int kForbidding[] = {EACCES,  EPERM, EROFS,        EBUSY,  EXDEV,  EEXIST,
                                   ENOTDIR, ELOOP, ENAMETOOLONG, EMLINK, ENOSYS, EOPNOTSUPP};
    const auto* found = std::find(std::begin(kForbidding), std::end(kForbidding), error);
    return found == std::end(kForbidding) ? EReplaced::kFailed : EReplaced::kForbidden;
}

#ifdef __linux__
using Bytes = std::vector<char>;

/// Gives a draft one extended attribute of the file at `path`; false when that can't be.
bool CopyAttribute(const char* path, const char* name, int draft)
{
    const ssize_t size = lgetxattr(path, name, nullptr, 0);
    if (size < 0)
        return false;
    Bytes value(static_cast<std::size_t>(size));
    Bytes present(value.size());
    if (lgetxattr(path, name, value.data(), value.size()) != size)
        return false;
    if (fgetxattr(draft, name, present.data(), present.size()) == size && present == value)
        return true;
    return fsetxattr(draft, name, value.data(), value.size(), 0) == 0;
}

/// Gives a draft the extended attributes of the file at `path`, its access list among them. False
/// also where the draft has more of them, such as an access list that it inherited.
bool CopyAttributes(const char* path, int draft)
{
    const ssize_t size = llistxattr(path, nullptr, 0);
    if (size < 0)
        return errno == EOPNOTSUPP;
    Bytes names(static_cast<std::size_t>(size));
    if (llistxattr(path, names.data(), names.size()) != size)
        return false;
    bool same = true;
    for (auto name = names.begin(); same && name != names.end();
         name = std::find(name, names.end(), '\0') + 1)
        same = CopyAttribute(path, &*name, draft);
    return same && flistxattr(draft, nullptr, 0) == size;
}
#else
/// Extended attributes are copied on Linux alone, whose interface for them this is.
bool CopyAttributes(const char* /*path*/, int /*draft*/)
{
    return true;
}
#endif

}  // namespace

CDraftFolder::~CDraftFolder()
{
    if (mFile >= 0)
        close(mFile);
}

EReplaced CDraftFolder::Open()
{
    if (mkdir(mPath.c_str(), kNewFolderMode) != 0 && errno != EEXIST)
        return ReasonOf(errno);
    mFile = open(mPath.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (mFile >= 0)
        return EReplaced::kDone;
    return errno == ENOENT ? EReplaced::kLost : ReasonOf(errno);  // another run has removed it
}

void CDraftFolder::RemoveDrafts() const
{
    const int file = openat(mFile, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    DIR* const entries = file < 0 ? nullptr : fdopendir(file);
    if (!entries) {
        if (file >= 0)
            close(file);
        return;
    }
    while (const dirent* entry = readdir(entries)) {
        if (std::string_view(entry->d_name).starts_with(kDraftPrefix))
            unlinkat(mFile, entry->d_name, 0);
    }
    closedir(entries);
}

void CDraftFolder::Remove() const
{
    if (mFile >= 0)
        rmdir(mPath.c_str());
}

CDraft::~CDraft()
{
    if (mStream)
        std::fclose(mStream);
    if (!mName.empty())
        unlinkat(mFolder.File(), mName.c_str(), 0);
}

/// Creates the draft's file; -1 with the system's errno where that can't be.
int CDraft::CreateFile()
{
    constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
    const std::string prefix = std::string(kDraftPrefix) + std::to_string(getpid()) + "-";
    for (int i = 0; i < kMostDrafts; ++i) {
        const std::string name = prefix + std::to_string(i);
        const int file = openat(mFolder.File(), name.c_str(), kFlags, kNewFileMode);
        if (file >= 0)
            mName = name;
        if (file >= 0 || errno != EEXIST)
            return file;
    }
    return -1;
}

EReplaced CDraft::Open()
{
    const int file = CreateFile();
    if (file < 0)
        return errno == ENOENT ? EReplaced::kLost : ReasonOf(errno);
    const bool same = TakeOverProperties(file);
    const bool isFull = !same && (errno == ENOSPC || errno == EDQUOT);
    mStream = same ? fdopen(file, "wb") : nullptr;
    if (mStream)
        return EReplaced::kDone;
    close(file);
    return same || isFull ? EReplaced::kFailed : EReplaced::kForbidden;
}

/// Gives the draft what an ordinary file in its place has: owner, mode, extended attributes.
bool CDraft::TakeOverProperties(int file) const
{
    struct stat old = {};
    if (lstat(mPath.c_str(), &old) != 0 || !IsOrdinary(old))
        return true;
    return fchown(file, old.st_uid, old.st_gid) == 0 && fchmod(file, old.st_mode & 07777) == 0 &&
           CopyAttributes(mPath.c_str(), file);
}

EReplaced CDraft::PutInPlace()
{
    std::FILE* const stream = mStream;
    mStream = nullptr;
    if (!CloseOutput(stream))
        return EReplaced::kFailed;
    if (renameat(mFolder.File(), mName.c_str(), AT_FDCWD, mPath.c_str()) != 0)
        return errno == ENOENT ? EReplaced::kLost : ReasonOf(errno);
    mName.clear();
    return EReplaced::kDone;
}
