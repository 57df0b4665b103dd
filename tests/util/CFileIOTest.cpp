#include "util/CFileIO.h"

#include <climits>
#include <functional>

#include "tests/support/TestSupport.h"

struct CFileIOTest : FolderTest
{
    using Opener = bool (CFileIO::*)(const char* path, int argument);

    /// Opens a file with this content for reading.
    void OpenHolding(const std::string& content)
    {
        WriteAll(mFile, content);
        mIO.OpenFileRead(mPath, CFileIO::kBinary);
    }

    /// What the test's file holds after "XY" was written to it, opened in this way.
    std::string WithXY(Opener open, int argument)
    {
        (mIO.*open)(mPath, argument);
        mIO.WriteString("XY");
        mIO.CloseFile();
        return ReadAll(mFile);
    }

    CFileIO mIO;
};

// --- Lines ---------------------------------------------------------------------------------------

TEST_F(CFileIOTest, ReadLineEndsLinesAtLineFeedsAndDropsCarriageReturns)
{
    // What a file holds, its lines, and the rest that no line feed ends.
    const std::tuple<const char*, Names, const char*> rows[] = {
        {"a\r\nb\n", {"a", "b"}, ""},   {"a\nbcdef", {"a"}, "bcdef"}, {"ab\rc\n", {"abc"}, ""},
        {"\n\nx\n", {"", "", "x"}, ""}, {"\r\r\r", {}, ""},           {"", {}, ""}};
    for (const auto& [content, expected, rest] : rows) {
        SCOPED_TRACE(content);
        OpenHolding(content);
        Names lines;
        std::string line;
        while (mIO.ReadLine(&line))
            lines.push_back(line);
        EXPECT_EQ(lines, expected);
        EXPECT_EQ(line, rest);
        EXPECT_TRUE(mIO.IsEof());
    }
}

TEST_F(CFileIOTest, ReadLineReplacesAnArrayOfCharacters)
{
    OpenHolding("ab\ncd");
    std::vector<char> line{'x'};
    const bool isWhole = mIO.ReadLine(&line);
    EXPECT_TRUE(isWhole);
    EXPECT_THAT(line, testing::ElementsAre('a', 'b'));
}

TEST_F(CFileIOTest, NothingIsReadBehindTheEndUntilClear)
{
    OpenHolding("ab");
    std::string line;
    mIO.ReadLine(&line);
    EXPECT_FALSE(mIO.SetReadPos(0));
    EXPECT_FALSE(mIO.ReadLine(&line));
    EXPECT_EQ(line, "");
    EXPECT_EQ(mIO.GetReadPos(), -1);
    EXPECT_EQ(mIO.GetChar(), 0);
    mIO.Clear();
    EXPECT_TRUE(mIO.SetReadPos(0));
    EXPECT_EQ(mIO.GetChar(), 'a');
}

// --- Opening -------------------------------------------------------------------------------------

TEST_F(CFileIOTest, NothingHappensWithoutAFile)
{
    const std::pair<const char*, std::function<void()>> rows[] = {
        {"before the first file", [] {}},
        {"after a failed open to write", [&] { mIO.OpenFileWrite("/no/where", 0); }},
        {"after a failed open to read", [&] { mIO.OpenFileRead("/no/where", 0); }},
        {"after a close", [&] { OpenHolding("text"); }}};
    for (const auto& [when, open] : rows) {
        SCOPED_TRACE(when);
        char byte = 'x';
        std::string line("left over");
        open();
        mIO.CloseFile();
        mIO.SkipBytes(1);
        mIO.SetWritePos(1);
        mIO.SetWritePosEnd();
        mIO.Clear();
        EXPECT_FALSE(mIO.ReadBytes(&byte, 1));
        EXPECT_EQ(byte, 'x');
        EXPECT_EQ(mIO.ReadBytes(1), nullptr);
        EXPECT_EQ(mIO.GetChar(), 0);
        EXPECT_FALSE(mIO.ReadLine(&line));
        EXPECT_EQ(line, "");
        EXPECT_FALSE(mIO.WriteBytes("a", 1));
        EXPECT_FALSE(mIO.SetReadPos(0));
        EXPECT_EQ(mIO.GetReadPos(), -1);
        EXPECT_EQ(mIO.GetWritePos(), -1);
    }
}

TEST_F(CFileIOTest, OpeningOneWayLeavesTheStateOfTheOtherUntilAClose)
{
    EXPECT_TRUE(mIO.OpenFileWrite(mPath, 0));
    EXPECT_TRUE(mIO.OpenFileRead(mPath, 0));
    EXPECT_TRUE(mIO.mWriteOk);
    EXPECT_FALSE(mIO.OpenFileWrite("/no/where", 0));
    EXPECT_FALSE(mIO.mWriteOk);
    EXPECT_TRUE(mIO.mReadOk);
    mIO.CloseFile();
    EXPECT_FALSE(mIO.mReadOk);
    EXPECT_TRUE(mIO.IsEof());
}

