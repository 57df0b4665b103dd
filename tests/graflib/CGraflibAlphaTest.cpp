#include "tests/support/TestSupport.h"

using testing::Each;
using testing::ElementsAre;
using testing::EndsWith;
using testing::PrintToString;

// --- SeparateAlpha -------------------------------------------------------------------------------

TEST(SeparateAlpha, CopiesColoursAndAlphas)
{
    TestImage image({1, 2, 32}, {1, 2, 3, 4, 5, 6, 7, 8}), color, alpha;
    bool isDone = false;
    const std::string output = OutputOf([&] { isDone = image.SeparateAlpha(&color, &alpha); });
    EXPECT_TRUE(isDone);
    EXPECT_EQ(output,
              "COLOR Width=1 Height=2 mBits=24 Data != NULL\n"
              "ALPHA Width=1 Height=2 mBits=8 Data != NULL\n");
    EXPECT_THAT(color.Pixels(), ElementsAre(1, 2, 3, 5, 6, 7));
    EXPECT_THAT(alpha.Pixels(), ElementsAre(4, 8));
    EXPECT_THAT(image.Pixels(), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
}

TEST(SeparateAlpha, TakesNullForEitherPicture)
{
    TestImage image({1, 1, 32}, {1, 2, 3, 4}), color, alpha;
    OutputOf([&] { image.SeparateAlpha(&color, nullptr); });
    OutputOf([&] { image.SeparateAlpha(nullptr, &alpha); });
    EXPECT_THAT(color.Pixels(), ElementsAre(1, 2, 3));
    EXPECT_THAT(alpha.Pixels(), ElementsAre(4));
}

TEST(SeparateAlpha, LeavesOldBuffersToTheCaller)
{
    TestImage image({1, 1, 32}, {1, 2, 3, 4});
    TestImage color({1, 1, 24}, {9, 9, 9});
    TestImage alpha({1, 1, 8}, {9});
    const std::unique_ptr<unsigned char[]> oldColor(color.mData);
    const std::unique_ptr<unsigned char[]> oldAlpha(alpha.mData);
    OutputOf([&] { image.SeparateAlpha(&color, &alpha); });
    EXPECT_NE(color.mData, oldColor.get());
    EXPECT_NE(alpha.mData, oldAlpha.get());
    EXPECT_EQ(oldColor[0], 9);
    EXPECT_EQ(oldAlpha[0], 9);
}

TEST(SeparateAlpha, RefusesOtherDepths)
{
    TestImage image({1, 1, 24}, {1, 2, 3}), color, alpha;
    bool isDone = true;
    const std::string output = OutputOf([&] { isDone = image.SeparateAlpha(&color, &alpha); });
    EXPECT_FALSE(isDone);
    EXPECT_EQ(output, "***** CGraflib::SeparateAlpha Bits=24\n");
    EXPECT_EQ(color.mData, nullptr);
    EXPECT_EQ(alpha.mData, nullptr);
}

// --- InterleaveAlpha -----------------------------------------------------------------------------

TEST(InterleaveAlpha, GivesAnAlphaTo24Bits)
{
    TestImage image({1, 2, 24}, {1, 2, 3, 5, 6, 7});
    TestImage alpha({1, 2, 8}, {4, 8});
    const bool isDone = image.InterleaveAlpha(&alpha);
    EXPECT_TRUE(isDone);
    EXPECT_EQ(image.GetShape(), Shape(1, 2, 32));
    EXPECT_THAT(image.Pixels(), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
}

TEST(InterleaveAlpha, ReplacesTheAlphaOf32Bits)
{
    TestImage image({1, 2, 32}, {1, 2, 3, 9, 5, 6, 7, 9});
    TestImage alpha({1, 2, 8}, {4, 8});
    const bool isDone = image.InterleaveAlpha(&alpha);
    EXPECT_TRUE(isDone);
    EXPECT_THAT(image.Pixels(), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8));
}

TEST(InterleaveAlpha, RefusesOtherDepthsAndSizes)
{
    const std::pair<Shape, Shape> imagesAndAlphas[] = {
        {{1, 2, 8}, {1, 2, 8}},  {{1, 2, 16}, {1, 2, 8}}, {{1, 2, 24}, {1, 2, 16}},
        {{1, 2, 24}, {2, 2, 8}}, {{1, 2, 24}, {1, 1, 8}},
    };
    for (const auto& [imageShape, alphaShape] : imagesAndAlphas) {
        SCOPED_TRACE(PrintToString(imageShape) + " and " + PrintToString(alphaShape));
        TestImage image(imageShape, Bytes(6, 1));
        TestImage alpha(alphaShape, Bytes(4, 2));
        const bool isDone = image.InterleaveAlpha(&alpha);
        EXPECT_FALSE(isDone);
        EXPECT_EQ(image.GetShape(), imageShape);
        EXPECT_THAT(image.Pixels(), Each(1));
    }
}

// --- CombineWithAlpha ----------------------------------------------------------------------------

TEST(CombineWithAlpha, BlendsEveryPixelAndCutsEachQuotient)
{
    // Transparent, opaque, in between, and with both quotients below 1.
    TestImage image({2, 2, 24}, {9, 9, 9, 9, 9, 9, 100, 0, 255, 1, 1, 1});
    TestImage overlay({2, 2, 32}, {7, 8, 7, 0, 1, 2, 3, 255, 200, 255, 0, 100, 1, 1, 1, 128});
    image.CombineWithAlpha(&overlay);
    EXPECT_THAT(image.Pixels(), ElementsAre(9, 9, 9, 1, 2, 3, 138, 100, 155, 0, 0, 0));
}

TEST(CombineWithAlpha, ThrowsForTheFirstConditionThatIsNotMet)
{
    const struct
    {
        const char* mName;
        Shape mImage;
        Shape mOverlay;
        int mCode;
    } rows[] = {
        {"nothing fits", {1, 2, 32}, {1, 3, 24}, GLIB_ERR_NOT24BIT},
        {"overlay without alpha", {1, 2, 24}, {1, 3, 24}, GLIB_ERR_NOT32BIT},
        {"overlay too high", {1, 2, 24}, {1, 3, 32}, GLIB_ERR_SIZE},
        {"overlay too wide", {1, 2, 24}, {2, 2, 32}, GLIB_ERR_SIZE},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mName);
        TestImage image(row.mImage, Bytes(8, 1));
        TestImage overlay(row.mOverlay, Bytes(16, 255));
        const std::string output = OutputOf([&] { image.CombineWithAlpha(&overlay); });
        EXPECT_THAT(output, EndsWith("Errors: " + std::to_string(row.mCode) + " CombineWithAlpha"));
        EXPECT_THAT(image.Pixels(), Each(1));
    }
}

