#include "tests/support/TestSupport.h"

using testing::ElementsAre;

TEST(SwapRedBlue, ExchangesTheFirstAndThirdByteOrRefuses)
{
    const std::string refusal = "***** CGraflib::SwapRedBlue: not 24 or 32 bit\n";
    const struct
    {
        Shape mShape;
        Bytes mPixels;
        Bytes mSwapped;
        std::string mOutput;
    } rows[] = {
        {{1, 2, 24}, {1, 2, 3, 4, 5, 6}, {3, 2, 1, 6, 5, 4}, ""},
        {{1, 2, 32}, {1, 2, 3, 4, 5, 6, 7, 8}, {3, 2, 1, 4, 7, 6, 5, 8}, ""},
        {{3, 1, 16}, {1, 2, 3, 4, 5, 6}, {1, 2, 3, 4, 5, 6}, refusal},
        {{3, 1, 8}, {1, 2, 3}, {1, 2, 3}, refusal},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.mShape));
        TestImage image(row.mShape, row.mPixels);
        const std::string output = OutputOf([&] { image.SwapRedBlue(); });
        EXPECT_EQ(image.Pixels(), row.mSwapped);
        EXPECT_EQ(output, row.mOutput);
    }
}

/// A palette whose first and last colours have values, and such alphas.
struct PaletteTest : testing::Test
{
    PaletteTest()
    {
        mColours[0] = {7, 8, 9};
        mColours[255] = {1, 2, 3};
        mAlphas[0] = 100;
        mAlphas[255] = 200;
    }

    CRgb mColours[256] = {};
    unsigned char mAlphas[256] = {};
};

TEST_F(PaletteTest, ConvertPalToRgbLooksUpTheColours)
{
    TestImage image({2, 1, 8}, {255, 0});
    image.ConvertPalToRGB(mColours);
    EXPECT_EQ(image.GetShape(), Shape(2, 1, 24));
    EXPECT_THAT(image.Pixels(), ElementsAre(1, 2, 3, 7, 8, 9));
}

TEST_F(PaletteTest, ConvertPalToRgbaLooksUpTheAlphasToo)
{
    TestImage image({2, 1, 8}, {255, 0});
    image.ConvertPalToRGBA(mColours, mAlphas);
    EXPECT_EQ(image.GetShape(), Shape(2, 1, 32));
    EXPECT_THAT(image.Pixels(), ElementsAre(1, 2, 3, 200, 7, 8, 9, 100));
}
