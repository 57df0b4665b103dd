#include "jpeg/CGraflibJpeg.h"

#include <unistd.h>

#include <climits>
#include <functional>
#include <new>

#include "tests/jpeg/JpegTestSupport.h"

using testing::HasSubstr;

struct CGraflibJpegTest : FolderTest
{
    /// Writes the sample's colours line by line, behind what is there or instead of it.
    void WriteLines(TestImage& image, const SSample& sample)
    {
        std::tie(image.mWidth, image.mHeight, image.mBits) = sample.mShape;
        image.OpenWriteLine(mPath);
        Bytes rgb = sample.mRgb;
        int written = 0;
        for (int y = 0; y < SSample::kHeight; ++y)
            written += image.WriteLine(&rgb[static_cast<std::size_t>(y * SSample::kWidth * 3)]);
        image.CloseWriteLine();
        EXPECT_EQ(written, SSample::kHeight) << "rows accepted";
    }
    /// Calls `write`, which changes the file or throws with `info`.
    template <typename Call>
    void ExpectWrites(Call write, bool taken, const std::string& info)
    {
        WriteAll(mFile, "as it was");
        const std::string output = OutputOf(write);
        EXPECT_EQ(output, taken ? "" : "Errors: 2 " + info);
        EXPECT_EQ(ReadAll(mFile) != "as it was", taken) << "whether the file is changed";
    }
    static std::string Encoded(const SSample& sample, int quality = 80)
    {
        return EncodeJpeg(SSample::kWidth, SSample::kHeight, 3, sample.mRgb, quality);
    }
};

TEST_F(CGraflibJpegTest, ReadAndGetSizeFindThePictureAtTheOffset)
{
    for (const auto& [name, components] : kKinds) {
        SCOPED_TRACE(name);
        const SSample sample(components);
        WriteAll(mFile, "front" + sample.mFile);
        TestImage header;
        header.mLeastSide = 1;  // has no say in the size of a file
        const bool hasSize = header.GetSize(mPath, 5, 0);
        EXPECT_TRUE(hasSize);
        EXPECT_EQ(header.GetShape(), sample.mShape);
        TestImage image;
        SFileReadInfo info{0, 5, 0};
        const bool isRead = image.Read(mPath, &info);
        EXPECT_TRUE(isRead);
        EXPECT_EQ(image.GetShape(), sample.mShape);
        EXPECT_TRUE(AreSame(image.Pixels(), sample.mPixels));
    }
}

TEST_F(CGraflibJpegTest, ReadLineGivesEachRowOnce)
{
    for (const auto& [name, components] : kKinds) {
        const SSample sample(components);
        WriteAll(mFile, sample.mFile);
        TestImage image;
        const bool isOpen = image.OpenReadLine(mPath);
        const Bytes rows = ReadRows(image);
        EXPECT_TRUE(isOpen) << name;
        EXPECT_EQ(image.GetShape(), sample.mShape) << name;
        EXPECT_TRUE(AreSame(rows, sample.mPixels)) << name;
    }
}

TEST_F(CGraflibJpegTest, AReaderMayCloseEarlyAndOpenAgain)
{
    const SSample sample(3);
    WriteAll(mFile, sample.mFile);
    TestImage image;
    Bytes row(SSample::kWidth * 3);
    image.OpenReadLine(mPath);
    image.ReadLine(row.data());
    const std::string output = OutputOf([&] { image.CloseReadLine(); });
    const bool goesOn = image.ReadLine(row.data());
    image.OpenReadLine(mPath);
    const Bytes rows = ReadRows(image);
    image.OpenReadLine(mPath);  // left open: the image's end is its end
    EXPECT_EQ(output, "");
    EXPECT_FALSE(goesOn);
    EXPECT_TRUE(AreSame(rows, sample.mPixels));
}

