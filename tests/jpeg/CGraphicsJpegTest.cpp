#include "jpeg/CGraphicsJpeg.h"

#include <functional>

#include "tests/jpeg/JpegTestSupport.h"

struct CGraphicsJpegTest : FolderTest
{
    ~CGraphicsJpegTest() override { mJpeg.Abandon(); }

    bool OpenRead() { return mJpeg.OpenJpegRead(mPath, &mWidth, &mHeight, &mComponents); }
    bool OpenWrite() { return mJpeg.OpenJpegWrite(mOther.c_str(), 20, 10, 75); }

    CGraphicsJpeg mJpeg;
    int mWidth = -1;
    int mHeight = -1;
    int mComponents = -1;
    unsigned char mRow[20 * 3] = {};
    const std::string mOther = mFolder / "other";
};

/// How many descriptors the process has in use.
static long OpenDescriptors()
{
    return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

TEST_F(CGraphicsJpegTest, AFileThatCantBeOpenedLeavesNothingOfTheOneBefore)
{
    mJpeg.mWarnings = 7;
    mJpeg.mKeepProfile = true;
    mJpeg.mProfile = {7};
    OpenRead();
    EXPECT_EQ(mWidth, 0);
    EXPECT_EQ(mHeight, 0);
    EXPECT_EQ(mJpeg.mWarnings, 0);
    EXPECT_THAT(mJpeg.mProfile, testing::IsEmpty());
}

TEST_F(CGraphicsJpegTest, NoReadLeavesAFileOpen)
{
    const std::string whole = SampleJpeg(300, 2);
    const struct
    {
        const char* mName;
        std::string mContent;
        int mOffset;
        Sizes mSize;
    } rows[] = {{"whole", whole, 0, {300, 2}},
                {"cut", whole.substr(0, whole.size() - 30), 0, {300, 2}},
                {"no picture", "text", 0, {0, 0}},
                {"an offset that can't be reached", whole, -1, {0, 0}}};
    for (const auto& row : rows) {
        WriteAll(mFile, row.mContent);
        mJpeg.mReadOffset = row.mOffset;
        const long before = OpenDescriptors();
        short width = 7;
        short height = 7;
        OutputOf([&] {
            delete[] mJpeg.ReadJpeg(mPath, &width, &height, 0);
            short side = 0;
            mJpeg.GetJpegSize(mPath, &side, &side, nullptr);
        });
        EXPECT_EQ(OpenDescriptors(), before) << row.mName << ": descriptors in use";
        EXPECT_EQ(Sizes({width, height}), row.mSize) << row.mName;
    }
}

TEST_F(CGraphicsJpegTest, SizesOf16BitsAreRightOr0)
{
    const struct
    {
        int mWidth;
        int mHeight;
        Sizes mFound;
    } rows[] = {
        {32767, 2, {32767, 2}}, {2, 32767, {2, 32767}}, {32768, 2, {0, 0}}, {2, 32768, {0, 0}}};
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::Message() << row.mWidth << " x " << row.mHeight);
        WriteAll(mFile, SampleJpeg(row.mWidth, row.mHeight, 1));
        short width = 7;
        short height = 7;
        const bool isKnown = mJpeg.GetJpegSize(mPath, &width, &height, nullptr);
        EXPECT_EQ(Sizes({width, height}), row.mFound);
        EXPECT_EQ(isKnown, row.mFound[0] > 0);
    }
}

TEST_F(CGraphicsJpegTest, AReadGoesOnWhateverElseIsCalled)
{
    WriteAll(mFile, SampleJpeg(20, 10));
    WriteAll(mOther, SampleJpeg(7, 5));
    ASSERT_TRUE(OpenRead());
    short width = 0;
    short height = 0;
    mJpeg.GetJpegSize(mOther.c_str(), &width, &height, nullptr);
    const int linesWritten = mJpeg.WriteJpegLine(mRow);
    const bool isWritten = mJpeg.CloseJpegWrite();
    const bool goesOn = mJpeg.ReadJpegLine(mRow);
    EXPECT_EQ(width, 7);
    EXPECT_EQ(linesWritten, 0);
    EXPECT_TRUE(isWritten) << "nothing has failed";
    EXPECT_TRUE(goesOn);
}

TEST_F(CGraphicsJpegTest, AWriteGoesOnWhateverElseIsCalled)
{
    ASSERT_TRUE(OpenWrite());
    const bool isRead = mJpeg.ReadJpegLine(mRow);
    mJpeg.CloseJpegLines();
    const int linesWritten = mJpeg.WriteJpegLine(mRow);
    EXPECT_FALSE(isRead);
    EXPECT_EQ(linesWritten, 1);
}

TEST_F(CGraphicsJpegTest, OpeningEndsWhatIsOpenWithoutAWord)
{
    WriteAll(mFile, SampleJpeg(20, 10));
    const std::function<bool()> ways[] = {[&] { return OpenRead(); }, [&] { return OpenWrite(); }};
    for (const auto& first : ways) {
        for (const auto& second : ways) {
            const long before = OpenDescriptors();
            ASSERT_TRUE(first());
            const std::string output = OutputOf(second);
            EXPECT_EQ(output, "");
            EXPECT_EQ(OpenDescriptors(), before + 1) << "descriptors in use";
            mJpeg.Abandon();
            EXPECT_EQ(OpenDescriptors(), before) << "descriptors in use at the end";
        }
    }
}
