#include "jpeg/CGraflibJpeg.h"

#include <cmath>

#include "tests/jpeg/JpegTestSupport.h"

struct CGraflibJpegTest : FolderTest
{
    /// Whether a call writes to the file, or else throws and leaves the file as it was.
    template <typename Call>
    bool Writes(Call write)
    {
        WriteAll(mFile, "as it was");
        const bool isTaken = OutputOf(write).empty();
        EXPECT_EQ(ReadAll(mFile) != "as it was", isTaken) << "whether the file is changed";
        return isTaken;
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
    const std::pair<std::string, std::string> rows[] = {
        {"/no/x", "Errors: 1 /no/x"},
        {"/dev/null", "Errors: Empty input file\n1 /dev/null"},
        {mFile, "Errors: Not a JPEG file: starts with 0x6e 0x6f\n1 " + mFile}};
    for (const auto& [path, error] : rows) {
        SCOPED_TRACE(path);
        const char* const name = path.c_str();
        TestImage header({24, 24, 24});
        TestImage whole({24, 24, 24});
        TestImage lines({24, 24, 24});
        OutputOf([&] { header.GetSize(name, 0, 0); });
        EXPECT_EQ(OutputOf([&] { whole.Read(name, nullptr); }), error);
        EXPECT_EQ(OutputOf([&] { lines.OpenReadLine(name); }), error);
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
    const std::tuple<Shape, bool, bool> rows[] = {
        {{1, 1, 16}, false, true},     {{0, 1, 24}, false, false},   {{1, 0, 24}, false, false},
        {{32767, 1, 8}, true, true},   {{1, 32767, 8}, true, true},  {{32768, 1, 8}, false, true},
        {{1, 32768, 8}, false, true},  {{65500, 1, 8}, false, true}, {{1, 65500, 8}, false, true},
        {{65501, 1, 8}, false, false}, {{1, 65501, 8}, false, false}};
    for (const auto& [shape, whole, lines] : rows) {
        SCOPED_TRACE("width, height, bits: " + testing::PrintToString(shape));
        TestImage image(shape, Bytes(32767));
        EXPECT_EQ(image.CanWrite(), whole);
        EXPECT_EQ(Writes([&] { image.Write(mPath, true, nullptr); }), whole);
        EXPECT_EQ(Writes([&] { image.OpenWriteLine(mPath); }), lines);
    }
}

TEST_F(CGraflibJpegTest, WritesThrowWithoutPixelsAndWhereNoFileCanBeMade)
{
    TestImage empty({1, 1, 24});
    TestImage image({1, 1, 24}, Bytes(3));
    const std::string nothing = OutputOf([&] { empty.Write(mPath, true, nullptr); });
    const std::string whole = OutputOf([&] { image.Write("/no/x", true, nullptr); });
    const std::string lines = OutputOf([&] { image.OpenWriteLine("/no/x"); });
    EXPECT_EQ(nothing, "Errors: 2 " + mFile);
    EXPECT_EQ(whole, "Errors: 2 /no/x");
    EXPECT_EQ(lines, "Errors: 2 /no/x");
}

TEST_F(CGraflibJpegTest, WarningsTellACutPictureFromAWholeOne)
{
    const std::string whole = SampleJpeg(64, 64);
    const std::string noEnd = whole.substr(0, whole.size() - 2);
    const std::tuple<const char*, std::string, bool> rows[] = {
        {"cut in the header, and so not read", whole.substr(0, 100), true},
        {"half of it", whole.substr(0, whole.size() / 2), true},
        {"without its end, behind the last row", noEnd + "\xff\xfe", true},
        {"whole", whole, false}};
    TestImage lines;  // the same for all, since each read counts anew
    for (const auto& [name, content, hasWarnings] : rows) {
        WriteAll(mFile, content);
        TestImage image;
        OutputOf([&] { image.Read(mPath, nullptr); });
        OutputOf([&] {
            lines.OpenReadLine(mPath);
            ReadRows(lines);
        });
        EXPECT_EQ(image.mWarnings > 0, hasWarnings) << name << ": " << image.mWarnings;
        EXPECT_EQ(lines.mWarnings, image.mWarnings) << name << ", by lines";
    }
}

TEST_F(CGraflibJpegTest, PicturesAreReducedToTheLeastSide)
{
    const std::tuple<Shape, int, Shape> rows[] = {
        {{80, 16, 24}, 0, {80, 16, 24}},  {{80, 16, 24}, 1, {10, 2, 24}},
        {{80, 16, 24}, 10, {10, 2, 24}},  {{80, 16, 24}, 11, {20, 4, 24}},
        {{80, 16, 24}, 41, {80, 16, 24}}, {{16, 80, 24}, 40, {8, 40, 24}},
        {{79, 17, 24}, 10, {10, 3, 24}}};
    for (const auto& [stored, leastSide, reduced] : rows) {
        const auto [width, height, bits] = stored;
        SCOPED_TRACE(testing::PrintToString(stored) + " to " + std::to_string(leastSide));
        WriteAll(mFile, SampleJpeg(width, height));
        TestImage whole;
        TestImage lines;
        whole.mLeastSide = leastSide;
        lines.mLeastSide = leastSide;
        whole.Read(mPath, nullptr);
        lines.OpenReadLine(mPath);
        EXPECT_EQ(whole.GetShape(), reduced);
        EXPECT_EQ(lines.GetShape(), reduced);
    }
}

TEST_F(CGraflibJpegTest, ScalesWhatIsOpenWhateverTheRecordSays)
{
    WriteAll(mFile, SampleJpeg(33, 47));
    TestImage whole;
    TestImage lines;
    OutputOf([&] {
        whole.Read(mPath, nullptr);
        whole.DownScaleFix2(7, 11);
        lines.OpenReadLine(mPath);
        lines.GetSize("/no/where", 0, 0);
        lines.ScaleWhileReading(mPath, 7, 11);
    });
    EXPECT_EQ(lines.GetShape(), whole.GetShape());
    EXPECT_TRUE(AreSame(lines.Pixels(), whole.Pixels()));
}
