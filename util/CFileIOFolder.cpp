// The static functions of CFileIO: folders, files by name, and names.
#include <dirent.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "util/CFileIO.h"
#include "util/CStringTool.h"

namespace {

/// The extension at index n has the format code n + 1.
constexpr const char* kFormatExtensions[] = {".JPG", ".TIF", ".PNG", ".TGA", ".RAW", ".GIF"};
constexpr std::size_t kShortestFormatName = 5;  // one character and an extension

constexpr int kSharedFillWidth = 15;
constexpr std::size_t kIntTextSize = 12;  // "-2147483648" and its zero

struct FolderCloser
{
    void operator()(DIR* folder) const { closedir(folder); }
};

struct StringListDeleter
{
    void operator()(char** list) const { CFileIO::DeleteStringList(list); }
};

bool EndsIn(std::string_view name, const char* suffix)
{
    const std::size_t length = std::strlen(suffix);
    return name.size() >= length && CFileIO::Strcmpx(name.data() + name.size() - length, suffix);
}

}  // namespace

bool CFileIO::ResolveWildCard(const char* folder, const char* pattern,
                              std::vector<std::string>* list)
{
    const std::unique_ptr<DIR, FolderCloser> handle(opendir(folder));
    const std::string suffix(*pattern == '*' ? pattern + 1 : pattern);
    list->clear();  // only now, as `folder` and `pattern` may be elements of it
    if (!handle)
        return false;
    const auto next = [&handle] {
        errno = 0;  // an error changes it, the end of the folder doesn't
        return readdir(handle.get());
    };
    const dirent* entry = next();
    for (; entry; entry = next()) {
        if (EndsIn(entry->d_name, suffix.c_str()))
            list->emplace_back(entry->d_name);
    }
    if (errno != 0) {
        list->clear();
        return false;
    }
    return true;
}

char** CFileIO::ResolveWildCard(const char* folder, const char* pattern, int* count)
{
    std::cout << "CFileIO::ResolveWildCard Dir=" << folder << " Wildcard=" << pattern << std::endl;
    std::vector<std::string> names;
    ResolveWildCard(folder, pattern, &names);
    *count = static_cast<int>(names.size());
    if (names.empty())
        return nullptr;
    // All pointers are null at first, so that the list can be released when a copy fails.
    std::unique_ptr<char*[], StringListDeleter> list(new char*[names.size() + 1]());
    for (std::size_t i = 0; i < names.size(); ++i)
        list[i] = NewString(names[i].c_str());
    return list.release();
}

void CFileIO::DeleteStringList(char** list)
{
    if (!list)
        return;
    for (char** name = list; *name; ++name)
        delete[] * name;
    delete[] list;
}

bool CFileIO::CreateDir(const char* path)
{
    mkdir(path, 0775);
    return true;
}

bool CFileIO::FileExists(const char* path)
{
    return std::ifstream(path, std::ios_base::binary).good();
}

int CFileIO::GetFileSize(const char* path)
{
    std::ifstream file(path, std::ios_base::binary);
    file.seekg(0, std::ios_base::end);
    const std::streamoff size = file.tellg();
    return size <= std::numeric_limits<int>::max() ? static_cast<int>(size) : -1;
}

int CFileIO::FileAttribut(const char* /*path*/)
{
    return 1;
}

bool CFileIO::Strcmpx(const char* a, const char* b)
{
    if (!a || !b)
        return false;
    const auto sameLetter = [](unsigned char x, unsigned char y) {
        return std::toupper(x) == std::toupper(y);
    };
    return std::equal(a, a + std::strlen(a), b, b + std::strlen(b), sameLetter);
}

char* CFileIO::ExtractFilename(const char* path)
{
    const char* separator = std::strrchr(path, '/');
    if (!separator)
        separator = std::strrchr(path, '\\');
    return NewString(separator ? separator + 1 : path);
}

char* CFileIO::ExtractPath(const char* path)
{
    const char* separator = std::strrchr(path, '\\');
    if (!separator)
        separator = std::strrchr(path, '/');
    return NewString(separator ? std::string(path, separator + 1).c_str() : path);
}

char* CFileIO::ReplaceApp(const char* name, const char* extension)
{
    const std::string text(name);
    return NewString((text.substr(0, text.rfind('.')) + extension).c_str());
}

int CFileIO::GuessFileFormat(const char* name)
{
    if (std::strlen(name) < kShortestFormatName)
        return 0;
    for (std::size_t i = 0; i < std::size(kFormatExtensions); ++i) {
        if (EndsIn(name, kFormatExtensions[i]))
            return static_cast<int>(i) + 1;
    }
    return 0;
}

char* CFileIO::Fill0(char* buffer, int value, int width)
{
    char digits[kIntTextSize];
    const int length = std::snprintf(digits, sizeof digits, "%d", value);
    const int zeros = std::max(0, width - length);
    std::fill_n(buffer, zeros, '0');
    std::memcpy(buffer + zeros, digits, static_cast<std::size_t>(length) + 1);
    return buffer;
}

char* CFileIO::Fill0(int value, int width)
{
    static char buffer[kSharedFillWidth + 1];
    return Fill0(buffer, value, std::min(width, kSharedFillWidth));
}

int CFileIO::GetInt(const char* text)
{
    return text ? CStringTool::StringTo<int>(text) : 0;
}

char* CFileIO::NewString(const char* text)
{
    const std::size_t size = std::strlen(text) + 1;
    char* copy = new char[size];
    std::memcpy(copy, text, size);
    return copy;
}
