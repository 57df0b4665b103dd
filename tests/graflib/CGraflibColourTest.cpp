#include "tests/TestSupport.h"

TEST(CGraflibColour, YflipReversesRows)
{
    for (const int bits : {8, 16, 24, 32}) {
        for (const int height : {0, 1, 3, 4}) {
            const Bytes pixels = NoisyBytes(5 * height * bits / 8);
            TestImage image(5, height, bits, pixels);
            const auto row = static_cast<std::ptrdiff_t>(image.RowBytes());
            Bytes reversed;
            for (auto end = pixels.end(); end != pixels.begin(); end -= row)
                reversed.insert(reversed.end(), end - row, end);
            image.Yflip();
            EXPECT_EQ(image.Samples(), reversed) << bits << " bits, height " << height;
            image.Yflip();
            EXPECT_EQ(image.Samples(), pixels);
        }
    }
}

TEST(CGraflibColour, SwapRedBlueTakesColoursOnly)
{
    const std::tuple<int, Bytes, Bytes> rows[] = {
        {24, {10, 20, 30, 1, 2, 3}, {30, 20, 10, 3, 2, 1}},
        {32, {10, 20, 30, 40, 1, 2, 3, 4}, {30, 20, 10, 40, 3, 2, 1, 4}},
        {8, {1, 2}, {1, 2}},
        {16, {1, 2, 3, 4}, {1, 2, 3, 4}}};
    for (const auto& [bits, pixels, swapped] : rows) {
        TestImage image(1, 2, bits, pixels);
        EXPECT_EQ(OutputOf([&] { image.SwapRedBlue(); }),
                  bits < 24 ? "***** CGraflib::SwapRedBlue: not 24 or 32 bit\n" : "");
        EXPECT_EQ(image.Samples(), swapped);
    }
}

TEST(CGraflibColour, PalettesExpandIndices)
{
    CRgb palette[256] = {};
    unsigned char alpha[256] = {};
    palette[0] = CRgb{9, 9, 9};
    palette[255] = CRgb{1, 2, 3};
    alpha[255] = 200;
    TestImage rgb(2, 1, 8, Bytes{255, 0}), rgba(2, 1, 8, Bytes{255, 0}), empty(0, 4, 8, Bytes{});
    rgb.ConvertPalToRGB(palette);
    rgba.ConvertPalToRGBA(palette, alpha);
    empty.ConvertPalToRGB(palette);
    EXPECT_EQ(rgb.Samples(), (Bytes{1, 2, 3, 9, 9, 9}));
    EXPECT_EQ(rgba.Samples(), (Bytes{1, 2, 3, 200, 9, 9, 9, 0}));
    EXPECT_TRUE(rgb.mBits == 24 && rgba.mBits == 32 && empty.mBits == 24);
}
