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
    const std::tuple<const char*, std::string, int, Sizes> rows[] = {
        {"whole", whole, 0, {300, 2}},
        {"cut", whole.substr(0, whole.size() - 30), 0, {300, 2}},
        {"no picture", "text", 0, {0, 0}},
        {"an offset that can't be reached", whole, -1, {0, 0}}};
    for (const auto& [name, content, offset, size] : rows) {
        WriteAll(mFile, content);
        mJpeg.mReadOffset = offset;
        const long before = OpenDescriptors();
        short width = 7;
        short height = 7;
        OutputOf([&] {
            delete[] mJpeg.ReadJpeg(mPath, &width, &height, 0);
            short side = 0;
            mJpeg.GetJpegSize(mPath, &side, &side, nullptr);
        });
        EXPECT_EQ(OpenDescriptors(), before) << name << ": descriptors in use";
        EXPECT_EQ(Sizes({width, height}), size) << name;
    }
}

TEST_F(CGraphicsJpegTest, SizesOf16BitsAreRightOr0)
{
    const std::pair<Sizes, Sizes> rows[] = {{{32767, 2}, {32767, 2}},
                                            {{2, 32767}, {2, 32767}},
                                            {{32768, 2}, {0, 0}},
                                            {{2, 32768}, {0, 0}}};
    for (const auto& [stored, found] : rows) {
        SCOPED_TRACE(testing::PrintToString(stored));
        WriteAll(mFile, SampleJpeg(stored[0], stored[1], 1));
        short width = 7;
        short height = 7;
        const bool isKnown = mJpeg.GetJpegSize(mPath, &width, &height, nullptr);
        EXPECT_EQ(Sizes({width, height}), found);
        EXPECT_EQ(isKnown, found[0] > 0);
    }
}

TEST_F(CGraphicsJpegTest, CallsOfTheOtherDirectionDoNothing)
{
    WriteAll(mFile, SampleJpeg(20, 10));
    ASSERT_TRUE(OpenRead());
    EXPECT_EQ(mJpeg.WriteJpegLine(mRow), 0);
    EXPECT_TRUE(mJpeg.CloseJpegWrite()) << "nothing has failed";
    EXPECT_TRUE(mJpeg.ReadJpegLine(mRow));
    ASSERT_TRUE(OpenWrite());
    EXPECT_FALSE(mJpeg.ReadJpegLine(mRow));
    mJpeg.CloseJpegLines();
    EXPECT_EQ(mJpeg.WriteJpegLine(mRow), 1);
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
