#include "tests/support/TestSupport.h"

TEST(DownScaleLine2, CutsTheMeansOfBlocksInPlace)
{
    const std::tuple<const char*, Shape, int, Bytes, Bytes> rows[] = {
        {"odd width", {5, 1, 8}, 5, {1, 2, 10, 20, 9, 3, 5, 11, 21, 9}, {2, 15}},
        {"16 bits", {2, 1, 16}, 2, Shorts({-1, 0, 0, 0}), Shorts({16383})},
        {"24 bits",
         {4, 1, 24},
         12,
         {1, 2, 3, 3, 4, 5, 11, 12, 13, 13, 14, 15, 5, 6, 7, 7, 8, 9, 15, 16, 17, 17, 18, 19},
         {4, 5, 6, 14, 15, 16}},
        {"32 bits",
         {2, 1, 32},
         9,
         {1, 2, 3, 4, 3, 4, 5, 6, 99, 5, 6, 7, 8, 7, 8, 9, 10, 99},
         {4, 5, 6, 7}}};
    for (const auto& [name, shape, offset, source, half] : rows) {
        TestImage image(shape);
        Bytes lines = source;
        image.DownScaleLine2(lines.data(), lines.data(), offset);
        lines.resize(half.size());
        EXPECT_EQ(lines, half) << name;
    }
}

TEST(DownScaleLine2, HalvesOneComponentWhereThereAreSeveral)
{
    // Bits, component and offset, and what becomes of {99, 99, 99}.
    const std::tuple<int, int, int, Bytes> rows[] = {{24, 1, 6, {99, 10, 99}},
                                                     {16, 7, 2, {1, 10, 99}},
                                                     {8, 7, 2, {5, 99, 99}},
                                                     {1, 0, 2, {99, 99, 99}}};
    for (const auto& [bits, component, offset, expected] : rows) {
        TestImage image({2, 1, bits});
        Bytes lines{1, 10, 1, 10, 1, 10, 1, 10, 3, 1, 21, 3};
        Bytes half(3, 99);
        image.DownScaleLine2(lines.data(), half.data(), 2, offset, component);
        EXPECT_EQ(half, expected) << bits << " bits";
    }
}

TEST(DownScaleLine2, RefusesOtherDepths)
{
    TestImage image({2, 1, 1});
    Bytes lines(4, 1);
    const std::string output =
        OutputOf([&] { image.DownScaleLine2(lines.data(), lines.data(), 2); });
    EXPECT_EQ(output, "***** Bitcount of 1 not supported in CGraflib::DownScaleLine2\n");
}
