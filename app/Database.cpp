#include "app/Database.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <new>
#include <string_view>

#include "app/OutputFile.h"
#include "app/ReplaceFile.h"
#include "util/CStringTool.h"

namespace {

constexpr char kSeparator = '\t';

/// False for a name that would be read back as another.
bool IsStorable(std::string_view name)
{
    return std::none_of(name.begin(), name.end(),
                        [](char c) { return c == kSeparator || c == '\n' || c == '\r'; });
}

/// A time as a record holds it: where a long has 32 bits, those beyond count as its limit.
long RecordTime(std::int64_t time)
{
    return static_cast<long>(std::clamp<std::int64_t>(time, LONG_MIN, LONG_MAX));
}

/// Opens a file without waiting for a writer, should it be a FIFO. A file that a server holds a
/// lease on can't be opened so: the server is asked to give it up.
int OpenForReading(const char* path, int folder = AT_FDCWD)
{
    const int file = openat(folder, path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0 && errno == EWOULDBLOCK && IsFileOrFolder(path, folder))
        return openat(folder, path, O_RDONLY | O_CLOEXEC);
    return file;
}

/// Reads an open file of `expected` bytes to its end, wherever that is by now.
bool ReadText(int file, std::size_t expected, std::string* text)
{
    constexpr std::size_t kMost = kMostDatabaseBytes;
    constexpr std::size_t kPiece = 1 << 16;
    std::size_t piece = expected + 1;  // what is asked for in vain shows the end
    while (expected <= kMost && text->size() <= kMost) {
        const std::size_t size = text->size();
        text->resize(size + piece);
        const ssize_t count = read(file, text->data() + size, piece);
        text->resize(size + static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
        if (count == 0 || (size == 0 && count == static_cast<ssize_t>(expected)))
            return true;
        if (count < 0 && errno != EINTR)
            return false;
        piece = kPiece;
    }
    return false;
}

/// Reads the file at `path`. True with an empty text where nothing stands that could hold records:
/// nothing at all, a link to nothing, or what is no file.
bool ReadWhole(int folder, const char* path, std::string* text)
{
    const int file = OpenForReading(path, folder);
    if (file < 0)
        return errno == ENOENT || errno == ENOTDIR || errno == ELOOP || errno == ENXIO;
    struct stat status = {};
    bool read = fstat(file, &status) == 0;
    if (read && S_ISREG(status.st_mode))
        read = ReadText(file, static_cast<std::size_t>(status.st_size), text);
    close(file);
    return read;
}

void AddRecord(std::string line, std::set<SFileInfo>* records)
{
    std::erase(line, '\r');
    const auto separator = line.find(kSeparator);
    if (separator == std::string::npos)
        return;
    const auto time = separator + 1;
    const std::string field = line.substr(time, line.find(kSeparator, time) - time);
    line.resize(separator);
    // At the end, where the records of a file that this program wrote belong.
    records->insert(records->end(), {line, RecordTime(CStringTool::StringTo<std::int64_t>(field))});
}

void AddRecords(std::string_view text, std::set<SFileInfo>* records)
{
    for (auto end = text.find('\n'); end != std::string_view::npos; end = text.find('\n')) {
        AddRecord(std::string(text.substr(0, end)), records);
        text.remove_prefix(end + 1);
    }
}

}  // namespace

bool ReadDatabase(const char* path, std::set<SFileInfo>* records, std::string* text, int folder)
{
    try {
        std::string whole;
        std::set<SFileInfo> read;
        if (!ReadWhole(folder, path, &whole))
            return false;
        AddRecords(whole, &read);
        if (records->empty())
            records->swap(read);
        else
            records->merge(read);
        if (text)
            text->swap(whole);
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

std::string DatabaseText(const std::set<SFileInfo>& records)
{
    std::string text;
    for (const SFileInfo& info : records) {
        if (IsStorable(info.mName))
            text += info.mName + kSeparator + std::to_string(info.mTime) + '\n';
    }
    return text;
}

bool WriteDatabase(const char* path, const std::set<SFileInfo>& records)
{
    return ReplaceFile(path, DatabaseText(records));
}

bool GetFileTime(const char* path, long* time, int folder)
{
    const int file = OpenForReading(path, folder);
    if (file < 0)
        return false;
    struct stat status = {};
    const bool known = fstat(file, &status) == 0;
    close(file);
    if (known)
        *time = RecordTime(status.st_mtime);
    return known;
}

bool IsUpToDate(const char* path, const SFileInfo& record, int folder)
{
    struct stat status = {};
    return fstatat(folder, path, &status, 0) == 0 && record.mTime >= RecordTime(status.st_mtime);
}

SPictureState TestPicture(const char* path, const SFileInfo* record, int folder)
{
    SPictureState state;
    state.mHasTime = GetFileTime(path, &state.mTime, folder);
    state.mMustMake = !state.mHasTime || !record || record->mTime < state.mTime;
    return state;
}