TEST_F(CGraflibJpegTest, FailedReadsThrowAndLeaveAnEmptyRecord)
{
    WriteAll(mFile, "not a picture");
    const std::string message = "Errors: Not a JPEG file: starts with 0x6e 0x6f\n1 " + mFile;
    SFileReadInfo unreachable{0, -1, 0};
    TestImage image;
    const struct
    {
        const char* mName;
        std::function<bool()> mRead;
        std::string mOutput;
    } rows[] = {
        {"no file", [&] { return image.Read("/no/x", nullptr); }, "Errors: 1 /no/x"},
        {"no file, by lines", [&] { return image.OpenReadLine("/no/x"); }, "Errors: 1 /no/x"},
        {"no file, size", [&] { return image.GetSize("/no/x", 0, 0); }, ""},
        {"no picture", [&] { return image.Read(mPath, nullptr); }, message},
        {"no picture, by lines", [&] { return image.OpenReadLine(mPath); }, message},
        {"nothing in it", [&] { return image.Read("/dev/null", nullptr); },
         "Errors: Empty input file\n1 /dev/null"},
        {"no such place", [&] { return image.Read(mPath, &unreachable); }, "Errors: 1 " + mFile},
        {"no such place, size", [&] { return image.GetSize(mPath, -1, 0); }, ""}};
    for (const auto& row : rows) {
        image.mWidth = image.mHeight = image.mBits = 24;  // left over
        bool isRead = false;
        const std::string output = OutputOf([&] { isRead = row.mRead(); });
        unsigned char line[27];
        const bool hasLine = image.ReadLine(line);
        EXPECT_FALSE(isRead) << row.mName;
        EXPECT_EQ(output, row.mOutput) << row.mName;
        EXPECT_EQ(image.GetShape(), Shape()) << row.mName;
        EXPECT_EQ(image.mData, nullptr) << row.mName;
        EXPECT_FALSE(hasLine) << row.mName;
    }
}

TEST_F(CGraflibJpegTest, WriteBringsEveryDepthToColour)
{
    for (const auto& [name, components] : kKinds) {
        const SSample sample(components);
        TestImage image(sample.mShape, sample.mPixels);
        image.mQuality = 30;
        image.SetAppendMode(true);  // has no say in Write
        WriteAll(mFile, "front");
        const bool isWritten = image.Write(mPath, true, nullptr);
        EXPECT_TRUE(isWritten) << name;
        EXPECT_TRUE(AreSame(ReadAll(mFile), Encoded(sample, 30))) << name;
    }
}

TEST_F(CGraflibJpegTest, WriteToAStreamLeavesItOpenBehindThePicture)
{
    const SSample sample(4);
    const std::string picture = Encoded(sample);
    TestImage image(sample.mShape, sample.mPixels);
    std::FILE* stream = std::fopen(mPath, "wb");
    std::fputs("front", stream);
    const int descriptor = fileno(stream);
    const bool isWritten = image.Write(stream);
    ASSERT_NE(fcntl(descriptor, F_GETFD), -1) << "the stream is closed";
    std::fputs("end", stream);
    std::fclose(stream);
    EXPECT_TRUE(isWritten);
    EXPECT_TRUE(AreSame(ReadAll(mFile), "front" + picture + "end"));
}

TEST_F(CGraflibJpegTest, LinesReplaceTheFileOrAreAppended)
{
    const SSample sample(1);
    const std::string once = Encoded(sample);
    WriteAll(mFile, "front");
    TestImage image;
    WriteLines(image, sample);
    EXPECT_TRUE(AreSame(ReadAll(mFile), once));
    image.SetAppendMode(true);
    WriteLines(image, sample);
    WriteLines(image, sample);
    EXPECT_TRUE(AreSame(ReadAll(mFile), once + once + once));
}

TEST_F(CGraflibJpegTest, OpeningAReadForgetsTheAppendMode)
{
    const SSample sample(1);
    WriteAll(mFile, sample.mFile);
    TestImage image;
    image.SetAppendMode(true);
    image.OpenReadLine(mPath);
    WriteLines(image, sample);
    EXPECT_TRUE(AreSame(ReadAll(mFile), Encoded(sample)));
}

