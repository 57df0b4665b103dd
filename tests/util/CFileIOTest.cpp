#include "util/CFileIO.h"

#include <dirent.h>
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <functional>

#include "tests/support/TestSupport.h"

using Own = std::unique_ptr<char[]>;  // takes over what a function made

static int entriesToFailure = -1;  // never

/// In the place of the system's: a folder that fails midway, as on a disk with faults.
extern "C" dirent* readdir(DIR* folder)
{
    void* known = dlsym(RTLD_NEXT, "readdir64");  // where file offsets can have 32 bits, too
    static const auto real =
        reinterpret_cast<decltype(&readdir)>(known ? known : dlsym(RTLD_NEXT, "readdir"));
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
        EXPECT_TRUE(mIO.IsEof() && !mIO.SetReadPos(0));
        EXPECT_TRUE(!mIO.ReadLine(&read[0]) && read[0].empty());
        EXPECT_TRUE(mIO.GetReadPos() == -1 && mIO.GetChar() == 0);  // until Clear
        mIO.Clear();
        EXPECT_TRUE(mIO.SetReadPos(0) && mIO.ReadLine(&first) == (lines.size() > 1));
        EXPECT_EQ(std::string(first.begin(), first.end()), lines[0]);
    }
    mIO.OpenFileRead(mFolder.c_str(), CFileIO::kBinary);
    EXPECT_FALSE(mIO.ReadLine(&first));  // a folder opens, and reads as an empty file
}

TEST_F(CFileIOTest, WithoutAnOpenFileNothingHappens)
{
    // Never opened, failed for reading, failed for writing, closed.
    const std::function<bool()> states[] = {
        [&] { return mIO.OpenFileChange(mPath, 0) || mIO.FileExists(mPath); },
        [&] { return mIO.mReadOk = true, mIO.OpenFileRead("/no/where", CFileIO::kBinary); },
        [&] { return mIO.mWriteOk = true, mIO.OpenFileWrite("/no/where", CFileIO::kBinary); },
        [&] {
            EXPECT_TRUE(mIO.OpenFileWrite(mPath, 0) && mIO.OpenFileRead(mPath, 0));
            mIO.CloseFile();
            return mIO.mStream || mIO.mReadOk || mIO.mWriteOk;
        }};
    EXPECT_TRUE(mIO.IsEof());
    for (const auto& enter : states) {
        std::string line("left over");
        EXPECT_FALSE(enter() || mIO.ReadBytes(&mSize, 1) || mIO.WriteBytes("a", 1));
        EXPECT_FALSE(mIO.ReadBytes(1) || mIO.ReadLine(&line) || mIO.GetChar() || mSize);
        EXPECT_FALSE(!line.empty() || mIO.SetReadPos(0) || mIO.SetReadPos2(0, 1));
        EXPECT_TRUE(mIO.GetReadPos() == -1 && mIO.GetWritePos() == -1);
        EXPECT_EQ(mIO.IsEof(), !mIO.mStream);
        mIO.SkipBytes(1);
        mIO.SetWritePos(1);
        mIO.SetWritePosEnd();
        mIO.Clear();
        mIO.CloseFile();
        EXPECT_FALSE(mIO.mReadOk || mIO.mWriteOk);
    }
}

TEST_F(CFileIOTest, ReadsAndWritesAtPositions)
{
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
    EXPECT_TRUE(mIO.GetChar() == '9' && mIO.SetReadPos2(6, 0) && !mIO.SetReadPos2(2, 1));
    EXPECT_TRUE(mIO.GetReadPos() == 8 && !mIO.SetReadPos2(0, 3) && mIO.ReadBytes(rest, -1));
    EXPECT_TRUE(!mIO.ReadBytes(-1) && Own(mIO.ReadBytes(0)) && mIO.GetReadPos() == 8);
    EXPECT_TRUE(mIO.ReadBytes(rest, 8) && mIO.IsEof() && std::string(rest) == "89");
    // The bits of modes: into what is there, from its end, and with nothing left of it.
    EXPECT_TRUE(mIO.OpenFileWrite(mPath, CFileIO::kRead | CFileIO::kAtEnd));
    EXPECT_EQ(mIO.GetWritePos(), 10);
    mIO.SetWritePos(0);
    EXPECT_TRUE(mIO.WriteString("A"));
    mIO.SetWritePosEnd();
    EXPECT_TRUE(mIO.WriteString("Z") && mIO.WriteBytes("no", -1));
    mIO.CloseFile();
    EXPECT_EQ(ReadAll(mFile), "A1XY456789Z");
    EXPECT_TRUE(mIO.OpenFileWrite(mPath, CFileIO::kRead | CFileIO::kTruncate));
    EXPECT_TRUE(ReadAll(mFile).empty() && mIO.FileExists(mPath));
    EXPECT_TRUE(mIO.WriteFile(mPath, "a\0c", 3) && mIO.GetFileSize(mPath) == 3);
    for (const off_t more : {0, 1}) {  // as much as an int counts, and more
        EXPECT_EQ(truncate(mPath, INT_MAX + more), 0);
        EXPECT_EQ(mIO.GetFileSize(mPath), more == 0 ? INT_MAX : -1);
    }
    EXPECT_TRUE(!mIO.ReadFile(mPath, &mSize) && mSize == -1 && mIO.FileExists(mPath));
    EXPECT_FALSE(mIO.mStream || CFileIO::GetFileSize("/no/where") != -1);
}

