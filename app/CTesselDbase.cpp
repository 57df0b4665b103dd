// The thumbnail database. Its grammar stands here alone: one line per picture, in ascending order
// of names: the name, a TAB, the time in decimal, a line feed. Carriage returns are dropped when
// reading, and what follows a second TAB is ignored. The file is written aside and put in place
// when it is complete: a run that is killed loses no record.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <utility>
#include <vector>

#include "app/CTessel.h"
#include "app/OutputFile.h"
#include "util/CFileIO.h"
#include "util/CStringTool.h"

namespace {

constexpr char kSeparator = '\t';
constexpr const char* kUnstorable = "\t\n\r";  // in names: they would be read back as others

/// Cuts a line behind its second field, so that a line of a million fields costs no more.
void CutThirdField(std::string* line)
{
    const auto first = line->find(kSeparator);
    if (first != std::string::npos)
        line->resize(std::min(line->size(), line->find(kSeparator, first + 1)));
}

/// True when all records are in the file.
bool WriteRecords(std::ofstream& file, const std::set<SFileInfo>& records)
{
    for (const SFileInfo& info : records) {
        if (info.mName.find_first_of(kUnstorable) != std::string::npos)
            continue;
        const std::string line = info.mName + kSeparator + std::to_string(info.mTime) + '\n';
        file.write(line.data(), static_cast<std::streamsize>(line.size())).flush();
    }
    return file.good();
}

}  // namespace

bool CTessel::GetUnixFileTime(const char* path, long* time)
{
    // Without waiting: a FIFO would otherwise hold the run until somebody writes to it.
    const int file = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return false;
    struct stat status = {};
    fstat(file, &status);
    close(file);
    *time = status.st_mtime;
    return true;
}

bool CTessel::TestFile(const char* folder, const char* name)
{
    SFileInfo info{name, 0};
    if (!GetUnixFileTime((std::string(folder) + "/" + name).c_str(), &info.mTime))
        return true;
    const auto found = mFileInfoSet.lower_bound(info);
    if (found == mFileInfoSet.end() || info < *found) {
        mFileInfoSet.insert(found, std::move(info));
        return true;
    }
    if (found->mTime >= info.mTime)
        return false;
    auto record = mFileInfoSet.extract(found);
    record.value().mTime = info.mTime;
    mFileInfoSet.insert(std::move(record));
    return true;
}

void CTessel::ReadDbase(const char* path)
{
    CFileIO file;
    if (!IsReadable(path) || !file.OpenFileRead(path, CFileIO::kBinary))
        return;
    CStringTool text;
    std::string line;
    std::vector<std::string> fields;
    while (file.ReadLine(&line)) {
        CutThirdField(&line);
        fields.clear();
        if (text.SplitString(line, &fields, kSeparator) < 2)
            continue;
        // At the end, where the records of a file that this program wrote belong.
        mFileInfoSet.insert(mFileInfoSet.end(),
                            {std::move(fields[0]), text.StringTo<long>(fields[1])});
    }
    file.CloseFile();
}

void CTessel::WriteDbase(const char* path)
{
    if (!CanReplace(path))
        return;
    const std::string draft = std::string(path) + ".new";
    std::ofstream file;
    if (MakeWay(draft.c_str()))
        file.open(draft);
    if (file.is_open()) {
        if (!WriteRecords(file, mFileInfoSet) || std::rename(draft.c_str(), path) != 0)
            unlink(draft.c_str());
    } else if (MakeWay(path)) {  // such as in a folder that can't be changed
        file.open(path);
        WriteRecords(file, mFileInfoSet);
    }
}
