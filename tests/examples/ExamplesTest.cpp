// The example programs and those in the documents, run as one runs them from a shell.
#include "tests/support/TestSupport.h"

namespace {

using Examples = FolderTest;

const std::string kHalveLines = TESSEL_EXAMPLES "/halve_lines";
const std::string kContactSheet = TESSEL_EXAMPLES "/contact_sheet";

/// A picture whose samples are all the same.
std::string FlatJpeg(int width, int height, int components, unsigned char sample)
{
    const auto count = static_cast<std::size_t>(width * height * components);
    return EncodeJpeg(width, height, components, Bytes(count, sample));
}

/// A picture whose left half is of 200s, its right half of 100s.
std::string HalvesJpeg(int width, int height, int components)
{
    Bytes samples;
    for (int i = 0; i < width * height * components; ++i)
        samples.push_back(i / components % width < width / 2 ? 200 : 100);
    return EncodeJpeg(width, height, components, samples);
}

/// What a sample becomes in a picture of three components: of four, colours are multiplied by the
/// last.
int LevelOf(int sample, int components)
{
    return components == 4 ? sample * sample / 255 : sample;
}

/// The red of a pixel of a 24-bit image.
int RedAt(const CDataRect& image, int x, int y)
{
    return image.mData[(y * image.mWidth + x) * 3];
}

}  // namespace

TEST_F(Examples, SayHowTheyAreUsed)
{
    for (const std::string name : {"halve_lines", "contact_sheet"}) {
        const std::string output = Run(TESSEL_EXAMPLES "/" + name);
        EXPECT_EQ(output.find("failed\nErrors: Usage: " + name), 0U) << output;
    }
}

TEST_F(Examples, HalveLinesHalvesPicturesOfEveryDepth)
{
    for (const int components : {1, 3, 4}) {
        SCOPED_TRACE(components);
        WriteAll(mFile, HalvesJpeg(161, 81, components));
        EXPECT_EQ(Run(kHalveLines + " x.jpg half.jpg"), "");
        TestImage half;
        ASSERT_TRUE(half.Read((mFolder / "half.jpg").c_str(), nullptr));
        ASSERT_EQ(half.GetShape(), Shape(80, 40, 24));
        EXPECT_NEAR(RedAt(half, 20, 20), LevelOf(200, components), 4);
        EXPECT_NEAR(RedAt(half, 60, 39), LevelOf(100, components), 4);
    }
}

TEST_F(Examples, HalveLinesSaysWhatItCannotDo)
{
    WriteAll(mFile, FlatJpeg(1, 1, 3, 200));
    const std::pair<const char*, const char*> rows[] = {
        {" none.jpg half.jpg", "failed\nErrors: halve_lines: none.jpg: can't be read\n"},
        {" x.jpg half.jpg", "failed\nErrors: halve_lines: half.jpg: can't be written\n"}};
    for (const auto& [arguments, output] : rows)
        EXPECT_EQ(Run(kHalveLines + arguments), output);
}

TEST_F(Examples, ContactSheetHasAPictureInTheMiddleOfEachCell)
{
    for (const int components : {1, 3, 4}) {
        const fs::path file = mFolder / (std::to_string(components) + ".jpg");
        WriteAll(file, FlatJpeg(400, 200, components, 200));
    }
    WriteAll(mFolder / "5.JPG", "not a picture");
    WriteAll(mFolder / "6.jpg", FlatJpeg(10, 90, 3, 100));
    WriteAll(mFolder / "7.jpg", FlatJpeg(3, 600, 1, 50));
    const std::string output = Run(kContactSheet + " . sheet.jpg");
    EXPECT_NE(output.find("left out: ./5.JPG: "), std::string::npos) << output;

    TestImage sheet;
    ASSERT_TRUE(sheet.Read((mFolder / "sheet.jpg").c_str(), nullptr));
    ASSERT_EQ(sheet.GetShape(), Shape(1000, 400, 24));
    const std::tuple<const char*, int, int, int> rows[] = {{"grey", 100, 100, 200},
                                                           {"above it", 100, 40, 255},
                                                           {"beside it", 2, 100, 255},
                                                           {"colour", 300, 100, 200},
                                                           {"four components", 500, 100, 157},
                                                           {"what can't be read", 700, 100, 255},
                                                           {"a small one", 900, 100, 100},
                                                           {"beside the small one", 910, 100, 255},
                                                           {"the second row", 99, 300, 50},
                                                           {"behind the last one", 300, 300, 255}};
    for (const auto& [what, x, y, level] : rows)
        EXPECT_NEAR(RedAt(sheet, x, y), level, 5) << what;
}

TEST_F(Examples, ProgramsOfDocumentsSayWhatCannotBeRead)
{
    const std::string output = "failed\nErrors: none.jpg: can't be read\n";
    EXPECT_EQ(Run(TESSEL_TOUR " none.jpg ."), output);
    EXPECT_EQ(Run(TESSEL_README " none.jpg x"), output);
}

TEST_F(Examples, ProgramsOfDocumentsTakePicturesOfEveryDepth)
{
    struct SRow
    {
        const char* mName;
        int mWidth;
        int mSample;  // left of the middle
    };
    const SRow rows[] = {{"thumbnail.jpg", 120, 200},
                         {"card.jpg", 160, 200},
                         {"blended.jpg", 160, 200},
                         {"mirrored.jpg", 240, 100},
                         {"readme.jpg", 192, 200}};
    for (const int components : {1, 3, 4}) {
        SCOPED_TRACE(components);
        WriteAll(mFile, HalvesJpeg(240, 160, components));
        EXPECT_EQ(Run(TESSEL_TOUR " x.jpg .").find("failed"), std::string::npos);
        EXPECT_EQ(Run(TESSEL_README " x.jpg readme.jpg").find("failed"), std::string::npos);
        for (const SRow& row : rows) {
            SCOPED_TRACE(row.mName);
            TestImage image;
            ASSERT_TRUE(image.Read((mFolder / row.mName).c_str(), nullptr));
            EXPECT_EQ(image.mWidth, row.mWidth);
            EXPECT_NEAR(RedAt(image, 40, image.mHeight / 2), LevelOf(row.mSample, components), 4);
        }
    }
}