TEST_F(CFileIOTest, EachWayOfOpeningWritesWhereItSays)
{
    // What a file that was missing, and one that held "01234", holds after "XY" was written to it.
    const std::tuple<const char*, Opener, int, const char*, const char*> rows[] = {
        {"write", &CFileIO::OpenFileWrite, 0, "XY", "XY"},
        {"keep", &CFileIO::OpenFileWrite, CFileIO::kRead, "", "XY234"},
        {"empty", &CFileIO::OpenFileWrite, CFileIO::kRead | CFileIO::kTruncate, "XY", "XY"},
        {"at end", &CFileIO::OpenFileWrite, CFileIO::kRead | CFileIO::kAtEnd, "", "01234XY"},
        {"append", &CFileIO::OpenFileAppend, 0, "XY", "01234XY"},
        {"change", &CFileIO::OpenFileChange, 2, "", "01XY4"}};
    for (const auto& [name, open, argument, ofNone, of01234] : rows) {
        fs::remove(mFile);
        EXPECT_EQ(WithXY(open, argument), ofNone) << name;
        WriteAll(mFile, "01234");
        EXPECT_EQ(WithXY(open, argument), of01234) << name;
    }
}

TEST_F(CFileIOTest, OpeningAFileAgainWritesItOutBefore)
{
    mIO.OpenFileWrite(mPath, 0);
    mIO.WriteString("abc");
    mIO.OpenFileWrite(mPath, 0);
    mIO.WriteString("d");
    mIO.CloseFile();
    EXPECT_EQ(ReadAll(mFile), "d");
}

// --- Positions and bytes -------------------------------------------------------------------------

TEST_F(CFileIOTest, ReadPositionsMoveFromStartPlaceAndEnd)
{
    const std::tuple<int, int, bool, int> rows[] = {
        {6, 0, true, 6}, {2, 1, false, 8}, {-1, 2, false, 9}, {0, 3, false, 9}, {0, 0, true, 0}};
    OpenHolding("0123456789");
    for (const auto& [offset, direction, isAtOffset, position] : rows) {
        const bool result = mIO.SetReadPos2(offset, static_cast<unsigned char>(direction));
        EXPECT_EQ(result, isAtOffset) << offset << " in direction " << direction;
        EXPECT_EQ(mIO.GetReadPos(), position);
    }
}

TEST_F(CFileIOTest, SkipBytesMovesBothWays)
{
    OpenHolding("0123456789");
    mIO.SkipBytes(5);
    mIO.SkipBytes(-3);
    EXPECT_EQ(mIO.GetReadPos(), 2);
}

TEST_F(CFileIOTest, WritePositionsMove)
{
    WriteAll(mFile, "01234");
    mIO.OpenFileChange(mPath, 0);
    mIO.SetWritePosEnd();
    EXPECT_EQ(mIO.GetWritePos(), 5);
    mIO.WriteString("Z");
    mIO.SetWritePos(1);
    mIO.WriteString("A");
    mIO.CloseFile();
    EXPECT_EQ(ReadAll(mFile), "0A234Z");
}

TEST_F(CFileIOTest, ReadBytesIsTrueForShortReadsToo)
{
    OpenHolding("ab");
    char bytes[8] = {};
    const bool isRead = mIO.ReadBytes(bytes, 7);
    EXPECT_TRUE(isRead);
    EXPECT_STREQ(bytes, "ab");
    EXPECT_TRUE(mIO.IsEof());
}

TEST_F(CFileIOTest, ReadBytesMakesANewArray)
{
    OpenHolding("abc");
    const std::unique_ptr<char[]> none(mIO.ReadBytes(0));
    const std::unique_ptr<char[]> bytes(mIO.ReadBytes(2));
    EXPECT_NE(none, nullptr);
    EXPECT_EQ(std::string(bytes.get(), 2), "ab");
}

// --- Whole files ---------------------------------------------------------------------------------

TEST_F(CFileIOTest, WriteFileReplacesAndReadFileReadsAll)
{
    WriteAll(mFile, "something longer");
    int size = -1;
    const bool isWritten = mIO.WriteFile(mPath, "a\0c", 3);
    const std::unique_ptr<char[]> content(mIO.ReadFile(mPath, &size));
    EXPECT_TRUE(isWritten);
    EXPECT_EQ(size, 3);
    EXPECT_EQ(std::string(content.get(), 4), std::string("a\0c\0", 4));
    EXPECT_EQ(mIO.mStream, nullptr);
}

TEST_F(CFileIOTest, WriteFileRefusesNothingAndFoldersThatAreMissing)
{
    EXPECT_FALSE(mIO.WriteFile(mPath, "abc", 0));
    EXPECT_FALSE(fs::exists(mFile));
    EXPECT_FALSE(mIO.WriteFile("/no/where", "abc", 3));
}

TEST_F(CFileIOTest, ReadFileRefusesMissingFilesAndTooLongOnes)
{
    WriteAll(mFile, "");
    fs::resize_file(mFile, std::uintmax_t{INT_MAX} + 1);
    for (const char* path : {"/no/where", mPath}) {
        int size = 7;
        const std::unique_ptr<char[]> content(mIO.ReadFile(path, &size));
        EXPECT_EQ(content, nullptr) << path;
        EXPECT_EQ(size, -1) << path;
    }
}
