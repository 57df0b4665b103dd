#include "tests/support/TestSupport.h"

TEST(CGraflibColour, RowsColoursAndIndicesChange)
{
    const std::string refusal = "***** CGraflib::SwapRedBlue: not 24 or 32 bit\n";
    const std::tuple<Shape, Bytes, Bytes, Bytes> rows[] = {
        {{1, 2, 24}, {1, 2, 3, 4, 5, 6}, {4, 5, 6, 1, 2, 3}, {6, 5, 4, 3, 2, 1}},
        {{1, 2, 32}, {1, 2, 3, 4, 5, 6, 7, 8}, {5, 6, 7, 8, 1, 2, 3, 4}, {7, 6, 5, 8, 3, 2, 1, 4}},
        {{1, 3, 16}, {1, 2, 3, 4, 5, 6}, {5, 6, 3, 4, 1, 2}, {5, 6, 3, 4, 1, 2}},
        {{1, 1, 8}, {1}, {1}, {1}}};
    for (const auto& [shape, pixels, flipped, swapped] : rows) {
        TestImage image(shape, pixels);
        image.Yflip();
        EXPECT_EQ(image.Pixels(), flipped);
        EXPECT_EQ(OutputOf([&] { image.SwapRedBlue(); }), image.mBits < 24 ? refusal : "");
        EXPECT_EQ(image.Pixels(), swapped);
    }
    CRgb palette[256] = {{9, 9, 9}};
    palette[255] = {1, 2, 3};
    unsigned char alpha[256] = {};
    alpha[255] = 200;
    for (const int bits : {8, 16}) {  // the first bytes are indices, whatever the depth
        TestImage rgb({2, 1, bits}, {255, 0, 7, 7}), rgba({2, 1, bits}, {255, 0, 7, 7});
        rgb.ConvertPalToRGB(palette);
        rgba.ConvertPalToRGBA(palette, alpha);
        EXPECT_EQ(rgb.Pixels(), Bytes({1, 2, 3, 9, 9, 9}));
        EXPECT_EQ(rgba.Pixels(), Bytes({1, 2, 3, 200, 9, 9, 9, 0}));
    }
    TestImage image({1, 1, 8}, {1});
    {
        const CPixelOwner owner(&image);
    }
    EXPECT_EQ(image.mData, nullptr);
    for (const bool append : {true, false}) {
        image.CGraflib::SetAppendMode(append);
        EXPECT_EQ(image.mAppendMode, append);
    }
}
