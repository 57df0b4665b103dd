#include "tests/TestSupport.h"

TEST(CGraflibAlpha, PartsPutTogetherAreTheWhole)
{
    const Bytes pixels{1, 2, 3, 4, 5, 6, 7, 8};
    TestImage image({1, 2, 32}, pixels), color, alpha, opaque({1, 2, 8}, {9, 9});
    EXPECT_EQ(OutputOf([&] { EXPECT_TRUE(image.SeparateAlpha(nullptr, &alpha)); }),
              "ALPHA Width=1 Height=2 mBits=8 Data != NULL\n");
    EXPECT_EQ(OutputOf([&] { EXPECT_TRUE(image.SeparateAlpha(&color, nullptr)); }),
              "COLOR Width=1 Height=2 mBits=24 Data != NULL\n");
    EXPECT_EQ(OutputOf([&] { EXPECT_FALSE(alpha.SeparateAlpha(&image, &color)); }),
              "***** CGraflib::SeparateAlpha Bits=8\n");
    EXPECT_TRUE(color.Pixels() == Bytes({1, 2, 3, 5, 6, 7}) && alpha.Pixels() == Bytes({4, 8}));
    EXPECT_TRUE(color.InterleaveAlpha(&alpha) && color.Pixels() == pixels);
    EXPECT_TRUE(color.InterleaveAlpha(&opaque) && color.mData[4] == 5 && color.mData[7] == 9);
    EXPECT_FALSE(alpha.InterleaveAlpha(&opaque));
    for (const Shape& shape : {Shape{1, 2, 16}, Shape{2, 2, 8}, Shape{1, 1, 8}})
        EXPECT_FALSE(color.InterleaveAlpha(std::make_unique<TestImage>(shape, Bytes(4)).get()));

    TestImage rgb({2, 1, 24}, {1, 2, 3, 4, 5, 6});
    char* planes[3] = {};
    image.SplitBitplanes(nullptr, nullptr, nullptr);
    image.JoinBitplanes(nullptr, nullptr, nullptr);
    rgb.SplitBitplanes(&planes[0], &planes[1], &planes[2]);
    rgb.JoinBitplanes(planes[0], planes[1], planes[2]);
    EXPECT_TRUE(rgb.Pixels() == Bytes({1, 2, 3, 4, 5, 6}) && image.Pixels() == pixels);
    std::string samples;
    for (char* plane : planes)
        samples.append(std::unique_ptr<char[]>(plane).get(), 2);
    EXPECT_EQ(samples, "\1\4\2\5\3\6");
}

TEST(CGraflibAlpha, CombineCutsEachQuotientOrThrowsInOrder)
{
    TestImage image({4, 1, 24}, {9, 9, 9, 9, 9, 9, 100, 0, 255, 1, 1, 1});
    TestImage above({4, 1, 32}, {7, 8, 7, 0, 1, 2, 3, 255, 200, 255, 0, 100, 1, 1, 1, 128});
    image.CombineWithAlpha(&above);
    EXPECT_EQ(image.Pixels(), Bytes({9, 9, 9, 1, 2, 3, 138, 100, 155, 0, 0, 0}));
    const std::tuple<int, int, std::string> rows[] = {
        {32, 24, "Datei muss 24 bit sein\nErrors: 6"},
        {24, 24, "Datei muss 32 bit sein\nErrors: 5"},
        {24, 32, "Groesse der Bitmaps verschieden\nErrors: 4"}};
    above.mHeight = 9;
    for (const auto& [bits, aboveBits, text] : rows) {
        std::tie(image.mBits, above.mBits) = std::tie(bits, aboveBits);
        EXPECT_EQ(OutputOf([&] { image.CombineWithAlpha(&above); }),
                  "GLIB error: " + text + " CombineWithAlpha");
    }
}
