#include "tests/TestSupport.h"
#include "tests/graflib/PixelByPixel.h"

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
    // Every precision from both sides of its threshold, more rows than a block has, a side without
    // room for 16 fraction bits, footprints that vanish, sums beyond 32 bits.
    const std::vector<Sizes> sizes = {
        {80, 180, 30, 30}, {63, 64, 16, 16},     {64, 144, 6, 6},   {63, 64, 4, 4},
        {64, 144, 3, 3},   {63, 64, 2, 2},       {9, 700, 1, 1},    {3, 1200, 2, 2},
        {300, 2, 2, 7},    {70000, 2, 35000, 1}, {2, 3, 1001, 200}, {9, 2, 9, 900},
        {2, 1, 70000, 1},  {3000, 3000, 1, 1},   {3, 257, 2, 1},    {33, 21, 33, 21}};
    for (const auto& [width, height, newWidth, newHeight] : WithRandomSizes(sizes)) {
        for (const int bits : {8, 16, 24, 32}) {
            const Bytes pixels = Noise(width * height * bits / 8);
            const Bytes scaled = Scaled({width, height, bits}, pixels, newWidth, newHeight);
            EXPECT_EQ(scaled == pixels, width == newWidth && height == newHeight);
        }
    }
    EXPECT_EQ(Scaled({1, 8388608, 8}, Bytes(8388608, 255), 4, 1), Bytes(4, 255));
}

TEST(GetScaledPicturePixel, WeighsAndRounds)
{
    using Samples = std::vector<short>;
    const Samples points = [] {  // of footprints without area: the pixel in which each starts
        Samples row(1001, 1);
        std::fill(row.begin() + 505, row.end(), short{2});
        return row;
    }();
    struct
    {
        std::vector<int> mShifts;
        int mBits;
        Samples mSamples;
        Sizes mSizes;
        Samples mExpected;  // the first of them
    } const cases[] = {
        {{16, 8, 4, 2}, 8, {10, 11, 10, 11}, {2, 2, 1, 1}, {11}},
        {{16}, 16, {-1, 0}, {2, 1, 1, 1}, {0}},
        {{16}, 16, {-1, -2}, {2, 1, 1, 1}, {-1}},
        {{16, 8, 2}, 8, {0, 100, 200}, {3, 1, 2, 1}, {33, 167}},
        {{16}, 8, {0, 90}, {2, 1, 3, 1}, {0, 45, 90}},
        {{16}, 8, {77}, {1, 1, 3, 3}, Samples(9, 77)},
        {{16}, 8, Samples(100, 255), {10, 10, 3, 3}, Samples(9, 255)},
        {{2}, 8, Samples(49, 255), {7, 7, 3, 3}, {255, 242, 242, 242, 242, 242, 242, 242, 242}},
        {{16}, 8, {1, 2}, {2, 1, 1001, 200}, points}};
    for (const auto& [shifts, bits, samples, sizes, expected] : cases) {
        const auto* bytes = reinterpret_cast<const unsigned char*>(samples.data());
        const Bytes wide(bytes, bytes + 2 * samples.size());
        TestImage image({sizes[0], sizes[1], bits},
                        bits == 16 ? wide : Bytes(samples.begin(), samples.end()));
        TestImage result({sizes[2], sizes[3], bits}, Bytes(SizeProduct(sizes[2], sizes[3], 2)));
        const auto* grey = result.mData;
        const auto* deep = reinterpret_cast<const short*>(result.mData);
        const auto scale = bits == 16 ? ScaleWithShift<CPixel1fixT, SPixel1i<short>>
                                      : ScaleWithShift<CPixel1fixT, SPixel1i<unsigned char>>;
        for (const int shift : shifts) {
            scale(image, sizes[2], sizes[3], shift, result.mData);
            EXPECT_TRUE(bits == 16 ? std::equal(expected.begin(), expected.end(), deep)
                                   : std::equal(expected.begin(), expected.end(), grey))
                << shift << ' ' << testing::PrintToString(result.Pixels());
        }
    }
}

TEST(DownScaleFix2, ThePrecisionFollowsFromTheRatio)
{
    // A threshold itself chooses the lower precision: 16, 256, 1024, and just below each. A side
    // too long for the fraction bits does, too.
    constexpr int kNoOther = 0;
    const std::tuple<Sizes, int, int> cases[] = {
        {{80, 180, 30, 30}, 8, 16},        {{79, 180, 30, 30}, 16, 8}, {{64, 144, 6, 6}, 4, 8},
        {{64, 143, 6, 6}, 8, 4},           {{64, 144, 3, 3}, 2, 4},    {{64, 143, 3, 3}, 4, 2},
        {{32768, 3, 9999, 2}, 8, kNoOther}};
    for (const auto& [sizes, shift, other] : cases) {
        const auto [width, height, newWidth, newHeight] = sizes;
        TestImage image({width, height, 8}, Noise(width * height));
        const Bytes scaled = Scaled(image.GetShape(), image.Pixels(), newWidth, newHeight);
        Bytes pixels(scaled.size());
        const auto isScaledWith = [&, &w = newWidth, &h = newHeight](int tried) {
            ScaleWithShift<CPixel1fixT, SPixel1i<unsigned char>>(image, w, h, tried, pixels.data());
            return pixels == scaled;
        };
        EXPECT_TRUE(isScaledWith(shift)) << shift;
        EXPECT_FALSE(other != kNoOther && isScaledWith(other)) << other;
    }
}

TEST(DownScaleFix2, SaysWhatItDoes)
{
    struct
    {
        int mBits;
        int mWidth;
        const char* mWords;
        bool mIsDone;
    } const cases[] = {{8, 2, "sizeof(Tpixel)=1\n", true},
                       {16, 2, "sizeof(Tpixel)=2\n", true},
                       {24, 2, "ScaleFakt=4\nsizeof(Tpixel)=3\n", true},
                       {32, 2, "sizeof(Tpixel)=4\n", true},
                       {1, 2, "***** unsupported bitcount:1\n", false},
                       {24, 0, "", false},
                       {24, -1, "", false}};
    for (const auto& [bits, width, words, isDone] : cases) {
        TestImage image({4, 4, bits}, Bytes(64));
        const auto* const before = image.mData;
        EXPECT_EQ(OutputOf([&, &w = width] { image.DownScaleFix2(w, 2); }), words);
        EXPECT_EQ(image.mData != before, isDone);
        EXPECT_EQ(image.mWidth, isDone ? 2 : 4);
    }
}
