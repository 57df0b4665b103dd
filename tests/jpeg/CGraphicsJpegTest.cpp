#include "jpeg/CGraphicsJpeg.h"

#include <functional>

#include "tests/jpeg/JpegTestSupport.h"

struct CGraphicsJpegTest : FolderTest
{
    ~CGraphicsJpegTest() override { mJpeg.Abandon(); }

    bool Read()
    {
        const std::unique_ptr<unsigned char[]> pixels(
            mJpeg.ReadJpeg(mPath, &mWidth, &mHeight, &mComponents));
        return pixels != nullptr;
    }
    bool OpenRead() { return mJpeg.OpenJpegRead(mPath, &mWidth, &mHeight, &mComponents); }
    bool OpenWrite() { return mJpeg.OpenJpegWrite(mOther.c_str(), 20, 10, 75); }

    CGraphicsJpeg mJpeg;
    int mWidth = -1;
    int mHeight = -1;
    int mComponents = -1;
    unsigned char mRow[20 * 3] = {};
    const std::string mOther = mFolder / "other";
};

TEST_F(CGraphicsJpegTest, AFileThatCantBeOpenedLeavesNothingOfTheOneBefore)
{
    mJpeg.mWarnings = 7;
    mJpeg.mKeepProfile = true;
    mJpeg.mProfile = {7};
    bool isRead = true;
    const std::string output = OutputOf([&] { isRead = Read(); });
    EXPECT_FALSE(isRead);
    EXPECT_EQ(output, "");
    EXPECT_EQ(mWidth, 0);
    EXPECT_EQ(mHeight, 0);
    EXPECT_EQ(mComponents, -1);
    EXPECT_EQ(mJpeg.mWarnings, 0);
    EXPECT_THAT(mJpeg.mProfile, testing::IsEmpty());
}

TEST_F(CGraphicsJpegTest, NoReadLeavesAFileOpen)
{
    const std::string whole = SampleJpeg(9, 9);
    const struct
    {
        const char* mName;
        std::string mContent;
        int mOffset;
        bool mIsRead;
    } rows[] = {{"whole", whole, 0, true},
                {"cut", whole.substr(0, whole.size() - 30), 0, true},
                {"no picture", "text", 0, false},
                {"an offset that can't be reached", whole, -1, false}};
    for (const auto& row : rows) {
        WriteAll(mFile, row.mContent);
        mJpeg.mReadOffset = row.mOffset;
        const long before = OpenDescriptors();
        bool isRead = false;
        OutputOf([&] {
            isRead = Read();
            short side = 0;
            mJpeg.GetJpegSize(mPath, &side, &side, nullptr);
        });
        EXPECT_EQ(isRead, row.mIsRead) << row.mName;
        EXPECT_EQ(OpenDescriptors(), before) << row.mName << ": descriptors in use";
    }
}

TEST_F(CGraphicsJpegTest, SizesOf16BitsAreRightOr0)
{
    const struct
    {
        const char* mName;
        int mWidth;
        int mHeight;
        bool mFits;
    } rows[] = {{"widest", 32767, 2, true},
                {"highest", 2, 32767, true},
                {"too wide", 32768, 2, false},
                {"too high", 2, 32768, false}};
    for (const auto& row : rows) {
        WriteAll(mFile, SampleJpeg(row.mWidth, row.mHeight, 1));
        short width = 7;
        short height = 7;
        int components = 7;
        const bool isKnown = mJpeg.GetJpegSize(mPath, &width, &height, &components);
        EXPECT_EQ(isKnown, row.mFits) << row.mName;
        EXPECT_EQ(width, row.mFits ? row.mWidth : 0) << row.mName;
        EXPECT_EQ(height, row.mFits ? row.mHeight : 0) << row.mName;
        EXPECT_EQ(components, row.mFits ? 1 : 7) << row.mName;
    }
}

TEST_F(CGraphicsJpegTest, TheShortFormLeavesTheComponentsInTheObject)
{
    WriteAll(mFile, SampleJpeg(300, 2, 1));
    short width = 7;
    short height = 7;
    const std::unique_ptr<unsigned char[]> pixels(mJpeg.ReadJpeg(mPath, &width, &height, 0));
    EXPECT_NE(pixels, nullptr);
    EXPECT_EQ(width, 300);
    EXPECT_EQ(height, 2);
    EXPECT_EQ(mJpeg.mComponents, 1);
}

TEST_F(CGraphicsJpegTest, ASizeQueryLeavesAloneWhatIsOpen)
{
    WriteAll(mFile, SampleJpeg(20, 10));
    WriteAll(mOther, SampleJpeg(7, 5));
    ASSERT_TRUE(OpenRead());
    short width = 0;
    short height = 0;
    mJpeg.GetJpegSize(mOther.c_str(), &width, &height, nullptr);
    const bool isRead = mJpeg.ReadJpegLine(mRow);
    EXPECT_EQ(width, 7);
    EXPECT_EQ(height, 5);
    EXPECT_TRUE(isRead);
}

TEST_F(CGraphicsJpegTest, LineFunctionsDoNothingForTheOtherDirection)
{
    WriteAll(mFile, SampleJpeg(20, 10));
    ASSERT_TRUE(OpenRead());
    const int linesWritten = mJpeg.WriteJpegLine(mRow);
    const bool isWritten = mJpeg.CloseJpegWrite();  // nothing failed
    const bool readGoesOn = mJpeg.ReadJpegLine(mRow);
    ASSERT_TRUE(OpenWrite());
    const bool isRead = mJpeg.ReadJpegLine(mRow);
    mJpeg.CloseJpegLines();
    const int linesGoOn = mJpeg.WriteJpegLine(mRow);
    EXPECT_EQ(linesWritten, 0);
    EXPECT_TRUE(isWritten);
    EXPECT_TRUE(readGoesOn);
    EXPECT_FALSE(isRead);
    EXPECT_EQ(linesGoOn, 1);
}

TEST_F(CGraphicsJpegTest, OpeningEndsWhatIsOpen)
{
    WriteAll(mFile, SampleJpeg(20, 10));
    const std::function<bool()> ways[] = {[&] { return OpenRead(); }, [&] { return OpenWrite(); }};
    for (const auto& first : ways) {
        for (const auto& second : ways) {
            const long before = OpenDescriptors();
            ASSERT_TRUE(first());
            ASSERT_TRUE(second());
            EXPECT_EQ(OpenDescriptors(), before + 1) << "descriptors in use";
            mJpeg.Abandon();
            EXPECT_EQ(OpenDescriptors(), before) << "descriptors in use at the end";
        }
    }
}
