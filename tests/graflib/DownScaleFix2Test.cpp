#include "tests/support/PixelByPixel.h"
#include "tests/support/TestSupport.h"

/// What DownScaleFix2 makes of a picture, which must be what its pixels are one by one.
static Bytes Scaled(const Shape& shape, const Bytes& pixels, int width, int height)
{
    TestImage image(shape, pixels);
    Bytes expected(SizeProduct(width, height, image.mBits / 8));
    ScalePixelByPixel(image, width, height, expected.data());
    OutputOf([&] { EXPECT_EQ(image.DownScaleFix2(width, height), image.mData); });
    EXPECT_EQ(image.GetShape(), Shape(width, height, std::get<2>(shape)));
    EXPECT_TRUE(image.Pixels() == expected)
        << testing::PrintToString(shape) << " to " << width << ' ' << height;
    return image.Pixels();
}

TEST(DownScaleFix2, EqualsTheDefinition)
{
    // Every precision from both sides of its threshold, where the ratio is rounded onto it, too; a
    // side without room for 16 fraction bits; more rows than a block has, footprints that vanish,
    // sums beyond 32 bits.
    const std::vector<Sizes> sizes = {
        {80, 180, 30, 30},    {31, 33, 8, 8},      {64, 144, 6, 6},     {47, 49, 3, 3},
        {64, 144, 3, 3},      {95, 97, 3, 3},      {6, 88, 11, 3},      {9, 700, 1, 1},
        {3, 1200, 2, 2},      {32768, 3, 9999, 2}, {32767, 1, 3000, 1}, {300, 2, 2, 7},
        {70000, 2, 35000, 1}, {2, 3, 1001, 200},   {9, 2, 9, 900},      {2, 1, 70000, 1},
        {3000, 3000, 1, 1},   {3, 257, 2, 1},      {33, 21, 33, 21}};
    for (const auto& [width, height, newWidth, newHeight] : WithRandomSizes(sizes)) {
        for (const int bits : {8, 16, 24, 32}) {
            const Bytes pixels = Noise(width * height * bits / 8);
            const Bytes scaled = Scaled({width, height, bits}, pixels, newWidth, newHeight);
            EXPECT_EQ(scaled == pixels, width == newWidth && height == newHeight);
        }
    }
    EXPECT_EQ(Scaled({1, 8388608, 8}, Bytes(8388608, 255), 4, 1), Bytes(4, 255));
}

TEST(GetScaledPicturePixel, WeighsAndRoundsWithAnyPrecision)
{
    Bytes points(1001, 1);  // of footprints without area: the pixel in which each starts
    std::fill(points.begin() + 505, points.end(), 2);
    const Bytes wave{255, 242, 242, 242, 242, 242, 242, 242, 242};
    const std::tuple<std::vector<int>, Bytes, Sizes, Bytes> cases[] = {
        {{16, 8, 4, 2}, {10, 11, 10, 11}, {2, 2, 1, 1}, {11}},
        {{16, 8, 2}, {0, 100, 200}, {3, 1, 2, 1}, {33, 167}},
        {{16}, {77}, {1, 1, 3, 3}, Bytes(9, 77)},
        {{16}, Bytes(100, 255), {10, 10, 3, 3}, Bytes(9, 255)},
        {{2}, Bytes(49, 255), {7, 7, 3, 3}, wave},
        {{16}, {1, 2}, {2, 1, 1001, 200}, points}};
    for (const auto& [shifts, pixels, sizes, expected] : cases) {
        TestImage image({sizes[0], sizes[1], 8}, pixels);
        for (const int shift : shifts) {
            Bytes result(SizeProduct(sizes[2], sizes[3]));
            ScaleWithShift<CPixel1fixT, SPixel1i<unsigned char>>(image, sizes[2], sizes[3], shift,
                                                                 result.data());
            result.resize(expected.size());  // the first of them
            EXPECT_EQ(result, expected) << shift;
        }
    }
}

TEST(DownScaleFix2, SaysWhatItDoes)
{
    const std::tuple<Shape, int, const char*, bool> cases[] = {
        {{4, 4, 8}, 2, "sizeof(Tpixel)=1\n", true},
        {{4, 4, 16}, 2, "sizeof(Tpixel)=2\n", true},
        {{4, 4, 24}, 2, "ScaleFakt=4\nsizeof(Tpixel)=3\n", true},
        {{4, 4, 32}, 2, "sizeof(Tpixel)=4\n", true},
        {{4, 4, 1}, 2, "***** unsupported bitcount:1\n", false},
        {{4, 4, 24}, 0, "", false},
        {{4, 4, 24}, -1, "", false},
        {{0, 4, 24}, 2, "", false},
        {{(1 << 29) + 1, 1, 8}, 2, "", false}};
    for (const auto& [shape, width, words, isDone] : cases) {
        TestImage image(shape, Bytes(64));
        const auto* const before = image.mData;
        EXPECT_EQ(OutputOf([&, &w = width] { image.DownScaleFix2(w, 2); }), words);
        EXPECT_TRUE((image.mData != before) == isDone && (image.mWidth == 2) == isDone);
    }
    TestImage image({1, 1, 8}, {1});
    SPixel1i<unsigned char>* const nowhere = nullptr;
    const auto scale = [&] { image.DownScalePicture<16, CPixel1fixT<16>>(nowhere, 0, 1); };
    EXPECT_EQ(OutputOf(scale), "sizeof(Tpixel)=1\n");
}
