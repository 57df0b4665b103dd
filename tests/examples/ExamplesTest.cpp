#include "tests/TestSupport.h"

using Examples = FolderTest;

TEST_F(Examples, DoWhatTheySay)
{
    const std::tuple<std::string, std::string, int, int> rows[] = {
        {"make_thumbnail", " 50", 50, 39}, {"halve_lines", "", 50, 40}, {"overlay", "", 101, 80}};
    for (const auto& [name, size, width, height] : rows) {
        const std::string program = TESSEL_EXAMPLES "/" + name;
        EXPECT_EQ(Run(program).find("failed\nErrors: Usage: " + name), 0U);
        EXPECT_NE(Run(program + " none.jpg x.jpg" + size).find("none.jpg\n"), std::string::npos);
        WriteAll(mFile, EncodeJpeg(101, 80, 3, Bytes(101 * 80 * 3, 200)));
        Run(program + " x.jpg x.jpg" + size);
        TestImage image;
        ASSERT_TRUE(image.Read(mPath, nullptr) && image.GetShape() == Shape(width, height, 24));
        EXPECT_NEAR(image.mData[0], name == "overlay" ? 40 : 200, 3) << name;
        EXPECT_NEAR(image.mData[image.Bytes() / 2 + 75], 200, 3) << name;
    }
}

TEST_F(Examples, DocumentedProgramsGoThrough)
{
    EXPECT_NE(Run(TESSEL_TOUR " none.jpg .").find("error 1: none.jpg\n"), std::string::npos);
    WriteAll(mFile, SampleJpeg(240, 160));
    EXPECT_EQ(Run(TESSEL_TOUR " x.jpg .").find("failed"), std::string::npos);
    EXPECT_EQ(Run(TESSEL_README " x.jpg readme.jpg").find("failed"), std::string::npos);
    const std::pair<const char*, int> rows[] = {
        {"thumbnail.jpg", 120}, {"blended.jpg", 120}, {"negative.jpg", 240}, {"readme.jpg", 192}};
    for (const auto& [name, width] : rows) {
        TestImage image;
        EXPECT_TRUE(image.GetSize((mFolder / name).c_str(), 0, 0) && image.mWidth == width) << name;
    }
}
