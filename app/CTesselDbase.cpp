// The thumbnail database. Its grammar: one line per picture, in ascending order of names: the name,
// a TAB, the time in decimal, a line feed. Carriage returns are dropped when reading, and what
// follows a second TAB is ignored. The file is written aside and put in place when it is complete:
// a run that is killed loses no record.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "app/CTessel.h"
#include "app/OutputFile.h"
#include "util/CFileIO.h"
#include "util/CStringTool.h"

namespace {

constexpr char kSeparator = '\t';
constexpr int kMostTries = 5;  // while other runs remove the drafts

/// False for a name that would be read back as another.
bool IsStorable(const std::string& name)
{
    return name.find_first_of("\t\n\r") == std::string::npos;
}

/// A time as a record holds it: where a long has 32 bits, those beyond count as its limit.
long RecordTime(std::int64_t time)
{
    return static_cast<long>(std::clamp<std::int64_t>(time, LONG_MIN, LONG_MAX));
}

/// How many characters all names begin with.
std::size_t CommonLength(const std::vector<std::string>& names)
{
    std::size_t length = names.empty() ? 0 : names.front().size();
    for (const std::string& name : names) {
        const auto end = name.begin() + static_cast<std::ptrdiff_t>(std::min(length, name.size()));
        const auto differs = std::mismatch(name.begin(), end, names.front().begin()).first;
        length = static_cast<std::size_t>(differs - name.begin());
    }
    return length;
}

/// Eight characters of a name as a number, which is in order as they are. Zeros stand for missing
/// ones, so that different names may have the same number.
std::uint64_t SortKey(const std::string& name, std::size_t from)
{
    std::uint64_t key = 0;
    for (std::size_t i = from; i < from + sizeof key; ++i)
        key = key << 8 | (i < name.size() ? static_cast<unsigned char>(name[i]) : 0U);
    return key;
}

/// Writes all records and closes the file; true when they are in it.
bool WriteRecords(std::ofstream& file, const std::set<SFileInfo>& records)
{
    std::string line;
    for (const SFileInfo& info : records) {
        if (!IsStorable(info.mName))
            continue;
        line = info.mName;
        line += kSeparator;
        line += std::to_string(info.mTime);
        line += '\n';
        file.write(line.data(), static_cast<std::streamsize>(line.size())).flush();
    }
    // An error may show only now, when the last bytes go to the disk or to a server.
    file.close();
    return file.good();
}

}  // namespace

bool CTessel::GetUnixFileTime(const char* path, long* time)
{
    // Without waiting: a FIFO would otherwise hold the run until somebody writes to it.
    int file = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    // A file that a server holds a lease on can't be opened so: the server is asked to give it up.
    if (file < 0 && errno == EWOULDBLOCK && IsReadable(path))
        file = open(path, O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return false;
    struct stat status = {};
    const bool known = fstat(file, &status) == 0;
    close(file);
    if (known)
        *time = RecordTime(status.st_mtime);
    return known;
}

bool CTessel::TestFile(const char* folder, const char* name)
{
    return TestFile(folder, name, nullptr);
}

/// The same with the name's record. Null where it isn't known, such as of a name that a folder
/// lists twice because it changes meanwhile.
bool CTessel::TestFile(const char* folder, const char* name, const SFileInfo* record)
{
#ifdef __GNUC__
    __builtin_prefetch(record ? &record->mTime : nullptr);  // to be there when the kernel answers
#endif
    long time = 0;
    std::string path;
    path.reserve(std::strlen(folder) + 1 + std::strlen(name));
    path.append(folder).append("/").append(name);
    if (!GetUnixFileTime(path.c_str(), &time))
        return true;
    if (!record) {
        const auto [place, isNew] = mFileInfoSet.insert({name, time});
        if (isNew)
            return true;
        record = &*place;
    }
    if (record->mTime >= time)
        return false;
    record->mTime = time;
    return true;
}

/// The records of the names, one for each, null where there is none. Names and records are gone
/// through side by side in their order: a folder is listed in none, so that a search for each name
/// goes all over memory, which took a fifth of a run over a hundred thousand pictures.
std::vector<const SFileInfo*> CTessel::FindRecords(const std::vector<std::string>& names) const
{
    std::vector<std::pair<std::uint64_t, std::size_t>> order(names.size());
    const std::size_t common = CommonLength(names);
    for (std::size_t i = 0; i < names.size(); ++i)
        order[i] = {SortKey(names[i], common), i};
    std::sort(order.begin(), order.end(), [&names](const auto& a, const auto& b) {
        return a.first != b.first ? a.first < b.first : names[a.second] < names[b.second];
    });
    std::vector<const SFileInfo*> records(names.size());
    auto record = mFileInfoSet.begin();
    for (const auto& [key, i] : order) {
        while (record != mFileInfoSet.end() && record->mName < names[i])
            ++record;
        if (record != mFileInfoSet.end() && record->mName == names[i])
            records[i] = &*record;
    }
    return records;
}

void CTessel::ReadDbase(const char* path)
{
    CFileIO file;
    if (!IsReadable(path) || !file.OpenFileRead(path, CFileIO::kBinary))
        return;
    std::string line;
    while (file.ReadLine(&line)) {
        const auto separator = line.find(kSeparator);
        if (separator == std::string::npos)
            continue;
        const auto time = separator + 1;
        const std::string field = line.substr(time, line.find(kSeparator, time) - time);
        line.resize(separator);
        // At the end, where the records of a file that this program wrote belong.
        const long recorded = RecordTime(CStringTool::StringTo<std::int64_t>(field));
        mFileInfoSet.insert(mFileInfoSet.end(), {line, recorded});
    }
    file.CloseFile();
}

void CTessel::WriteDbase(const char* path)
{
    for (int i = 0; i < kMostTries && CDraft::MayReplace(path); ++i) {
        CDraft draft(path);
        if (draft.mStream.is_open()) {
            if (!WriteRecords(draft.mStream, mFileInfoSet) || draft.PutInPlace())
                return;
            if (errno == ENOENT)
                continue;
        }
        // In a folder that can't be changed, or over a file that is mounted, there is but this way.
        if (std::ofstream file; MakeWay(path)) {
            file.open(path);
            WriteRecords(file, mFileInfoSet);
        }
        return;
    }
}
