#include <cstring>

#include "graflib/FixedPointTypes.h"
#include "tests/TestSupport.h"
#include "tests/graflib/SlowScaler.h"

template <typename Sample>
static void ExpectAsDefined(const Sizes& sizes, int components)
{
    const auto [width, height, newWidth, newHeight] = sizes;
    const int bytes = components * static_cast<int>(sizeof(Sample));
    const Bytes noise = Noise(width * height * bytes);
    const auto* source = reinterpret_cast<const Sample*>(noise.data());
    TestImage image({width, height, bytes * 8}, noise);
    OutputOf([&] { ASSERT_TRUE(image.DownScaleFix2(sizes[2], sizes[3])); });
    const std::vector<Sample> expected =
        SlowScale<Sample>({source, source + width * height * components}, width, height, components,
                          newWidth, newHeight, SlowShift(width, height, newWidth, newHeight));
    ASSERT_EQ(std::memcmp(image.mData, expected.data(), image.Bytes()), 0)
        << testing::PrintToString(sizes) << " of " << bytes << " bytes";
}

TEST(DownScaleFix2, EqualsTheDefinition)
{
    // Every precision from both sides of its threshold, many full rows, a side without room for 16
    // fraction bits.
    const std::vector<Sizes> sizes = {
        {80, 180, 30, 30}, {63, 64, 16, 16}, {64, 144, 6, 6}, {63, 64, 4, 4}, {64, 144, 3, 3},
        {63, 64, 2, 2},    {9, 700, 1, 1},   {3, 1200, 2, 2}, {300, 2, 2, 7}, {70000, 2, 35000, 1}};
    for (const Sizes& size : WithRandomSizes(sizes)) {
        for (const int components : {1, 3, 4})
            ExpectAsDefined<unsigned char>(size, components);
        ExpectAsDefined<short>(size, 1);
    }
}

TEST(DownScaleFix2, EveryPrecisionAndPixelOnItsOwn)
{
    using Grey = SPixel1i<unsigned char>;
    Bytes pixels(100);
    auto* grey = reinterpret_cast<Grey*>(pixels.data());
    TestImage white({7, 7, 8}, Bytes(49, 255)), image({41, 41, 8}, Noise(41 * 41));
    white.DownScalePicture<2, CPixel1fixT<2>>(grey, 3, 3);
    EXPECT_EQ(Bytes(pixels.data(), pixels.data() + 9),
              Bytes({255, 242, 242, 242, 242, 242, 242, 242, 242}));
    SScaleParams<8, Grey> params;
    params.mSrcWidth = params.mSrcHeight = 41;
    params.mStepX = params.mStepY = CFixT<8>(41, 10);
    params.mArea = params.mStepX * params.mStepY;
    for (int at = 99; at >= 0; --at) {
        params.mDest = grey + at;
        image.GetScaledPicturePixel<8, CPixel1fixT<8>>(&params, at % 10, at / 10);
    }
    image.DownScaleFix2(10, 10);
    EXPECT_EQ(image.Pixels(), pixels);
    TestImage tiny({2, 1, 8}, {1, 2});
    tiny.DownScaleFix2(1001, 200);  // the area of a pixel vanishes
    EXPECT_TRUE(tiny.mData[499] == 1 && tiny.mData[500] == 2);
    tiny.mBits = 1;
    EXPECT_EQ(OutputOf([&] { tiny.DownScaleFix2(1, 1); }), "***** unsupported bitcount:1\n");
}
