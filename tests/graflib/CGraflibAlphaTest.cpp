#include "tests/support/TestSupport.h"

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
    const std::unique_ptr<unsigned char[]> oldColor(color.mData), oldAlpha(alpha.mData);
    OutputOf([&] { EXPECT_TRUE(image.SeparateAlpha(&color, &alpha)); });  // the old stay the test's
    EXPECT_TRUE(color.Pixels() == Bytes({1, 2, 3, 5, 6, 7}) && alpha.Pixels() == Bytes({4, 8}));
    EXPECT_TRUE(color.InterleaveAlpha(&alpha) && color.Pixels() == pixels);
    EXPECT_TRUE(color.InterleaveAlpha(&opaque) && color.mData[4] == 5 && color.mData[7] == 9);
    EXPECT_FALSE(alpha.InterleaveAlpha(&opaque));
    EXPECT_FALSE(TestImage({1, 2, 16}, Bytes(4)).InterleaveAlpha(&opaque));
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
    const std::string size = "Groesse der Bitmaps verschieden\nErrors: 4";
    const std::tuple<int, Shape, std::string> rows[] = {
        {32, {4, 9, 24}, "Datei muss 24 bit sein\nErrors: 6"},
        {24, {4, 9, 24}, "Datei muss 32 bit sein\nErrors: 5"},
        {24, {4, 9, 32}, size},
        {24, {5, 1, 32}, size}};
    for (const auto& [bits, shape, text] : rows) {
        image.mBits = bits;
        std::tie(above.mWidth, above.mHeight, above.mBits) = shape;
        EXPECT_EQ(OutputOf([&] { image.CombineWithAlpha(&above); }),
                  "GLIB error: " + text + " CombineWithAlpha");
    }
    image.mBits = 24;
}

TEST(CGraflibException, SaysWhatIsWrongWithWhat)
{
    const std::pair<int, const char*> rows[] = {{1, "x: can't be read"},
                                                {2, "x: can't be written"},
                                                {4, "x: the pictures differ in size"},
                                                {5, "x: the other picture must have 32 bits"},
                                                {6, "x: this picture must have 24 bits"}};
    for (const auto& [code, text] : rows)
        EXPECT_STREQ(CGraflibException(code, "x").what(), text);
    for (const int code : {1, 2, 3, 7})
        EXPECT_EQ(OutputOf([&] { throw CGraflibException(code, "x"); }),
                  "Errors: " + std::to_string(code) + " x");
}