TEST_F(CFileIOTest, ResolveWildCardMatchesEndsOfNames)
{
    for (const char* name : {"a.jpg", "B.JPG", ".jpg", "d.jpeg", "jpg", "e.jpg.bak", "xjpgx"})
        WriteAll(mFolder / name, "");
    fs::create_directory(mFolder / "f.Jpg");
    const std::pair<std::string, Names> rows[] = {
        {"*.jpg", {".jpg", "B.JPG", "a.jpg", "f.Jpg"}},
        {"JPG", {".jpg", "B.JPG", "a.jpg", "f.Jpg", "jpg"}},
        {"*",
         {".", "..", ".jpg", "B.JPG", "a.jpg", "d.jpeg", "e.jpg.bak", "f.Jpg", "jpg", "xjpgx"}},
        {"**.jpg", {}}};
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
    mIO.DeleteStringList(nullptr);
    OutputOf([&] { EXPECT_FALSE(mIO.ResolveWildCard(mFolder.c_str(), "none", &mSize) || mSize); });
    const mode_t mask = umask(0);
    const std::string made = mFolder / "made";
    EXPECT_TRUE(CFileIO::CreateDir(made.c_str()) && CFileIO::CreateDir(made.c_str()));
    EXPECT_EQ(fs::status(made).permissions(), fs::perms(0775));
    umask(mask);
}

TEST_F(CFileIOTest, NamesAndNumbers)
{
    const std::tuple<const char*, const char*, const char*, const char*, int> rows[] = {
        {"/a/b/c.jpg", "c.jpg", "/a/b/", "/a/b/c.x", 1},
        {"a\\b/c", "c", "a\\", "a\\b/c.x", 0},
        {"a/b\\c.gif", "b\\c.gif", "a/b\\", "a/b\\c.x", 6},
        {".jpg", ".jpg", ".jpg", ".x", 0},
        {"a.raw", "a.raw", "a.raw", "a.x", 5},
        {"a\\b.tga", "b.tga", "a\\", "a\\b.x", 4},
        {"x.tiff", "x.tiff", "x.tiff", "x.x", 0},
        {"x.tif", "x.tif", "x.tif", "x.x", 2},
        {"x.y.pNg", "x.y.pNg", "x.y.pNg", "x.y.x", 3}};
    for (const auto& [path, name, directory, replaced, format] : rows) {
        EXPECT_STREQ(Own(CFileIO::ExtractFilename(path)).get(), name);
        EXPECT_STREQ(Own(CFileIO::ExtractPath(path)).get(), directory);
        EXPECT_STREQ(Own(CFileIO::ReplaceApp(path, ".x")).get(), replaced);
        EXPECT_EQ(CFileIO::GuessFileFormat(path), format) << path;
    }
    EXPECT_FALSE(CFileIO::Strcmpx("abc", "abcd") || CFileIO::Strcmpx(nullptr, nullptr));
    EXPECT_FALSE(CFileIO::Strcmpx("[", "{") || CFileIO::Strcmpx("", nullptr));
    EXPECT_TRUE(!CFileIO::Strcmpx(nullptr, "") && CFileIO::FileAttribut("/no/where") == 1);
    char buffer[13] = "<";
    EXPECT_STREQ(CFileIO::Fill0(buffer + 1, 1234, 3), "1234");
    EXPECT_EQ(buffer[0], '<');
    EXPECT_STREQ(CFileIO::Fill0(-5, 4), "00-5");
    EXPECT_STREQ(CFileIO::Fill0(INT_MIN, 1000), "0000-2147483648");
    EXPECT_TRUE(CFileIO::GetInt(" 42abc") == 42 && CFileIO::GetInt(nullptr) == 0);
}