TEST_F(CGraflibJpegTest, WritesRefuseBeforeTheyTouchTheFile)
{
    const struct
    {
        Shape mShape;
        bool mWhole;
        bool mLines;
    } rows[] = {
        {{1, 1, 0}, false, true},      {{1, 1, 16}, false, true},    {{1, 1, 40}, false, true},
        {{0, 1, 24}, false, false},    {{1, 0, 24}, false, false},   {{32767, 1, 8}, true, true},
        {{1, 32767, 8}, true, true},   {{32768, 1, 8}, false, true}, {{1, 32768, 8}, false, true},
        {{65500, 1, 8}, false, true},  {{1, 65500, 8}, false, true}, {{65501, 1, 8}, false, false},
        {{1, 65501, 8}, false, false}, {{-1, 1, 24}, false, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE("width, height, bits: " + testing::PrintToString(row.mShape));
        TestImage image(row.mShape, Bytes(70000));
        EXPECT_EQ(image.CanWrite(), row.mWhole);
        ExpectWrites([&] { image.Write(mPath, true, nullptr); }, row.mWhole, mFile);
        ExpectWrites([&] { image.OpenWriteLine(mPath); }, row.mLines, mFile);
        std::FILE* stream = std::fopen(mPath, "ab");
        ExpectWrites([&] { image.Write(stream); }, row.mWhole, "");
        std::fclose(stream);
    }
    TestImage empty({1, 1, 24});
    ExpectWrites([&] { empty.Write(mPath, true, nullptr); }, false, mFile);
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
        {"whole", whole, false},
        {"without its end", noEnd, true},
        {"without its end, behind the last row", noEnd + std::string("\xff\xfe\0\2", 4), true},
        {"half of it", whole.substr(0, whole.size() / 2), true},
        {"half of it, progressive", progressive.substr(0, progressive.size() / 2), true},
        {"cut in the header, and so not read", whole.substr(0, 100), true},
        {"no picture, and so not read", "text", false}};
    for (const auto& row : rows) {
        WriteAll(mFile, row.mContent);
        TestImage image;
        OutputOf([&] { image.Read(mPath, nullptr); });
        EXPECT_EQ(image.mWarnings > 0, row.mHasWarnings) << row.mName << ": " << image.mWarnings;
        TestImage lines;
        OutputOf([&] {
            lines.OpenReadLine(mPath);
            ReadRows(lines);
        });
        EXPECT_EQ(lines.mWarnings, image.mWarnings) << row.mName << ", by lines";
        TestImage scaled;
        OutputOf([&] {
            scaled.OpenReadLine(mPath);
            scaled.ScaleWhileReading(mPath, 8, 8);
        });
        EXPECT_EQ(scaled.mWarnings, image.mWarnings) << row.mName << ", scaled while read";
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
    } cases[] = {{80, 16, 0, {80, 16, 24}}, {80, 16, 1, {10, 2, 24}},   {80, 16, 10, {10, 2, 24}},
                 {80, 16, 11, {20, 4, 24}}, {80, 16, 20, {20, 4, 24}},  {80, 16, 21, {40, 8, 24}},
                 {80, 16, 40, {40, 8, 24}}, {80, 16, 41, {80, 16, 24}}, {80, 16, -1, {80, 16, 24}},
                 {16, 80, 11, {4, 20, 24}}, {79, 17, 10, {10, 3, 24}},  {81, 1, 11, {11, 1, 24}}};
    for (const auto& row : cases) {
        SCOPED_TRACE("width, height, least side: " +
                     testing::PrintToString(std::tuple(row.mWidth, row.mHeight, row.mLeastSide)));
        WriteAll(mFile, SampleJpeg(row.mWidth, row.mHeight));
        TestImage whole;
        whole.mLeastSide = row.mLeastSide;
        whole.Read(mPath, nullptr);
        TestImage lines;
        lines.mLeastSide = row.mLeastSide;
        lines.OpenReadLine(mPath);
        const Bytes rows = ReadRows(lines);
        EXPECT_EQ(whole.GetShape(), row.mReduced);
        EXPECT_EQ(lines.GetShape(), row.mReduced);
        EXPECT_TRUE(AreSame(rows, whole.Pixels()));
    }
}

