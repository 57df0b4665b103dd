// The example programs and those in the documents, run as one runs them from a shell.
#include "tests/support/TestSupport.h"

using testing::HasSubstr;
using testing::Not;

namespace {

using Examples = FolderTest;

const std::string kHalveLines = TESSEL_EXAMPLES "/halve_lines";
const std::string kContactSheet = TESSEL_EXAMPLES "/contact_sheet";

/// A picture whose left half is of one sample, its right half of another.
std::string HalvesJpeg(int width, int height, int components, int left, int right)
{
    Bytes samples;
    for (int i = 0; i < width * height * components; ++i) {
        const bool isLeft = i / components % width < width / 2;
        samples.push_back(static_cast<unsigned char>(isLeft ? left : right));
    }
    return EncodeJpeg(width, height, components, samples);
}

/// The red of a pixel of a 24-bit image.
int RedAt(const CDataRect& image, int x, int y)
{
    return image.mData[(y * image.mWidth + x) * 3];
}

}  // namespace

TEST_F(Examples, SayHowTheyAreUsedAndWhatTheyCannotDo)
{
    WriteAll(mFile, HalvesJpeg(1, 1, 3, 200, 200));
    const std::pair<std::string, std::string> rows[] = {
        {kHalveLines, "Usage: halve_lines"},
        {kContactSheet, "Usage: contact_sheet"},
        {kHalveLines + " none.jpg half.jpg", "halve_lines: none.jpg: can't be read\n"},
        {kHalveLines + " x.jpg half.jpg", "halve_lines: half.jpg: can't be written\n"},
        {TESSEL_TOUR " none.jpg .", "none.jpg: can't be read\n"},
        {TESSEL_README " none.jpg x", "none.jpg: can't be read\n"}};
    for (const auto& [command, error] : rows)
        EXPECT_THAT(Run(command), testing::StartsWith("failed\nErrors: " + error)) << command;
}

TEST_F(Examples, TakePicturesOfEveryDepth)
{
    // The name and the width of each picture, and its sample left of the middle.
    const std::tuple<const char*, int, int> rows[] = {
        {"half.jpg", 120, 200},    {"thumbnail.jpg", 120, 200}, {"card.jpg", 160, 200},
        {"blended.jpg", 160, 200}, {"mirrored.jpg", 240, 100},  {"readme.jpg", 192, 200}};
    for (const int components : {1, 3, 4}) {
        WriteAll(mFile, HalvesJpeg(240, 160, components, 200, 100));
        for (const std::string& command :
             {kHalveLines + " x.jpg half.jpg", std::string(TESSEL_TOUR " x.jpg ."),
              std::string(TESSEL_README " x.jpg readme.jpg")})
            EXPECT_THAT(Run(command), Not(HasSubstr("failed"))) << components << " components";
        for (const auto& [name, width, sample] : rows) {
            SCOPED_TRACE(name + std::string(" of components: ") + std::to_string(components));
            TestImage image;
            ASSERT_TRUE(image.Read((mFolder / name).c_str(), nullptr));
            EXPECT_EQ(image.mWidth, width);
            // Colours of four components are multiplied by the last.
            const int level = components == 4 ? sample * sample / 255 : sample;
            EXPECT_NEAR(RedAt(image, 40, image.mHeight / 2), level, 4);
        }
    }
}

TEST_F(Examples, ContactSheetHasAPictureInTheMiddleOfEachCell)
{
    for (const int components : {1, 3, 4}) {
        const fs::path file = mFolder / (std::to_string(components) + ".jpg");
        WriteAll(file, HalvesJpeg(400, 200, components, 200, 200));
    }
    WriteAll(mFolder / "5.JPG", "not a picture");
    WriteAll(mFolder / "6.jpg", HalvesJpeg(10, 90, 3, 100, 100));
    WriteAll(mFolder / "7.jpg", HalvesJpeg(3, 600, 1, 50, 50));
    const std::string output = Run(kContactSheet + " . sheet.jpg");
    EXPECT_THAT(output, HasSubstr("left out: ./5.JPG: "));

    TestImage sheet;
    ASSERT_TRUE(sheet.Read((mFolder / "sheet.jpg").c_str(), nullptr));
    ASSERT_EQ(sheet.GetShape(), Shape(1000, 400, 24));
    const std::tuple<const char*, int, int, int> rows[] = {{"grey", 100, 100, 200},
                                                           {"above it", 100, 40, 255},
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
