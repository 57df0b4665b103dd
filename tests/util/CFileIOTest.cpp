#include "util/CFileIO.h"

#include <dirent.h>
#include <dlfcn.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

#include "tests/TestSupport.h"

using Own = std::unique_ptr<char[]>;  // takes over what a function made

static int entriesToFailure = -1;  // never

/// In the place of the system's: a folder that fails midway, as on a disk with faults.
extern "C" dirent* readdir(DIR* folder)
{
#ifdef __GLIBC__  // which calls it so where file offsets have 64 bits
    static const auto real = reinterpret_cast<decltype(&readdir)>(dlsym(RTLD_NEXT, "readdir64"));
#else
    static const auto real = reinterpret_cast<decltype(&readdir)>(dlsym(RTLD_NEXT, "readdir"));
#endif
    if (entriesToFailure-- != 0)
        return real(folder);
    errno = EIO;
    return nullptr;
}

struct CFileIOTest : FolderTest
{
    CFileIO mIO;
    int mSize = 0;
};

TEST_F(CFileIOTest, ReadLineEndsLinesAtLineFeedsAndDropsCarriageReturns)
{
    // The last is what no line feed ends.
    const std::pair<std::string, Names> rows[] = {
        {"a\r\nb\n", {"a", "b", ""}},   {"a\nbcdef", {"a", "bcdef"}}, {"ab\rc\n", {"abc", ""}},
        {"\n\nx\n", {"", "", "x", ""}}, {"\r\r\r\r\r", {""}},         {"unended", {"unended"}}};
    std::vector<char> first;
    for (const auto& [content, lines] : rows) {
        WriteAll(mFile, content);
        ASSERT_TRUE(mIO.OpenFileRead(mPath, CFileIO::kBinary));
        Names read(1);
        while (read.size() < 9 && mIO.ReadLine(&read.back()))
            read.emplace_back();
        EXPECT_EQ(read, lines) << content;
        EXPECT_TRUE(mIO.IsEof() && !mIO.ReadLine(&read[0]) && read[0].empty());
        mIO.Clear();
        EXPECT_TRUE(mIO.SetReadPos(0) && mIO.ReadLine(&first) == (lines.size() > 1));
        EXPECT_EQ(std::string(first.begin(), first.end()), lines[0]);
    }
    mIO.OpenFileRead(mFolder.c_str(), CFileIO::kBinary);
    EXPECT_FALSE(mIO.ReadLine(&first));  // a folder opens, and reads as an empty file
}

TEST_F(CFileIOTest, ReadsAndWritesAtPositions)
{
    EXPECT_FALSE(mIO.ReadBytes(&mSize, 1) || mIO.WriteBytes("a", 1) || mIO.ReadBytes(1));
    EXPECT_FALSE(mIO.OpenFileChange(mPath, 0) || mIO.FileExists(mPath));
    EXPECT_TRUE(mIO.OpenFileAppend(mPath, CFileIO::kBinary) && mIO.WriteString("01234"));
    EXPECT_TRUE(mIO.OpenFileAppend(mPath, CFileIO::kBinary) && mIO.WriteString("56789"));
    EXPECT_TRUE(mIO.GetWritePos() == 10 && mIO.OpenFileChange(mPath, 2) && mIO.WriteString("XY"));
    EXPECT_FALSE(mIO.WriteFile("/no/where", "abc", 3) || mIO.WriteFile(mPath, "abc", 0));
    EXPECT_STREQ(Own(mIO.ReadFile(mPath, &mSize)).get(), "01XY456789");
    ASSERT_TRUE(mIO.OpenFileRead(mPath, CFileIO::kBinary) && mSize == 10);
    EXPECT_TRUE(mIO.SetReadPos(4) && mIO.GetChar() == '4');
    mIO.SkipBytes(-2);
    EXPECT_TRUE(mIO.GetReadPos() == 3 && !mIO.SetReadPos2(-1, 2));  // position 9 isn't offset -1
    char rest[8] = {};
    EXPECT_TRUE(mIO.GetChar() == '9' && mIO.SetReadPos2(8, 0) && !mIO.SetReadPos2(0, 9));
    EXPECT_TRUE(mIO.ReadBytes(rest, 8) && mIO.IsEof() && std::string(rest) == "89");
    EXPECT_FALSE(mIO.OpenFileRead("/no/where", CFileIO::kBinary) || mIO.ReadBytes(rest, 1));
    EXPECT_TRUE(mIO.WriteFile(mPath, "a\0c", 3) && mIO.GetFileSize(mPath) == 3);
    EXPECT_EQ(truncate(mPath, off_t{5} << 30), 0);  // more than an int counts
    EXPECT_TRUE(!mIO.ReadFile(mPath, &mSize) && mSize == -1 && mIO.FileExists(mPath));
}

