#include "util/CFileIO.h"

#include <climits>

#include "tests/support/TestSupport.h"

using testing::ElementsAre;

struct CFileIOTest : FolderTest
{
    /// Opens a file with this content for reading.
    void OpenHolding(const std::string& content)
    {
        WriteAll(mFile, content);
        mIO.OpenFileRead(mPath, CFileIO::kBinary);
    }

    /// What must hold of every operation while no file is open.
    void ExpectNothingHappens();

    CFileIO mIO;
};

// --- Lines ---------------------------------------------------------------------------------------

TEST_F(CFileIOTest, ReadLineEndsLinesAtLineFeedsAndDropsCarriageReturns)
{
    const struct
    {
        const char* mContent;
        Names mLines;
        const char* mRest;  ///< what no line feed ends
    } rows[] = {
        {"a\r\nb\n", {"a", "b"}, ""},
        {"a\nbcdef", {"a"}, "bcdef"},
        {"ab\rc\n", {"abc"}, ""},
        {"\n\nx\n", {"", "", "x"}, ""},
        {"\r\r\r\r\r", {}, ""},
        {"unended", {}, "unended"},
        {"", {}, ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mContent);
        OpenHolding(row.mContent);
        Names lines;
        std::string line;
        while (mIO.ReadLine(&line))
            lines.push_back(line);
        EXPECT_EQ(lines, row.mLines);
        EXPECT_EQ(line, row.mRest);
        EXPECT_TRUE(mIO.IsEof());
    }
}

TEST_F(CFileIOTest, ReadLineFillsAnArrayOfCharacters)
{
    OpenHolding("ab\ncd");
    std::vector<char> first;
    std::vector<char> rest;
    const bool isFirstWhole = mIO.ReadLine(&first);
    const bool isRestWhole = mIO.ReadLine(&rest);
    EXPECT_TRUE(isFirstWhole);
    EXPECT_THAT(first, ElementsAre('a', 'b'));
    EXPECT_FALSE(isRestWhole);
    EXPECT_THAT(rest, ElementsAre('c', 'd'));
}

TEST_F(CFileIOTest, LinesJoinToTheFile)
{
    const Bytes noise = Noise(5000);
    std::string content(noise.begin(), noise.end());
    OpenHolding(content);
    std::string joined;
    std::string line;
    while (mIO.ReadLine(&line))
        joined += line + '\n';
    std::erase(content, '\r');
    EXPECT_EQ(joined + line, content);
}

TEST_F(CFileIOTest, ReadLineTakesAFolderForAnEmptyFile)
{
    mIO.OpenFileRead(mFolder.c_str(), CFileIO::kBinary);
    std::string line("left over");
    const bool isWhole = mIO.ReadLine(&line);
    EXPECT_FALSE(isWhole);
    EXPECT_EQ(line, "");
}

TEST_F(CFileIOTest, NothingIsReadBehindTheEndUntilClear)
{
    OpenHolding("ab");
    std::string line;
    mIO.ReadLine(&line);
    const bool isMoved = mIO.SetReadPos(0);
    const bool isWhole = mIO.ReadLine(&line);
    EXPECT_FALSE(isMoved);
    EXPECT_FALSE(isWhole);
    EXPECT_EQ(line, "");
    EXPECT_EQ(mIO.GetReadPos(), -1);
    EXPECT_EQ(mIO.GetChar(), 0);
    mIO.Clear();
    const bool isMovedNow = mIO.SetReadPos(0);
    EXPECT_TRUE(isMovedNow);
    EXPECT_EQ(mIO.GetChar(), 'a');
}

// --- Without a file ------------------------------------------------------------------------------

void CFileIOTest::ExpectNothingHappens()
{
    char byte = 'x';
    std::string line("left over");
    mIO.SkipBytes(1);
    mIO.SetWritePos(1);
    mIO.SetWritePosEnd();
    EXPECT_FALSE(mIO.ReadBytes(&byte, 1));
    EXPECT_EQ(byte, 'x');
    EXPECT_EQ(mIO.ReadBytes(1), nullptr);
    EXPECT_EQ(mIO.GetChar(), 0);
    EXPECT_FALSE(mIO.ReadLine(&line));
    EXPECT_EQ(line, "");
    EXPECT_FALSE(mIO.WriteBytes("a", 1));
    EXPECT_FALSE(mIO.SetReadPos(0));
    EXPECT_FALSE(mIO.SetReadPos2(0, 1));
    EXPECT_EQ(mIO.GetReadPos(), -1);
    EXPECT_EQ(mIO.GetWritePos(), -1);
    mIO.Clear();
    mIO.CloseFile();
}

TEST_F(CFileIOTest, NothingHappensBeforeOpenAndAfterClose)
{
    ExpectNothingHappens();
    EXPECT_TRUE(mIO.IsEof());
    mIO.OpenFileWrite(mPath, 0);
    mIO.OpenFileRead(mPath, 0);
    mIO.CloseFile();
    ExpectNothingHappens();
    EXPECT_TRUE(mIO.IsEof());
}

TEST_F(CFileIOTest, NothingHappensAfterAFailedOpen)
{
    const struct
    {
        const char* mName;
        bool (CFileIO::*mOpen)(const char* path, int mode);
    } rows[] = {
        {"read", &CFileIO::OpenFileRead},
        {"write", &CFileIO::OpenFileWrite},
        {"change", &CFileIO::OpenFileChange},
    };
    WriteAll(mFile, "abc");
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mName);
        (mIO.*row.mOpen)(mPath, 0);
        const bool isOpen = (mIO.*row.mOpen)("/no/where", 0);
        EXPECT_FALSE(isOpen);
        EXPECT_FALSE(mIO.IsEof());
        ExpectNothingHappens();
    }
}

