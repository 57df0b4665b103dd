#include "tests/support/TestSupport.h"

using testing::Each;
using testing::ElementsAre;
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
}

TEST(SeparateAlpha, TakesNullForEitherPictureAndLeavesOldBuffersToTheCaller)
{
    unsigned char old[] = {9};
    TestImage image({1, 1, 32}, {1, 2, 3, 4}), color, alpha;
    color.mData = old;
    OutputOf([&] { image.SeparateAlpha(&color, nullptr); });
    OutputOf([&] { image.SeparateAlpha(nullptr, &alpha); });
    EXPECT_THAT(color.Pixels(), ElementsAre(1, 2, 3));
    EXPECT_THAT(alpha.Pixels(), ElementsAre(4));
}

TEST(SeparateAlpha, RefusesOtherDepths)
{
    TestImage image({1, 1, 24}, {1, 2, 3}), color, alpha;
    bool isDone = true;
    const std::string output = OutputOf([&] { isDone = image.SeparateAlpha(&color, &alpha); });
    EXPECT_FALSE(isDone);
    EXPECT_EQ(output, "***** CGraflib::SeparateAlpha Bits=24\n");
    EXPECT_EQ(color.mData, nullptr);
}

// --- InterleaveAlpha -----------------------------------------------------------------------------

TEST(InterleaveAlpha, GivesAnAlphaTo24BitsAndReplacesThatOf32)
{
    const std::pair<int, Bytes> rows[] = {{24, {1, 2, 3, 5, 6, 7}}, {32, {1, 2, 3, 9, 5, 6, 7, 9}}};
    for (const auto& [bits, pixels] : rows) {
        TestImage image({1, 2, bits}, pixels);
        TestImage alpha({1, 2, 8}, {4, 8});
        const bool isDone = image.InterleaveAlpha(&alpha);
        EXPECT_TRUE(isDone) << bits;
        EXPECT_THAT(image.Pixels(), ElementsAre(1, 2, 3, 4, 5, 6, 7, 8)) << bits;
    }
}

TEST(InterleaveAlpha, RefusesOtherDepthsAndSizes)
{
    const std::pair<Shape, Shape> rows[] = {{{1, 2, 16}, {1, 2, 8}},
                                            {{1, 2, 24}, {1, 2, 16}},
                                            {{1, 2, 24}, {2, 2, 8}},
                                            {{1, 2, 24}, {1, 1, 8}}};
    for (const auto& [imageShape, alphaShape] : rows) {
        TestImage image(imageShape, Bytes(6, 1));
        TestImage alpha(alphaShape, Bytes(4, 2));
        EXPECT_FALSE(image.InterleaveAlpha(&alpha)) << PrintToString(alphaShape);
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
    const std::tuple<const char*, Shape, Shape, const char*, const char*> rows[] = {
        {"nothing fits", {1, 2, 32}, {1, 3, 24}, "Datei muss 24 bit sein", "6"},
        {"no alpha", {1, 2, 24}, {1, 3, 24}, "Datei muss 32 bit sein", "5"},
        {"too high", {1, 2, 24}, {1, 3, 32}, "Groesse der Bitmaps verschieden", "4"},
        {"too wide", {1, 2, 24}, {2, 2, 32}, "Groesse der Bitmaps verschieden", "4"}};
    for (const auto& [name, shape, overlayShape, text, code] : rows) {
        TestImage image(shape, Bytes(8, 1));
        TestImage overlay(overlayShape, Bytes(16, 255));
        const std::string output = OutputOf([&] { image.CombineWithAlpha(&overlay); });
        EXPECT_EQ(output,
                  std::string("GLIB error: ") + text + "\nErrors: " + code + " CombineWithAlpha")
            << name;
        EXPECT_THAT(image.Pixels(), Each(1)) << name;
    }
}

// --- Planes --------------------------------------------------------------------------------------

TEST(Bitplanes, HoldAComponentEachAndMakeAPictureAgain)
{
    TestImage image({2, 1, 24}, {'r', 'g', 'b', 'R', 'G', 'B'});
    TestImage joined({2, 1, 24}, Bytes(6));
    char* planes[3] = {};
    image.SplitBitplanes(&planes[0], &planes[1], &planes[2]);
    joined.JoinBitplanes(planes[0], planes[1], planes[2]);
    EXPECT_EQ(std::string(planes[0], 2), "rR");
    EXPECT_EQ(std::string(planes[1], 2), "gG");
    EXPECT_EQ(std::string(planes[2], 2), "bB");
    EXPECT_EQ(joined.Pixels(), image.Pixels());
    for (const char* plane : planes)
        delete[] plane;
}

TEST(Bitplanes, OtherDepthsDoNothing)
{
    TestImage image({1, 1, 32}, {1, 2, 3, 4});
    image.SplitBitplanes(nullptr, nullptr, nullptr);
    image.JoinBitplanes(nullptr, nullptr, nullptr);
    EXPECT_THAT(image.Pixels(), ElementsAre(1, 2, 3, 4));
}
