#include "tests/TestSupport.h"

namespace {

SRun RunExample(const std::string& name, const std::string& arguments)
{
    return RunProgram(TESSEL_EXAMPLES "/" + name, arguments);
}

}  // namespace

TEST(Examples, DoWhatTheySay)
{
    if (std::string(TESSEL_EXAMPLES).empty())
        GTEST_SKIP() << "built without examples";
    const TempFolder folder;
    const std::string in = folder / "in.jpg", out = folder / "out.jpg";
    const Bytes light(101 * 80 * 3, 200);
    WriteAll(in, EncodeJpeg(101, 80, 3, light));
    TestImage image;

    EXPECT_EQ(RunExample("make_thumbnail", in + " " + out + " 50").mStatus, 0);
    EXPECT_EQ(ReadAll(out), EncodeJpeg(50, 39, 3, Bytes(50 * 39 * 3, 200)));
    EXPECT_EQ(RunExample("halve_lines", in + " " + out).mStatus, 0);
    EXPECT_EQ(ReadAll(out), EncodeJpeg(50, 40, 3, Bytes(50 * 40 * 3, 200)));
    EXPECT_EQ(RunExample("overlay", in + " " + out).mStatus, 0);
    ASSERT_TRUE(image.Read(out.c_str(), nullptr) && image.mWidth == 101 && image.mHeight == 80);
    EXPECT_LT(image.mData[0], 60);  // darkened in the corner, not in the middle
    EXPECT_GT(image.mData[image.Bytes() / 2 + 150], 195);

    for (const char* name : {"make_thumbnail", "halve_lines", "overlay"}) {
        const std::string size = name[0] == 'm' ? " 50" : "";
        const SRun missing = RunExample(name, folder / "none.jpg " + out + size);
        EXPECT_TRUE(missing.mStatus != 0 && missing.mErr.find("none.jpg") != std::string::npos);
        EXPECT_NE(RunExample(name, "").mErr.find("Usage: "), std::string::npos);
    }
}