/// What a call writes to standard output and standard error, in the order of writing.
template <typename Call>
static std::string OneStreamOf(Call call)
{
    testing::internal::CaptureStdout();
    const int errors = dup(STDERR_FILENO);
    dup2(STDOUT_FILENO, STDERR_FILENO);
    try {
        call();
    } catch (const std::bad_alloc&) {
        std::cerr << "no memory";
    } catch (const CGraflibException& e) {
        std::cerr << e.mCode;
    }
    dup2(errors, STDERR_FILENO);
    close(errors);
    return testing::internal::GetCapturedStdout();
}

/// A picture that is cut short, so that libjpeg has a warning to give while it finishes. libjpeg
/// takes five components only without the fifth's scans.
static std::string CutJpeg(int width, int height, int components)
{
    const std::string file = SampleJpeg(width, height, components);
    const std::size_t fifth = file.find(std::string("\xff\xda\0\x8\1\4", 6));
    return file.substr(0, std::min(fifth, file.size() - 1));
}

TEST_F(CGraflibJpegTest, ScalesWhileReadingToTheSamePixelsAndWords)
{
    const struct
    {
        const char* mName;
        Sizes mSizes;
    } rows[] = {{"reduced", {33, 47, 7, 11}},
                {"to a pixel, of all rows", {40, 200, 1, 1}},
                {"until footprints vanish", {2, 1, 9, 700}},
                {"enlarged", {2, 3, 1001, 200}},
                {"to nothing", {9, 9, 0, 5}},
                {"too large for any memory", {9, 9, INT_MAX, INT_MAX}}};
    const std::string other = mFolder / "other.jpg";
    WriteAll(other, SampleJpeg(64, 64, 4));
    for (const auto& row : rows) {
        const auto [fromWidth, fromHeight, width, height] = row.mSizes;
        for (const int components : {1, 3, 4, 5}) {
            if (components == 1 && width == INT_MAX)
                continue;  // an array could be as large as that
            SCOPED_TRACE(testing::Message() << row.mName << ", components: " << components);
            WriteAll(mFile, CutJpeg(fromWidth, fromHeight, components));
            TestImage whole;
            const std::string expected = OneStreamOf([&, &w = width, &h = height] {
                whole.Read(mPath, nullptr);
                whole.Show(mPath);
                whole.DownScaleFix2(w, h);
            });
            TestImage lines;
            const std::string found = OneStreamOf([&, &w = width, &h = height] {
                lines.OpenReadLine(mPath);
                lines.GetSize(other.c_str(), 0, 0);  // has no say in what is open
                lines.ScaleWhileReading(mPath, w, h);
            });
            EXPECT_EQ(found, expected);
            EXPECT_THAT(expected, HasSubstr("JPEG file"));
            if (expected.find("sizeof") == std::string::npos) {
                EXPECT_EQ(lines.mData, nullptr);
                continue;
            }
            EXPECT_EQ(lines.GetShape(), whole.GetShape());
            EXPECT_TRUE(AreSame(lines.Pixels(), whole.Pixels()));
        }
    }
}

TEST_F(CGraflibJpegTest, ScalingThrowsWhereRowsAreMissing)
{
    WriteAll(mFile, SampleJpeg(64, 64));
    unsigned char row[64 * 3];
    TestImage image;
    image.OpenReadLine(mPath);
    image.ReadLine(row);  // which the scaler will miss
    const std::string output = OutputOf([&] { image.ScaleWhileReading("name", 8, 8); });
    EXPECT_EQ(output, "Errors: 1 name");
    EXPECT_EQ(image.mData, nullptr);
}
