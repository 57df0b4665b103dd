#include "app/CDraft.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstddef>
#include <iterator>
#include <vector>
#ifdef __linux__
#include <sys/xattr.h>
#endif

#include "app/OutputFile.h"

namespace {

constexpr std::string_view kDraftPrefix = "tessel-draft-";
constexpr int kMostDrafts = 100;  // of one process number, left behind by killed runs
constexpr int kMostTries = 5;     // while other runs remove the draft
constexpr int kNewFolderMode = 0777;
constexpr int kNewFileMode = 0666;

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

bool WriteAll(int file, std::string_view text, std::size_t from)
{
    while (from < text.size()) {
        const ssize_t count =
            pwrite(file, text.data() + from, text.size() - from, static_cast<off_t>(from));
        if (count < 0 && errno == EINTR)
            continue;
        if (count <= 0)
            return false;
        from += static_cast<std::size_t>(count);
    }
    return true;
}

/// Overwrites an open file of `size` bytes. What goes beyond its end is written first: where there
/// is no room for that, the file still holds what it held.
bool Overwrite(int file, std::size_t size, std::string_view text)
{
    if (!WriteAll(file, text, std::min(size, text.size()))) {
        static_cast<void>(!ftruncate(file, static_cast<off_t>(size)));
        return false;
    }
    return WriteAll(file, text.substr(0, size), 0) &&
           ftruncate(file, static_cast<off_t>(text.size())) == 0;
}

/// Writes a file where there is none that could be kept.
bool WriteNew(const std::string& path, std::string_view text)
{
    std::FILE* stream = OpenOutput(path.c_str());
    if (!stream)
        return false;
    std::fwrite(text.data(), 1, text.size(), stream);
    if (CloseOutput(stream))
        return true;
    unlink(path.c_str());
    return false;
}

bool WriteInPlace(const std::string& path, std::string_view text)
{
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0 || !IsOrdinary(status))
        return WriteNew(path, text);
    const int file = open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return false;
    const bool written = fstat(file, &status) == 0 && IsOrdinary(status) &&
                         Overwrite(file, static_cast<std::size_t>(status.st_size), text);
    return close(file) == 0 && written;
}

/// Whether an open file holds just this text. It is compared piece by piece: pages can be large.
bool Holds(int file, std::string_view text)
{
    std::array<char, 1 << 16> piece;
    while (!text.empty()) {
        const ssize_t count = read(file, piece.data(), piece.size());
        if (count <= 0 || !text.starts_with({piece.data(), static_cast<std::size_t>(count)}))
            return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

/// Whether a regular file holds just this text. Nothing else is opened.
bool HasContents(const std::string& path, const std::string& text)
{
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0 || !IsOrdinary(status) ||
        status.st_size != static_cast<off_t>(text.size()))
        return false;
    const int file = open(path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return false;
    const bool same = Holds(file, text);
    close(file);
    return same;
}

EReplaced WriteDraft(const CDraftFolder& folder, const std::string& path, std::string_view text)
{
    CDraft draft(folder, path);
    const EReplaced opened = draft.Open();
    if (opened != EReplaced::kDone)
        return opened;
    std::fwrite(text.data(), 1, text.size(), draft.Stream());
    return draft.PutInPlace();
}

EReplaced ReplaceByDraft(const std::string& path, std::string_view text)
{
    CDraftFolder folder(DraftFolderOf(path));
    EReplaced result = folder.Open();
    if (result == EReplaced::kDone)
        result = WriteDraft(folder, path, text);
    if (result == EReplaced::kDone)
        folder.RemoveDrafts();
    folder.Remove();
    return result;
}

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

bool ReplaceFile(const std::string& path, std::string_view text)
{
    if (IsMissing(path) && WriteNew(path, text))
        return true;
    for (int i = 0; i < kMostTries && MayReplace(path); ++i) {
        switch (ReplaceByDraft(path, text)) {
            case EReplaced::kDone:
                return true;
            case EReplaced::kFailed:
                return false;
            case EReplaced::kForbidden:
                return WriteInPlace(path, text);
            case EReplaced::kLost:
                break;
        }
    }
    return false;
}

std::string DraftFolderOf(const std::string& path)
{
    return path + ".new";
}

void RemoveLeftDrafts(const std::string& folder)
{
    CDraftFolder drafts(folder);
    struct stat status = {};
    if (lstat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode) ||
        drafts.Open() != EReplaced::kDone)
        return;
    drafts.RemoveDrafts();
    drafts.Remove();
}

bool UpdateFile(const std::string& path, const std::string& text)
{
    if (!HasContents(path, text))
        return ReplaceFile(path, text);
    RemoveLeftDrafts(DraftFolderOf(path));
    return true;
}
