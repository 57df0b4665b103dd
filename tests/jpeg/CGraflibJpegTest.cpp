#include "jpeg/CGraflibJpeg.h"

#include <fcntl.h>

#include <cmath>

#include "tests/jpeg/JpegTestSupport.h"

struct CGraflibJpegTest : FolderTest
{
    /// Calls `write`, which changes the file or throws.
    template <typename Call>
    void ExpectWrites(Call write, bool taken)
    {
        WriteAll(mFile, "as it was");
        const std::string output = OutputOf(write);
        EXPECT_EQ(output, taken ? "" : "Errors: 2 " + mFile);
        EXPECT_EQ(ReadAll(mFile) != "as it was", taken) << "whether the file is changed";
    }
};

/// The red, green and blue that are written of pixels.
static Bytes InColour(const Bytes& pixels, int components)
{
    Bytes rgb;
    for (auto pixel = pixels.begin(); pixel != pixels.end(); pixel += components) {
        const double alpha = components == 4 ? pixel[3] / 255.0 : 1.0;
        for (int colour = 0; colour < 3; ++colour)
            rgb.push_back(
                static_cast<unsigned char>(std::lround(pixel[colour % components] * alpha)));
    }
    return rgb;
}

TEST_F(CGraflibJpegTest, ReadsEveryDepthAtAnOffsetAndByLines)
{
    for (const int components : {1, 3, 4}) {
        SCOPED_TRACE(testing::Message() << "components: " << components);
        const std::string file = SampleJpeg(33, 21, components);
        const Shape shape(33, 21, components * 8);
        TestImage header;
        TestImage whole;
        TestImage lines;
        SFileReadInfo info{0, 5, 0};
        WriteAll(mFile, "front" + file);
        header.GetSize(mPath, 5, 0);
        whole.Read(mPath, &info);
        WriteAll(mFile, file);
        lines.OpenReadLine(mPath);
        const Bytes rows = ReadRows(lines);
        EXPECT_EQ(header.GetShape(), shape);
        EXPECT_EQ(whole.GetShape(), shape);
        EXPECT_EQ(lines.GetShape(), shape);
        EXPECT_TRUE(AreSame(whole.Pixels(), DecodeJpeg(file)));
        EXPECT_TRUE(AreSame(rows, DecodeJpeg(file)));
    }
}

TEST_F(CGraflibJpegTest, FailedReadsThrowAndLeaveNoSize)
{
    WriteAll(mFile, "not a picture");
    const struct
    {
        std::string mName;
        std::string mOutput;
    } rows[] = {{"/no/x", "Errors: 1 /no/x"},
                {"/dev/null", "Errors: Empty input file\n1 /dev/null"},
                {mFile, "Errors: Not a JPEG file: starts with 0x6e 0x6f\n1 " + mFile}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mName);
        const char* const path = row.mName.c_str();
        TestImage header({24, 24, 24});
        TestImage whole({24, 24, 24});
        TestImage lines({24, 24, 24});
        OutputOf([&] { header.GetSize(path, 0, 0); });
        const std::string wholeOutput = OutputOf([&] { whole.Read(path, nullptr); });
        const std::string linesOutput = OutputOf([&] { lines.OpenReadLine(path); });
        EXPECT_EQ(wholeOutput, row.mOutput);
        EXPECT_EQ(linesOutput, row.mOutput);
        EXPECT_EQ(header.GetShape(), Shape());
        EXPECT_EQ(whole.GetShape(), Shape());
        EXPECT_EQ(lines.GetShape(), Shape());
    }
}

TEST_F(CGraflibJpegTest, WriteBringsEveryDepthToColour)
{
    for (const int components : {1, 3, 4}) {
        const Bytes pixels = Noise(33 * 21 * components);
        TestImage image({33, 21, components * 8}, pixels);
        image.mQuality = 100;       // at which every value counts
        image.SetAppendMode(true);  // has no say in Write
        WriteAll(mFile, "front");
        image.Write(mPath, true, nullptr);
        const std::string expected = EncodeJpeg(33, 21, 3, InColour(pixels, components), 100);
        EXPECT_TRUE(AreSame(ReadAll(mFile), expected)) << "components: " << components;
    }
}

TEST_F(CGraflibJpegTest, WriteToAStreamLeavesItOpenBehindThePicture)
{
    TestImage image({33, 21, 24}, Noise(33 * 21 * 3));
    std::FILE* stream = std::fopen(mPath, "wb");
    std::fputs("front", stream);
    const int descriptor = fileno(stream);
    image.Write(stream);
    ASSERT_NE(fcntl(descriptor, F_GETFD), -1) << "the stream is closed";
    std::fputs("end", stream);
    std::fclose(stream);
    const std::string picture = EncodeJpeg(33, 21, 3, image.Pixels());
    EXPECT_TRUE(AreSame(ReadAll(mFile), "front" + picture + "end"));
}

TEST_F(CGraflibJpegTest, LinesReplaceTheFileOrAreAppendedUntilARead)
{
    TestImage image({33, 21, 24}, Noise(33 * 21 * 3));
    const std::string once = EncodeJpeg(33, 21, 3, image.Pixels());
    WriteAll(mFile, "front");
    WriteRows(image, mPath);
    EXPECT_TRUE(AreSame(ReadAll(mFile), once)) << "replaced";
    image.SetAppendMode(true);
    WriteRows(image, mPath);
    WriteRows(image, mPath);
    EXPECT_TRUE(AreSame(ReadAll(mFile), once + once + once)) << "appended";
    image.OpenReadLine(mPath);
    WriteRows(image, mPath);
    EXPECT_TRUE(AreSame(ReadAll(mFile), once)) << "replaced behind a read";
}

