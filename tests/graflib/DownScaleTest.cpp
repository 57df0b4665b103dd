#include "tests/support/TestSupport.h"

namespace {

Bytes Scaled(const Shape& shape, const Bytes& pixels, int width, int height)
{
    TestImage image(shape, pixels);
    image.DownScale(width, height);
    return image.Pixels();
}

void ExpectRefused(const Shape& shape, const Bytes& pixels, int width, int height)
{
    SCOPED_TRACE(testing::PrintToString(shape));
    TestImage image(shape, pixels);
    const unsigned char* const before = image.mData;
    const unsigned char* const result = image.DownScale(width, height);
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(image.mData, before);
    EXPECT_EQ(image.GetShape(), shape);
}

}  // namespace

TEST(DownScale, CutsTheMeansOfSmallPictures)
{
    EXPECT_EQ(Scaled({2, 2, 8}, {10, 11, 10, 11}, 1, 1), Bytes({10}));
    EXPECT_EQ(Scaled({3, 1, 8}, {0, 100, 200}, 2, 1), Bytes({33, 166}));
    EXPECT_EQ(Scaled({2, 1, 8}, {0, 90}, 3, 1), Bytes({0, 45, 89}));
    EXPECT_EQ(Scaled({1, 2, 24}, {10, 20, 30, 50, 60, 70}, 1, 1), Bytes({30, 40, 50}));
    EXPECT_EQ(Scaled({2, 1, 16}, Shorts({255, 258}), 1, 1), Shorts({256}));
    EXPECT_EQ(Scaled({2, 1, 16}, Shorts({-1, 0}), 1, 1), Shorts({0}));
    EXPECT_EQ(Scaled({2, 1, 16}, Shorts({-1, -2}), 1, 1), Shorts({-1}));
}

TEST(DownScale, SumsLongRowsAndColumns)
{
    const Bytes ramp{0, 0, 0, 1, 2, 3, 2, 4, 6, 3, 6, 9, 4, 8, 12, 26, 28, 30};
    EXPECT_EQ(Scaled({6, 1, 24}, ramp, 1, 1), Bytes({6, 8, 10}));
    EXPECT_EQ(Scaled({260, 1, 8}, Bytes(260, 255), 1, 1), Bytes({255}));
    EXPECT_EQ(Scaled({1, 3000000, 8}, Bytes(3000000, 255), 1, 1), Bytes({255}));
}

TEST(DownScale, DarkensWhiteWhereSumsAreNotExact)
{
    EXPECT_EQ(Scaled({7, 7, 8}, Bytes(49, 255), 3, 3),
              Bytes({255, 254, 255, 255, 254, 255, 255, 255, 255}));
}

TEST(DownScale, ReturnsTheRecordsNewBuffer)
{
    TestImage image({4, 4, 24}, Bytes(48));
    const unsigned char* const result = image.DownScale(2, 3);
    EXPECT_EQ(result, image.mData);
    EXPECT_EQ(image.GetShape(), Shape(2, 3, 24));
}

TEST(DownScale, RefusesWhatCannotBeScaled)
{
    ExpectRefused({1, 2, 32}, Bytes(8), 1, 1);
    ExpectRefused({2, 1, 8}, {}, 1, 1);
    ExpectRefused({0, 1, 8}, Bytes(1), 1, 1);
    ExpectRefused({2, 1, 8}, Bytes(2), 0, 1);
    ExpectRefused({1, 2, 8}, Bytes(2), 1, -1);
}
