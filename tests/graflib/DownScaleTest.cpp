#include "tests/support/TestSupport.h"

TEST(DownScale, SmallPicturesByHand)
{
    const Bytes ramp{0, 0, 0, 1, 2, 3, 2, 4, 6, 3, 6, 9, 4, 8, 12, 26, 28, 30};
    const struct
    {
        const char* mName;
        Shape mShape;
        Bytes mPixels;
        Shape mScaled;
        Bytes mExpected;
    } rows[] = {
        {"halves are cut", {2, 2, 8}, {10, 11, 10, 11}, {1, 1, 8}, {10}},
        {"3 columns to 2", {3, 1, 8}, {0, 100, 200}, {2, 1, 8}, {33, 166}},
        {"2 columns to 3", {2, 1, 8}, {0, 90}, {3, 1, 8}, {0, 45, 89}},
        {"white loses",
         {7, 7, 8},
         Bytes(49, 255),
         {3, 3, 8},
         {255, 254, 255, 255, 254, 255, 255, 255, 255}},
        {"260 columns", {260, 1, 8}, Bytes(260, 255), {1, 1, 8}, {255}},
        {"millions of rows", {1, 3000000, 8}, Bytes(3000000, 255), {1, 1, 8}, {255}},
        {"24 bits, columns", {6, 1, 24}, ramp, {1, 1, 24}, {6, 8, 10}},
        {"24 bits, rows", {1, 2, 24}, {10, 20, 30, 50, 60, 70}, {1, 1, 24}, {30, 40, 50}},
        {"16 bits", {2, 1, 16}, Shorts({255, 258}), {1, 1, 16}, Shorts({256})},
        {"-0.5 goes to 0", {2, 1, 16}, Shorts({-1, 0}), {1, 1, 16}, Shorts({0})},
        {"-1.5 goes to -1", {2, 1, 16}, Shorts({-1, -2}), {1, 1, 16}, Shorts({-1})},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mName);
        const auto [width, height, bits] = row.mScaled;
        TestImage image(row.mShape, row.mPixels);
        const unsigned char* const result = image.DownScale(width, height);
        EXPECT_EQ(result, image.mData);
        EXPECT_EQ(image.GetShape(), row.mScaled);
        EXPECT_EQ(image.Pixels(), row.mExpected);
    }
}

TEST(DownScale, RefusesWhatCannotBeScaled)
{
    const struct
    {
        const char* mName;
        Shape mShape;
        Bytes mPixels;
        int mWidth;
        int mHeight;
    } rows[] = {
        {"32 bits", {1, 2, 32}, Bytes(8), 1, 1},
        {"no buffer", {2, 1, 8}, {}, 1, 1},
        {"no columns", {0, 1, 8}, Bytes(1), 1, 1},
        {"target width 0", {2, 1, 8}, Bytes(2), 0, 1},
        {"target height -1", {1, 2, 8}, Bytes(2), 1, -1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mName);
        TestImage image(row.mShape, row.mPixels);
        const unsigned char* const before = image.mData;
        const unsigned char* const result = image.DownScale(row.mWidth, row.mHeight);
        EXPECT_EQ(result, nullptr);
        EXPECT_EQ(image.mData, before);
        EXPECT_EQ(image.GetShape(), row.mShape);
    }
}