// --- Planes --------------------------------------------------------------------------------------

TEST(SplitBitplanes, MakesAnArrayOfEachComponent)
{
    TestImage image({2, 1, 24}, {'r', 'g', 'b', 'R', 'G', 'B'});
    char* red = nullptr;
    char* green = nullptr;
    char* blue = nullptr;
    image.SplitBitplanes(&red, &green, &blue);
    EXPECT_EQ(std::string(red, 2), "rR");
    EXPECT_EQ(std::string(green, 2), "gG");
    EXPECT_EQ(std::string(blue, 2), "bB");
    delete[] red;
    delete[] green;
    delete[] blue;
}

TEST(JoinBitplanes, MakesAPictureOfThreeArrays)
{
    TestImage image({2, 1, 24}, Bytes(6));
    image.JoinBitplanes("rR", "gG", "bB");
    EXPECT_THAT(image.Pixels(), ElementsAre('r', 'g', 'b', 'R', 'G', 'B'));
}

TEST(Bitplanes, OtherDepthsDoNothing)
{
    TestImage image({1, 1, 32}, {1, 2, 3, 4});
    image.SplitBitplanes(nullptr, nullptr, nullptr);
    image.JoinBitplanes(nullptr, nullptr, nullptr);
    EXPECT_THAT(image.Pixels(), ElementsAre(1, 2, 3, 4));
}
