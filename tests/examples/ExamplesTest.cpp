#include "tests/support/TestSupport.h"

using Examples = FolderTest;

TEST_F(Examples, DoWhatTheySay)
{
    const std::tuple<std::string, std::string, int, int> rows[] = {
        {"make_thumbnail", " 50", 50, 39}, {"halve_lines", "", 50, 40}, {"overlay", "", 101, 80}};
    for (const auto& [name, size, width, height] : rows) {
        const std::string program = TESSEL_EXAMPLES "/" + name;
        EXPECT_EQ(Run(program).find("failed\nErrors: Usage: " + name), 0U);
        EXPECT_NE(
            Run(program + " none.jpg x.jpg" + size).find(name + ": none.jpg: can't be read\n"),
            std::string::npos);
        WriteAll(mFile, EncodeJpeg(101, 80, 3, Bytes(101 * 80 * 3, 200)));
        Run(program + " x.jpg x.jpg" + size);
        TestImage image;
        ASSERT_TRUE(image.Read(mPath, nullptr) && image.GetShape() == Shape(width, height, 24));
        EXPECT_NEAR(image.mData[0], name == "overlay" ? 40 : 200, 3) << name;
        EXPECT_NEAR(image.mData[image.Bytes() / 2 + 75], 200, 3) << name;
    }
}

TEST_F(Examples, ThinAndTallPicturesAndWhatCannotBeDone)
{
    const std::string program = TESSEL_EXAMPLES "/make_thumbnail";
    WriteAll(mFile, EncodeJpeg(3, 600, 3, Bytes(3 * 600 * 3, 200)));
    Run(program + " x.jpg thumbnail.jpg 50");
    TestImage image;
    ASSERT_TRUE(image.Read((mFolder / "thumbnail.jpg").c_str(), nullptr));
    EXPECT_EQ(image.GetShape(), Shape(1, 50, 24));
    EXPECT_EQ(Run(program + " x.jpg thumbnail.jpg 0").find("failed\nErrors: Usage"), 0U);
}

TEST_F(Examples, ContactSheetHasAPictureOfAnyDepthInEachCell)
{
    const std::string program = TESSEL_EXAMPLES "/contact_sheet";
    EXPECT_EQ(Run(program + " . sheet.jpg").find("failed\nErrors: Usage: contact_sheet"), 0U);
    for (const int components : {1, 3, 4}) {
        const std::string picture = EncodeJpeg(400, 200, components, Bytes(320000, 200));
        WriteAll(mFolder / (std::to_string(components) + ".jpg"), picture);
    }
    WriteAll(mFolder / "5.JPG", "not a picture");
    WriteAll(mFolder / "6.jpg", EncodeJpeg(10, 90, 3, Bytes(2700, 100)));
    WriteAll(mFolder / "7.jpg", EncodeJpeg(192, 192, 1, Bytes(36864, 50)));
    EXPECT_NE(Run(program + " . sheet.jpg").find("left out: ./5.JPG: "), std::string::npos);
    TestImage sheet;
    ASSERT_TRUE(sheet.Read((mFolder / "sheet.jpg").c_str(), nullptr));
    ASSERT_EQ(sheet.GetShape(), Shape(1000, 400, 24));
    // In the middle of each cell; and beside and above the pictures.
    const std::tuple<int, int, int> rows[] = {{100, 100, 200}, {300, 100, 200}, {500, 100, 157},
                                              {700, 100, 255}, {900, 100, 100}, {100, 300, 50},
                                              {910, 100, 255}, {100, 40, 255},  {300, 300, 255}};
    for (const auto& [x, y, level] : rows)
        EXPECT_NEAR(sheet.mData[(y * 1000 + x) * 3], level, 3) << x << ' ' << y;
}

TEST_F(Examples, DocumentedProgramsGoThroughWithEveryDepth)
{
    const std::string noPicture = "Errors: none.jpg: can't be read\n";
    EXPECT_EQ(Run(TESSEL_TOUR " none.jpg ."), "failed\n" + noPicture);
    EXPECT_EQ(Run(TESSEL_README " none.jpg x"), "failed\n" + noPicture);
    for (const int components : {1, 3, 4}) {
        Bytes pixels;  // the left half lighter than the right one
        for (int i = 0; i < 240 * 160 * components; ++i)
            pixels.push_back(i / components % 240 < 120 ? 200 : 100);
        WriteAll(mFile, EncodeJpeg(240, 160, components, pixels));
        EXPECT_EQ(Run(TESSEL_TOUR " x.jpg .").find("failed"), std::string::npos);
        EXPECT_EQ(Run(TESSEL_README " x.jpg readme.jpg").find("failed"), std::string::npos);
        const int level = components == 4 ? 157 : 200;  // 200 * 200 / 255
        const int right = components == 4 ? 39 : 100;
        const std::tuple<const char*, int, int> rows[] = {{"thumbnail.jpg", 120, level},
                                                          {"card.jpg", 160, level},
                                                          {"blended.jpg", 160, level},
                                                          {"mirrored.jpg", 240, right},
                                                          {"readme.jpg", 192, level}};
        for (const auto& [name, width, wanted] : rows) {
            TestImage image;
            ASSERT_TRUE(image.Read((mFolder / name).c_str(), nullptr) && image.mWidth == width);
            const std::size_t pixel = image.PixelCount() / 2 + 40;  // of the middle row
            EXPECT_NEAR(image.mData[pixel * 3], wanted, 4) << name;
        }
    }
}
