#include "tests/support/TestSupport.h"

using testing::ElementsAre;

TEST(SwapRedBlue, ExchangesTheFirstAndThirdByteOrRefuses)
{
    TestImage rgb({1, 2, 24}, {1, 2, 3, 4, 5, 6});
    TestImage rgba({1, 2, 32}, {1, 2, 3, 4, 5, 6, 7, 8});
    TestImage deep({2, 1, 16}, {1, 2, 3, 4});
    rgb.SwapRedBlue();
    rgba.SwapRedBlue();
    const std::string output = OutputOf([&] { deep.SwapRedBlue(); });
    EXPECT_THAT(rgb.Pixels(), ElementsAre(3, 2, 1, 6, 5, 4));
    EXPECT_THAT(rgba.Pixels(), ElementsAre(3, 2, 1, 4, 7, 6, 5, 8));
    EXPECT_THAT(deep.Pixels(), ElementsAre(1, 2, 3, 4));
    EXPECT_EQ(output, "***** CGraflib::SwapRedBlue: not 24 or 32 bit\n");
}

TEST(ConvertPal, LooksUpColoursAndAlphasFrom0To255)
{
    CRgb colours[256] = {{7, 8, 9}};
    unsigned char alphas[256] = {100};
    colours[255] = {1, 2, 3};
    alphas[255] = 200;
    TestImage rgb({2, 1, 8}, {255, 0});
    TestImage rgba({2, 1, 8}, {255, 0});
    rgb.ConvertPalToRGB(colours);
    rgba.ConvertPalToRGBA(colours, alphas);
    EXPECT_THAT(rgb.Pixels(), ElementsAre(1, 2, 3, 7, 8, 9));
    EXPECT_THAT(rgba.Pixels(), ElementsAre(1, 2, 3, 200, 7, 8, 9, 100));
}
