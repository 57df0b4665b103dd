#include <array>
#include <random>

#include "graflib/FixedPointTypes.h"
#include "graflib/PixelTypes.h"
#include "tests/TestSupport.h"
#include "tests/graflib/SlowScaler.h"

namespace {

using Grey = SPixel1i<unsigned char>;

/// One template instance on its own, so that a small picture can be scaled at any precision.
template <int SHIFT>
Bytes ScaleGreyAt(TestImage& image, int width, int height)
{
    Bytes result(static_cast<std::size_t>(width * height));
    auto* dest = reinterpret_cast<Grey*>(result.data());
    OutputOf([&] { image.DownScalePicture<SHIFT, CPixel1fixT<SHIFT>>(dest, width, height); });
    return result;
}

template <typename Sample>
void ExpectAsDefined(const std::vector<Sample>& samples, int components, std::array<int, 4> sizes)
{
    const auto [width, height, newWidth, newHeight] = sizes;
    TestImage image(width, height, components * 8 * static_cast<int>(sizeof(Sample)), samples);
    OutputOf([&, w = newWidth, h = newHeight] { image.DownScaleFix2(w, h); });
    ASSERT_EQ(image.Samples<Sample>(),
              SlowScale(samples, width, height, components, newWidth, newHeight,
                        SlowShift(width, height, newWidth, newHeight)))
        << width << 'x' << height << " to " << newWidth << 'x' << newHeight << " of " << components;
}

}  // namespace

TEST(DownScaleFix2, SmallPicturesByHand)
{
    const Bytes darkened{255, 242, 242, 242, 242, 242, 242, 242, 242};
    const std::tuple<int, int, Bytes, int, int, Bytes, Bytes> rows[] = {
        {2, 2, {10, 11, 10, 11}, 1, 1, {11}, {11}},
        {3, 1, {0, 100, 200}, 2, 1, {33, 167}, {33, 167}},
        {1, 3, {0, 100, 200}, 1, 2, {33, 167}, {33, 167}},
        {7, 7, Bytes(49, 255), 3, 3, Bytes(9, 255), darkened},
        {3, 2, {1, 2, 3, 4, 5, 6}, 3, 2, {1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 6}},
        {2, 1, {0, 90}, 3, 1, {0, 45, 90}, {0, 0, 90}},
        {1, 1, {77}, 3, 3, Bytes(9, 77), Bytes(9, 77)}};
    for (const auto& [width, height, pixels, newWidth, newHeight, fine, coarse] : rows) {
        TestImage image(width, height, 8, pixels);
        EXPECT_EQ(ScaleGreyAt<16>(image, newWidth, newHeight), fine);
        EXPECT_EQ(ScaleGreyAt<2>(image, newWidth, newHeight), coarse);
    }
}

TEST(DownScaleFix2, LimitsOf32BitsAreNoLimits)
{
    TestImage tall(1, 3000000, 8, Bytes(3000000, 200));
    tall.DownScaleFix2(1, 1);
    EXPECT_EQ(tall.Samples(), Bytes{200});
    TestImage wide(70000, 2, 8, Bytes(140000, 9));  // too wide for 16 fraction bits
    wide.DownScaleFix2(70000, 1);
    EXPECT_EQ(wide.Samples(), Bytes(70000, 9));
    TestImage colours(2, 1, 24, Bytes{1, 2, 3, 4, 5, 6});  // so large that the area vanishes
    ASSERT_TRUE(colours.DownScaleFix2(200000, 1000));
    const Bytes middle(colours.mData + 99999 * 3, colours.mData + 100001 * 3);
    EXPECT_EQ(middle, (Bytes{1, 2, 3, 4, 5, 6}));
    const std::pair<std::vector<short>, short> rows[] = {
        {{-1, 0}, 0}, {{-1, -2}, -1}, {{32767, 32767}, 32767}, {{-32768, -32768}, -32768}};
    for (const auto& [samples, scaled] : rows) {
        TestImage image(2, 1, 16, samples);
        image.DownScaleFix2(1, 1);
        EXPECT_EQ(image.Samples<short>(), std::vector<short>{scaled});
    }
}