TEST_F(CFileIOTest, ResolveWildCardMatchesEndsOfNames)
{
    for (const char* name : {"a.jpg", "B.JPG", ".jpg", "d.jpeg", "jpg", "e.jpg.bak", "xjpgx"})
        WriteAll(mFolder / name, "");
    fs::create_directory(mFolder / "f.Jpg");
    const std::pair<std::string, Names> rows[] = {
        {"*.jpg", {".jpg", "B.JPG", "a.jpg", "f.Jpg"}},
        {"JPG", {".jpg", "B.JPG", "a.jpg", "f.Jpg", "jpg"}},
        {"*a*c", {}}};
    Names names{"left over"};
    for (const auto& [pattern, expected] : rows) {
        EXPECT_TRUE(mIO.ResolveWildCard(mFolder.c_str(), pattern.c_str(), &names));
        std::sort(names.begin(), names.end());
        EXPECT_EQ(names, expected);
    }
    names = {mFolder, "*.bak"};
    EXPECT_TRUE(mIO.ResolveWildCard(names[0].c_str(), names[1].c_str(), &names));
    EXPECT_EQ(names, Names{"e.jpg.bak"});
    EXPECT_TRUE(!mIO.ResolveWildCard(mPath, "*", &names) && names.empty());
    entriesToFailure = 5;
    EXPECT_FALSE(mIO.ResolveWildCard(mFolder.c_str(), "*", &names) || !names.empty());
    char** list = nullptr;
    EXPECT_EQ(OutputOf([&] { list = mIO.ResolveWildCard(mFolder.c_str(), "*.bak", &mSize); }),
              "CFileIO::ResolveWildCard Dir=" + mFolder.string() + " Wildcard=*.bak\n");
    EXPECT_TRUE(mSize == 1 && std::string(list[0]) == "e.jpg.bak" && !list[1]);
    mIO.DeleteStringList(list);
    OutputOf([&] { EXPECT_FALSE(mIO.ResolveWildCard(mFolder.c_str(), "none", &mSize) || mSize); });
}

TEST_F(CFileIOTest, NamesAndNumbers)
{
    const std::tuple<const char*, const char*, const char*, const char*, int> rows[] = {
        {"/a/b/c.jpg", "c.jpg", "/a/b/", "/a/b/c.x", 1},
        {"a\\b/c", "c", "a\\", "a\\b/c.x", 0},
        {"a/b\\c.gif", "b\\c.gif", "a/b\\", "a/b\\c.x", 6},
        {".jpg", ".jpg", ".jpg", ".x", 0},
        {"x.y.pNg", "x.y.pNg", "x.y.pNg", "x.y.x", 3}};
    for (const auto& [path, name, directory, replaced, format] : rows) {
        EXPECT_STREQ(Own(CFileIO::ExtractFilename(path)).get(), name);
        EXPECT_STREQ(Own(CFileIO::ExtractPath(path)).get(), directory);
        EXPECT_STREQ(Own(CFileIO::ReplaceApp(path, ".x")).get(), replaced);
        EXPECT_EQ(CFileIO::GuessFileFormat(path), format) << path;
    }
    EXPECT_FALSE(CFileIO::Strcmpx("abc", "abcd") || CFileIO::Strcmpx(nullptr, nullptr));
    EXPECT_STREQ(CFileIO::Fill0(-5, 4), "00-5");
    EXPECT_STREQ(CFileIO::Fill0(INT_MIN, 1000), "0000-2147483648");
    EXPECT_TRUE(CFileIO::GetInt(" 42abc") == 42 && CFileIO::GetInt(nullptr) == 0);
}
