#include "tests/TestSupport.h"

TEST(CGraflibAlpha, SeparatedAndInterleavedIsTheIdentity)
{
    const Bytes pixels = NoisyBytes(6 * 5 * 4);
    const std::string size = "Width=6 Height=5 mBits=";
    TestImage image(6, 5, 32, pixels), color, alpha, alone;
    EXPECT_EQ(OutputOf([&] { EXPECT_TRUE(image.SeparateAlpha(&color, &alpha)); }),
              "COLOR " + size + "24 Data != NULL\nALPHA " + size + "8 Data != NULL\n");
    EXPECT_TRUE(color.mData[3] == pixels[4] && alpha.mData[1] == pixels[7]);
    EXPECT_EQ(OutputOf([&] { EXPECT_TRUE(image.SeparateAlpha(nullptr, &alone)); }),
              "ALPHA " + size + "8 Data != NULL\n");
    EXPECT_EQ(alone.Samples(), alpha.Samples());
    EXPECT_EQ(OutputOf([&] { EXPECT_TRUE(image.SeparateAlpha(nullptr, nullptr)); }), "");
    EXPECT_EQ(image.Samples(), pixels);
    EXPECT_TRUE(color.InterleaveAlpha(&alpha) && color.mBits == 32);
    EXPECT_EQ(color.Samples(), pixels);
    TestImage opaque(6, 5, 8, Bytes(30, 255));
    EXPECT_TRUE(color.InterleaveAlpha(&opaque));
    EXPECT_TRUE(color.mData[4] == pixels[4] && color.mData[7] == 255);
    EXPECT_EQ(OutputOf([&] { EXPECT_FALSE(alpha.SeparateAlpha(&image, &color)); }),
              "***** CGraflib::SeparateAlpha Bits=8\n");
}

TEST(CGraflibAlpha, InterleaveAlphaRefusesWhatDoesNotMatch)
{
    const std::tuple<int, int, int, int> rows[] = {
        {24, 16, 4, 4}, {24, 8, 3, 4}, {24, 8, 4, 5}, {8, 8, 4, 4}, {16, 8, 4, 4}};
    for (const auto& [bits, alphaBits, width, height] : rows) {
        TestImage image(4, 4, bits, Bytes(64, 1)), alpha(width, height, alphaBits, Bytes(64, 2));
        EXPECT_FALSE(image.InterleaveAlpha(&alpha));
        EXPECT_TRUE(image.mBits == bits && image.Samples() == Bytes(image.Bytes(), 1));
    }
}

TEST(CGraflibAlpha, CombineBlendsOrThrowsInOrder)
{
    TestImage image(2, 1, 24, Bytes{100, 0, 255, 1, 2, 3});
    TestImage overlay(2, 1, 32, Bytes{200, 255, 0, 100, 9, 9, 9, 0});
    image.CombineWithAlpha(&overlay);
    EXPECT_EQ(image.Samples(), (Bytes{138, 100, 155, 1, 2, 3}));
    const std::tuple<int, int, int, int> rows[] = {
        {32, 24, 9, GLIB_ERR_NOT24BIT}, {24, 24, 9, GLIB_ERR_NOT32BIT}, {24, 32, 9, GLIB_ERR_SIZE}};
    for (const auto& [bits, overlayBits, height, code] : rows) {
        TestImage wrong(2, height, overlayBits, Bytes(80));
        image.mBits = bits;
        try {
            image.CombineWithAlpha(&wrong);
            ADD_FAILURE() << "no exception " << code;
        } catch (const CGraflibException& e) {
            EXPECT_TRUE(e.mCode == code && e.mInfo == "CombineWithAlpha") << e.mCode;
        }
    }
}

TEST(CGraflibAlpha, SplitPlanesJoinAgain)
{
    const Bytes pixels{1, 2, 3, 4, 5, 6};
    TestImage image(2, 1, 24, pixels), wide(1, 1, 32, Bytes{1, 2, 3, 4});
    char* planes[3] = {};
    wide.SplitBitplanes(&planes[0], &planes[1], &planes[2]);
    wide.JoinBitplanes(planes[0], planes[1], planes[2]);
    EXPECT_TRUE(!planes[0] && wide.Samples() == (Bytes{1, 2, 3, 4}));
    image.SplitBitplanes(&planes[0], &planes[1], &planes[2]);
    EXPECT_EQ(std::string(planes[0], 2) + std::string(planes[1], 2) + std::string(planes[2], 2),
              "\1\4\2\5\3\6");
    image.JoinBitplanes(planes[0], planes[1], planes[2]);
    EXPECT_EQ(image.Samples(), pixels);
    for (char* plane : planes)
        delete[] plane;
}