// --- Opening -------------------------------------------------------------------------------------

TEST_F(CFileIOTest, EachWayOfOpeningWritesWhereItSays)
{
    const struct
    {
        const char* mName;
        bool (CFileIO::*mOpen)(const char* path, int argument);
        int mArgument;
        std::string mOfNone;   ///< the content after "XY" was written, of a missing file,
        std::string mOf01234;  ///< and of one that held "01234"
    } rows[] = {
        {"write", &CFileIO::OpenFileWrite, 0, "XY", "XY"},
        {"keep", &CFileIO::OpenFileWrite, CFileIO::kRead, "", "XY234"},
        {"empty", &CFileIO::OpenFileWrite, CFileIO::kRead | CFileIO::kTruncate, "XY", "XY"},
        {"at end", &CFileIO::OpenFileWrite, CFileIO::kRead | CFileIO::kAtEnd, "", "01234XY"},
        {"append", &CFileIO::OpenFileAppend, 0, "XY", "01234XY"},
        {"change", &CFileIO::OpenFileChange, 2, "", "01XY4"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mName);
        fs::remove(mFile);
        const bool isMade = (mIO.*row.mOpen)(mPath, row.mArgument);
        mIO.WriteString("XY");
        mIO.CloseFile();
        EXPECT_EQ(isMade, !row.mOfNone.empty());
        EXPECT_EQ(ReadAll(mFile), row.mOfNone);

        WriteAll(mFile, "01234");
        const bool isOpen = (mIO.*row.mOpen)(mPath, row.mArgument);
        mIO.WriteString("XY");
        mIO.CloseFile();
        EXPECT_TRUE(isOpen);
        EXPECT_EQ(ReadAll(mFile), row.mOf01234);
    }
}

TEST_F(CFileIOTest, OpeningAnotherFileWritesOutTheOneBefore)
{
    mIO.OpenFileWrite(mPath, 0);
    mIO.WriteString("abc");
    mIO.OpenFileRead(mPath, 0);
    EXPECT_EQ(mIO.GetChar(), 'a');
}

// --- Positions and bytes -------------------------------------------------------------------------

TEST_F(CFileIOTest, ReadPositionsMoveFromStartPlaceAndEnd)
{
    const struct
    {
        int mOffset;
        unsigned char mDirection;
        bool mResult;  ///< whether the new position is mOffset
        int mPosition;
    } rows[] = {
        {6, 0, true, 6}, {2, 1, false, 8}, {-1, 2, false, 9}, {0, 3, false, 9}, {0, 0, true, 0}};
    OpenHolding("0123456789");
    for (const auto& row : rows) {
        const bool result = mIO.SetReadPos2(row.mOffset, row.mDirection);
        EXPECT_EQ(result, row.mResult) << row.mOffset << " in direction " << +row.mDirection;
        EXPECT_EQ(mIO.GetReadPos(), row.mPosition);
    }
}

TEST_F(CFileIOTest, SkipBytesMovesBothWays)
{
    OpenHolding("0123456789");
    mIO.SkipBytes(5);
    EXPECT_EQ(mIO.GetReadPos(), 5);
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
    EXPECT_EQ(mIO.GetWritePos(), 1);
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

TEST_F(CFileIOTest, NegativeCountsReadAndWriteNothing)
{
    WriteAll(mFile, "ab");
    mIO.OpenFileChange(mPath, 0);
    mIO.WriteBytes("XY", -1);
    mIO.OpenFileRead(mPath, CFileIO::kBinary);
    char byte = 'x';
    mIO.ReadBytes(&byte, -1);
    EXPECT_EQ(byte, 'x');
    EXPECT_EQ(mIO.ReadBytes(-1), nullptr);
    EXPECT_EQ(mIO.GetChar(), 'a');
}

TEST_F(CFileIOTest, ReadBytesMakesANewArray)
{
    OpenHolding("abc");
    const std::unique_ptr<char[]> none(mIO.ReadBytes(0));
    const std::unique_ptr<char[]> two(mIO.ReadBytes(2));
    EXPECT_NE(none, nullptr);
    EXPECT_EQ(std::string(two.get(), 2), "ab");
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
    const bool isEmptyWritten = mIO.WriteFile(mPath, "abc", 0);
    const bool isLostWritten = mIO.WriteFile("/no/where", "abc", 3);
    EXPECT_FALSE(isEmptyWritten);
    EXPECT_FALSE(fs::exists(mFile));
    EXPECT_FALSE(isLostWritten);
}

TEST_F(CFileIOTest, ReadFileRefusesMissingFilesAndTooLongOnes)
{
    WriteAll(mFile, "");
    fs::resize_file(mFile, std::uintmax_t{INT_MAX} + 1);
    for (const char* path : {"/no/where", mPath}) {
        SCOPED_TRACE(path);
        int size = 7;
        mIO.OpenFileWrite("/dev/null", 0);
        const std::unique_ptr<char[]> content(mIO.ReadFile(path, &size));
        EXPECT_EQ(content, nullptr);
        EXPECT_EQ(size, -1);
        EXPECT_EQ(mIO.mStream, nullptr);
    }
}
