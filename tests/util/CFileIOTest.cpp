#include "util/CFileIO.h"

#include <algorithm>

#include "tests/TestSupport.h"

namespace {

/// Takes over an array that a function made.
std::string Own(char* text)
{
    const std::unique_ptr<char[]> owner(text);
    return text ? text : "(null)";
}

}  // namespace

TEST(CFileIO, ReadLineEndsLinesAtLineFeedsAndDropsCarriageReturns)
{
    const TempFolder folder;
    const std::tuple<const char*, std::vector<std::string>, const char*> rows[] = {
        {"abc\r\ndef\n", {"abc", "def"}, ""},
        {"abc\ndef", {"abc"}, "def"},
        {"a\rb\n", {"ab"}, ""},
        {"\n\nx\n", {"", "", "x"}, ""},
        {"", {}, ""},
        {"\r\r", {}, ""}};
    for (const auto& [content, lines, rest] : rows) {
        WriteAll(folder / "lines", content);
        CFileIO file;
        ASSERT_TRUE(file.OpenFileRead((folder / "lines").c_str(), CFileIO::kBinary));
        std::string line;
        std::vector<char> characters;
        for (const std::string& expected : lines) {
            EXPECT_TRUE(file.ReadLine(&line)) << content;
            EXPECT_EQ(line, expected);
        }
        EXPECT_FALSE(file.ReadLine(&line));
        EXPECT_EQ(line, rest) << content;
        EXPECT_TRUE(file.IsEof() && !file.ReadLine(&line) && line.empty());
        file.Clear();
        EXPECT_TRUE(file.SetReadPos(0) && !file.IsEof());
        EXPECT_EQ(file.ReadLine(&characters), !lines.empty());
        EXPECT_EQ(std::string(characters.begin(), characters.end()),
                  lines.empty() ? rest : lines[0]);
    }
}

TEST(CFileIO, WhatCannotBeReadEndsLikeAnEmptyFile)
{
    const TempFolder folder;
    CFileIO file;
    std::string line = "x";
    char buffer[4];
    EXPECT_FALSE(file.ReadLine(&line) || file.ReadBytes(buffer, 4) || file.WriteBytes("a", 1));
    EXPECT_FALSE(file.OpenFileRead((folder / "missing").c_str(), CFileIO::kBinary));
    EXPECT_FALSE(file.ReadLine(&line) || file.ReadBytes(buffer, 4) || file.ReadBytes(4));
    file.OpenFileRead(folder.mPath.c_str(), CFileIO::kBinary);  // a folder opens, but can't be read
    EXPECT_FALSE(file.ReadLine(&line));
    file.CloseFile();
    file.CloseFile();
}

TEST(CFileIO, OpensReplaceAppendAndChange)
{
    const TempFolder folder;
    const std::string path = folder / "file", other = folder / "no/where";
    CFileIO file;
    EXPECT_FALSE(file.OpenFileChange(path.c_str(), 0) || fs::exists(path));
    ASSERT_TRUE(file.OpenFileAppend(path.c_str(), CFileIO::kBinary) && file.WriteString("abc"));
    ASSERT_TRUE(file.OpenFileAppend(path.c_str(), CFileIO::kBinary) && file.WriteString("def"));
    EXPECT_EQ(file.GetWritePos(), 6);
    ASSERT_TRUE(file.OpenFileChange(path.c_str(), 2) && file.WriteString("XY"));
    file.SetWritePos(0);
    file.WriteString("Z");
    file.SetWritePosEnd();
    file.WriteString("!");
    file.CloseFile();
    EXPECT_EQ(ReadAll(path), "ZbXYef!");
    EXPECT_FALSE(file.WriteFile(path.c_str(), "abc", 0) || file.WriteFile(other.c_str(), "abc", 3));
    EXPECT_EQ(ReadAll(path), "ZbXYef!");
    EXPECT_TRUE(file.WriteFile(path.c_str(), "a\0c", 3));
    EXPECT_EQ(ReadAll(path), std::string("a\0c", 3));
}

TEST(CFileIO, ReadsBytesAtPositions)
{
    const TempFolder folder;
    const std::string path = folder / "digits";
    WriteAll(path, "0123456789");
    CFileIO file;
    int size = 0;
    EXPECT_EQ(Own(file.ReadFile(path.c_str(), &size)), "0123456789");
    EXPECT_EQ(size, 10);
    EXPECT_TRUE(file.ReadFile((folder / "missing").c_str(), &size) == nullptr && size == -1);
    EXPECT_EQ(file.ReadFile(folder.mPath.c_str(), &size), nullptr);

    ASSERT_TRUE(file.OpenFileRead(path.c_str(), CFileIO::kBinary));
    EXPECT_TRUE(file.SetReadPos(4) && file.GetChar() == '4');
    file.SkipBytes(-2);
    EXPECT_EQ(file.GetReadPos(), 3);
    EXPECT_FALSE(file.SetReadPos2(-1, 2) || file.SetReadPos2(0, 9));  // position 9 isn't offset -1
    EXPECT_EQ(file.GetChar(), '9');
    char rest[8] = {};
    EXPECT_TRUE(file.SetReadPos2(8, 0) && file.ReadBytes(rest, 8) && file.IsEof());
    EXPECT_STREQ(rest, "89");
    file.OpenFileWrite((folder / "other").c_str(), CFileIO::kBinary);
    EXPECT_TRUE(file.ReadBytes(rest, 1));  // opening for writing leaves the reading flag alone
}

