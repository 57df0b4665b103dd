#include "app/ReplaceFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <vector>

#include "app/CDraft.h"
#include "app/OutputFile.h"

namespace {

constexpr int kMostTries = 5;  // while other runs remove the draft

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
    constexpr std::size_t kMostBytes = 1 << 16;
    std::vector<char> piece(std::min(text.size() + 1, kMostBytes));  // one more shows the end
    ssize_t count = 0;
    do {
        count = read(file, piece.data(), piece.size());
        if (count < 0 || !text.starts_with({piece.data(), static_cast<std::size_t>(count)}))
            return false;
        text.remove_prefix(static_cast<std::size_t>(count));
    } while (static_cast<std::size_t>(count) == piece.size());
    return text.empty();
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
    return path + kDraftSuffix;
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

bool HasContents(const std::string& path, std::string_view text, int folder)
{
    const int file = openat(folder, path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return false;
    const bool same = Holds(file, text);
    close(file);
    return same;
}
