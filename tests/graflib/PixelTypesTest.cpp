#include "graflib/PixelTypes.h"

#include <gtest/gtest.h>

#include <array>

using Rgb = CPixel24T<unsigned char>;
using Rgba = CPixel32T<unsigned char>;
using Values = std::array<int, 4>;

static Values ValuesOf(const Rgb& pixel)
{
    return {pixel.mRed, pixel.mGreen, pixel.mBlue, 0};
}

TEST(PixelTypes, MixPixelCutsEachQuotient)
{
    const std::tuple<Rgb, Rgba, Values> rows[] = {
        {{200, 200, 200}, {10, 10, 10, 0}, {200, 200, 200}},
        {{200, 200, 200}, {10, 11, 12, 255}, {10, 11, 12}},
        {{100, 0, 255}, {200, 255, 0, 100}, {138, 100, 155}},
        {{1, 1, 1}, {1, 1, 1, 128}, {0, 0, 0}},
        {{255, 255, 255}, {255, 255, 255, 1}, {255, 255, 255}},
        {{0, 0, 0}, {255, 255, 255, 128}, {128, 128, 128}}};
    for (auto [pixel, above, mixed] : rows) {
        pixel.MixPixel(&above);
        EXPECT_EQ(ValuesOf(pixel), mixed);
    }
}

TEST(PixelTypes, AssignmentDropsAlphaAndSwapExchangesRedAndBlue)
{
    Rgba wide{1, 2, 3, 4};
    Rgb narrow{};
    narrow = wide;
    EXPECT_EQ(ValuesOf(narrow), (Values{1, 2, 3, 0}));
    narrow.SwapRedBlue();
    wide.SwapRedBlue();
    EXPECT_EQ(ValuesOf(narrow), (Values{3, 2, 1, 0}));
    EXPECT_TRUE(wide.mRed == 3 && wide.mGreen == 2 && wide.mBlue == 1 && wide.mAlpha == 4);
}