TEST(CFileIO, ResolveWildCardMatchesEndsOfNames)
{
    const TempFolder folder;
    for (const char* name :
         {"a.jpg", "B.JPG", "c.Jpg", ".jpg", "d.jpeg", "jpg", "e.jpg.bak", "xjpgx"})
        WriteAll(folder / name, "");
    fs::create_directory(folder / "holiday.jpg");
    const char* path = folder.mPath.c_str();
    const std::pair<const char*, std::vector<std::string>> rows[] = {
        {"*.jpg", {".jpg", "B.JPG", "a.jpg", "c.Jpg", "holiday.jpg"}},
        {"JPG", {".jpg", "B.JPG", "a.jpg", "c.Jpg", "holiday.jpg", "jpg"}},
        {"*a*c", {}}};
    std::vector<std::string> names{"left over"};
    for (const auto& row : rows) {
        EXPECT_TRUE(CFileIO::ResolveWildCard(path, row.first, &names));
        int count = -1;
        char** list = nullptr;
        EXPECT_EQ(OutputOf([&] { list = CFileIO::ResolveWildCard(path, row.first, &count); }),
                  "CFileIO::ResolveWildCard Dir=" + folder.mPath + " Wildcard=" + row.first + "\n");
        EXPECT_EQ(std::vector<std::string>(list, list + count), names);
        EXPECT_EQ(list == nullptr, names.empty());
        EXPECT_TRUE(!list || list[count] == nullptr);
        CFileIO::DeleteStringList(list);
        std::sort(names.begin(), names.end());
        EXPECT_EQ(names, row.second) << row.first;
    }
    EXPECT_TRUE(CFileIO::ResolveWildCard(path, "*", &names));
    EXPECT_EQ(names.size(), 11U);  // . and .. among them
    EXPECT_FALSE(CFileIO::ResolveWildCard((folder / "missing").c_str(), "*", &names));
    EXPECT_TRUE(names.empty());
}

TEST(CFileIO, FileServicesLookAtTheFile)
{
    const TempFolder folder;
    WriteAll(folder / "ten", "0123456789");
    EXPECT_EQ(CFileIO::GetFileSize((folder / "ten").c_str()), 10);
    fs::resize_file(folder / "ten", std::uintmax_t{5} << 30);
    EXPECT_EQ(CFileIO::GetFileSize((folder / "ten").c_str()), -1);  // more than an int counts
    EXPECT_EQ(CFileIO::GetFileSize((folder / "missing").c_str()), -1);
    EXPECT_TRUE(CFileIO::FileExists((folder / "ten").c_str()));
    EXPECT_FALSE(CFileIO::FileExists((folder / "missing").c_str()));
    for (int i = 0; i < 2; ++i)
        EXPECT_TRUE(CFileIO::CreateDir((folder / "new").c_str()) &&
                    fs::is_directory(folder / "new"));
}

TEST(CFileIO, NamesAreTakenApart)
{
    const std::string longName(5000, 'n');
    const std::tuple<std::string, std::string, std::string, std::string, int> rows[] = {
        {"/a/b/c.jpg", "c.jpg", "/a/b/", "/a/b/c.x", 1},
        {"c.JpG", "c.JpG", "c.JpG", "c.x", 1},
        {"a\\b/c", "c", "a\\", "a\\b/c.x", 0},
        {"a/b\\c.gif", "b\\c.gif", "a/b\\", "a/b\\c.x", 6},
        {"set.2/pic", "pic", "set.2/", "set.x", 0},
        {".jpg", ".jpg", ".jpg", ".x", 0},
        {"x.tiff", "x.tiff", "x.tiff", "x.x", 0},
        {"dir/", "", "dir/", "dir/.x", 0},
        {longName + ".png", longName + ".png", longName + ".png", longName + ".x", 3}};
    for (const auto& [path, name, directory, replaced, format] : rows) {
        EXPECT_EQ(Own(CFileIO::ExtractFilename(path.c_str())), name);
        EXPECT_EQ(Own(CFileIO::ExtractPath(path.c_str())), directory);
        EXPECT_EQ(Own(CFileIO::ReplaceApp(path.c_str(), ".x")), replaced);
        EXPECT_EQ(CFileIO::GuessFileFormat(path.c_str()), format) << path;
    }
    EXPECT_TRUE(CFileIO::Strcmpx("aBc", "AbC"));
    EXPECT_FALSE(CFileIO::Strcmpx("abc", "abcd") || CFileIO::Strcmpx(nullptr, nullptr));
}

TEST(CFileIO, Fill0PadsAndGetIntReads)
{
    const std::tuple<int, int, const char*> rows[] = {{7, 3, "007"},
                                                      {1234, 3, "1234"},
                                                      {-5, 4, "00-5"},
                                                      {5, -1, "5"},
                                                      {-2147483647 - 1, 15, "0000-2147483648"}};
    for (const auto& [value, width, text] : rows) {
        char buffer[20];
        EXPECT_STREQ(CFileIO::Fill0(buffer, value, width), text);
        EXPECT_STREQ(CFileIO::Fill0(value, width), text);
    }
    EXPECT_STREQ(CFileIO::Fill0(1, 1000), "000000000000001");
    EXPECT_TRUE(CFileIO::GetInt("42abc") == 42 && CFileIO::GetInt(" 17") == 17);
    EXPECT_TRUE(CFileIO::GetInt("abc") == 0 && CFileIO::GetInt(nullptr) == 0);
}