TEST_F(CGraflibJpegTest, WritesRefuseBeforeTheyTouchTheFile)
{
    const struct
    {
        Shape mShape;
        bool mWhole;
        bool mLines;
    } rows[] = {
        {{1, 1, 16}, false, true},     {{0, 1, 24}, false, false},   {{1, 0, 24}, false, false},
        {{32767, 1, 8}, true, true},   {{1, 32767, 8}, true, true},  {{32768, 1, 8}, false, true},
        {{1, 32768, 8}, false, true},  {{65500, 1, 8}, false, true}, {{1, 65500, 8}, false, true},
        {{65501, 1, 8}, false, false}, {{1, 65501, 8}, false, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE("width, height, bits: " + testing::PrintToString(row.mShape));
        TestImage image(row.mShape, Bytes(32767));
        EXPECT_EQ(image.CanWrite(), row.mWhole);
        ExpectWrites([&] { image.Write(mPath, true, nullptr); }, row.mWhole);
        ExpectWrites([&] { image.OpenWriteLine(mPath); }, row.mLines);
    }
    TestImage empty({1, 1, 24});
    ExpectWrites([&] { empty.Write(mPath, true, nullptr); }, false);
}

TEST_F(CGraflibJpegTest, WritesThrowWhereNoFileCanBeMade)
{
    TestImage image({1, 1, 24}, Bytes(3));
    const std::string whole = OutputOf([&] { image.Write("/no/x", true, nullptr); });
    const std::string lines = OutputOf([&] { image.OpenWriteLine("/no/x"); });
    EXPECT_EQ(whole, "Errors: 2 /no/x");
    EXPECT_EQ(lines, "Errors: 2 /no/x");
}

TEST_F(CGraflibJpegTest, WarningsTellACutPictureFromAWholeOne)
{
    const std::string whole = SampleJpeg(64, 64);
    const std::string noEnd = whole.substr(0, whole.size() - 2);
    const std::string progressive = EncodeJpeg(64, 64, 3, Noise(64 * 64 * 3), 80, Progressive);
    const struct
    {
        const char* mName;
        std::string mContent;
        bool mHasWarnings;
    } rows[] = {
        {"cut in the header, and so not read", whole.substr(0, 100), true},
        {"half of it", whole.substr(0, whole.size() / 2), true},
        {"half of it, progressive", progressive.substr(0, progressive.size() / 2), true},
        {"without its end, behind the last row", noEnd + std::string("\xff\xfe\0\2", 4), true},
        {"whole", whole, false}};
    TestImage lines;  // the same for all, since each read counts anew
    for (const auto& row : rows) {
        WriteAll(mFile, row.mContent);
        TestImage image;
        OutputOf([&] { image.Read(mPath, nullptr); });
        OutputOf([&] {
            lines.OpenReadLine(mPath);
            ReadRows(lines);
        });
        EXPECT_EQ(image.mWarnings > 0, row.mHasWarnings) << row.mName << ": " << image.mWarnings;
        EXPECT_EQ(lines.mWarnings, image.mWarnings) << row.mName << ", by lines";
    }
}

TEST_F(CGraflibJpegTest, PicturesAreReducedToTheLeastSide)
{
    const struct
    {
        int mWidth;
        int mHeight;
        int mLeastSide;
        Shape mReduced;
    } rows[] = {{80, 16, 0, {80, 16, 24}}, {80, 16, 1, {10, 2, 24}},  {80, 16, 10, {10, 2, 24}},
                {80, 16, 11, {20, 4, 24}}, {80, 16, 40, {40, 8, 24}}, {80, 16, 41, {80, 16, 24}},
                {16, 80, 11, {4, 20, 24}}, {79, 17, 10, {10, 3, 24}}};
    for (const auto& row : rows) {
        SCOPED_TRACE("width, height, least side: " +
                     testing::PrintToString(std::tuple(row.mWidth, row.mHeight, row.mLeastSide)));
        WriteAll(mFile, SampleJpeg(row.mWidth, row.mHeight));
        TestImage whole;
        TestImage lines;
        whole.mLeastSide = lines.mLeastSide = row.mLeastSide;
        whole.Read(mPath, nullptr);
        lines.OpenReadLine(mPath);
        EXPECT_EQ(whole.GetShape(), row.mReduced);
        EXPECT_EQ(lines.GetShape(), row.mReduced);
    }
}

TEST_F(CGraflibJpegTest, ScalesWhileReadingWhatIsOpen)
{
    const std::string other = mFolder / "other.jpg";
    WriteAll(other, SampleJpeg(64, 64, 4));
    WriteAll(mFile, SampleJpeg(33, 47));
    TestImage whole;
    const std::string expected = OutputOf([&] {
        whole.Read(mPath, nullptr);
        whole.Show(mPath);
        whole.DownScaleFix2(7, 11);
    });
    TestImage lines;
    lines.OpenReadLine(mPath);
    lines.GetSize(other.c_str(), 0, 0);
    const std::string found = OutputOf([&] { lines.ScaleWhileReading(mPath, 7, 11); });
    EXPECT_EQ(found, expected);
    EXPECT_TRUE(AreSame(lines.Pixels(), whole.Pixels()));
}