TEST(DownScaleFix2, PrintsItsLinesAndRefuses)
{
    const std::tuple<int, int, int, bool, const char*> rows[] = {
        {24, 2, 2, true, "ScaleFakt=4\nsizeof(Tpixel)=3\n"},
        {24, 3, 3, true, "ScaleFakt=1.77778\nsizeof(Tpixel)=3\n"},
        {32, 2, 2, true, "sizeof(Tpixel)=4\n"},
        {16, 2, 2, true, "sizeof(Tpixel)=2\n"},
        {8, 3, 2, true, "sizeof(Tpixel)=1\n"},
        {1, 2, 2, false, "***** unsupported bitcount:1\n"},
        {24, 0, 2, false, ""},
        {24, 2, -1, false, ""}};
    for (const auto& row : rows) {
        const auto& [bits, width, height, scaled, output] = row;
        TestImage image(4, 4, bits, Bytes(64, 5));
        const unsigned char* before = image.mData;
        const unsigned char* result = nullptr;
        EXPECT_EQ(OutputOf([&, w = width, h = height] { result = image.DownScaleFix2(w, h); }),
                  output);
        EXPECT_EQ(result != nullptr, scaled) << output;
        EXPECT_EQ(image.mData, scaled ? result : before);
        EXPECT_EQ(std::tuple(image.mWidth, image.mHeight, image.mBits),
                  std::tuple(scaled ? width : 4, scaled ? height : 4, bits));
    }
}

TEST(DownScaleFix2, AFailedAllocationLeavesTheImage)
{
#ifdef __SANITIZE_ADDRESS__
    GTEST_SKIP() << "the sanitizer ends the process instead";
#endif
    TestImage image(4, 4, 24, Bytes(48, 5));
    EXPECT_THROW(image.DownScaleFix2(2147483647, 2147483647), std::bad_alloc);
    EXPECT_EQ(image.Samples(), Bytes(48, 5));
}

TEST(DownScaleFix2, EqualsTheDefinitionOnAllSizes)
{
    // Every precision from both sides of its threshold, many full rows, then random sizes.
    std::vector<std::array<int, 4>> sizes = {{16, 16, 4, 4}, {63, 64, 16, 16}, {64, 64, 4, 4},
                                             {63, 64, 4, 4}, {64, 64, 2, 2},   {63, 64, 2, 2},
                                             {9, 700, 1, 1}, {3, 1200, 2, 2},  {300, 2, 2, 7}};
    std::mt19937 random(20);
    const auto upTo = [&random](unsigned limit) { return static_cast<int>(random() % limit) + 1; };
    for (int i = 0; i < 300; ++i)
        sizes.push_back({upTo(90), upTo(90), upTo(i % 2 ? 100 : 9), upTo(i % 3 ? 100 : 9)});
    for (const auto& size : sizes) {
        for (const int components : {1, 3, 4})
            ExpectAsDefined(NoisyBytes(size[0] * size[1] * components), components, size);
        std::vector<short> samples;
        for (int i = 0; i < size[0] * size[1]; ++i)
            samples.push_back(static_cast<short>(random()));
        ExpectAsDefined(samples, 1, size);
    }
}

TEST(DownScaleFix2, AnyPixelInAnyOrder)
{
    constexpr int kSide = 40, kNewSide = 11, kPixels = kNewSide * kNewSide;
    const Bytes pixels = NoisyBytes(kSide * kSide);
    TestImage image(kSide, kSide, 8, pixels);
    const Bytes expected = SlowScale(pixels, kSide, kSide, 1, kNewSide, kNewSide, 8);
    SScaleParams<8, Grey> params;
    params.mSrcWidth = params.mSrcHeight = kSide;
    params.mStepX = params.mStepY = CFixT<8>(kSide, kNewSide);
    params.mArea = params.mStepX * params.mStepY;
    for (int i = 0; i < kPixels; ++i) {
        const int at = i * 50 % kPixels;
        Grey pixel{};
        params.mDest = &pixel;
        image.GetScaledPicturePixel<8, CPixel1fixT<8>>(&params, at % kNewSide, at / kNewSide);
        ASSERT_EQ(pixel.mSamples[0], expected[static_cast<std::size_t>(at)]) << at;
    }
}
