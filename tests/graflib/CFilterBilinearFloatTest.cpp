#include "graflib/CFilterBilinearFloat.h"

#include <random>

#include "tests/TestSupport.h"

namespace {

template <typename Sample>
std::vector<Sample> Filter(const std::vector<Sample>& source, int width, int height, int newWidth,
                           int newHeight, int components = 1, void (*progress)() = nullptr)
{
    CFilterBilinearFloat<Sample, float> filter;
    std::vector<Sample> copy = source;
    const std::unique_ptr<Sample[]> result(filter.DownScale(
        copy.data(), width, height, newWidth, newHeight, components, width, progress));
    EXPECT_TRUE(!filter.mResultVectorX && !filter.mResultVectorY && copy == source);
    return {result.get(), result.get() + newWidth * newHeight * components};
}

/// One sample of one axis as it is defined: `at(i)` under the footprint from `start` to `end`.
template <typename At>
float SlowSum(At at, float start, float end, int last)
{
    int i = static_cast<int>(start);
    float sum =
        at(i) * static_cast<float>(1.0 - static_cast<double>(start - static_cast<float>(i)));
    float rest = end - static_cast<float>(i + 1);
    for (; rest >= 1; rest -= 1)
        sum += at(++i);
    return sum + at(rest > 0 ? std::min(i + 1, last) : i) * rest;
}

Bytes SlowFilter(const Bytes& source, int width, int height, int newWidth, int newHeight)
{
    const float stepX = static_cast<float>(width) / static_cast<float>(newWidth);
    const float stepY = static_cast<float>(height) / static_cast<float>(newHeight);
    Bytes result;
    float top = 0;
    for (int y = 0; y < newHeight; ++y, top += stepY) {
        float left = 0;
        for (int x = 0; x < newWidth; ++x, left += stepX) {
            const auto rowSum = [&](int row) {
                const auto sample = [&](int column) {
                    return static_cast<float>(
                        source[static_cast<std::size_t>(row * width + column)]);
                };
                return SlowSum(sample, left, left + stepX, width - 1);
            };
            const float sum = SlowSum(rowSum, top, top + stepY, height - 1);
            result.push_back(static_cast<unsigned char>(sum / (stepX * stepY)));
        }
    }
    return result;
}

}  // namespace

TEST(CFilterBilinearFloat, SmallPicturesByHand)
{
    const std::tuple<int, int, Bytes, int, int, int, Bytes> rows[] = {
        {4, 4, Bytes(16, 200), 2, 2, 1, Bytes(4, 200)},
        {3, 1, {0, 100, 200}, 2, 1, 1, {33, 166}},
        {2, 1, {0, 90}, 3, 1, 1, {0, 45, 89}},
        {7, 7, Bytes(49, 255), 3, 3, 1, {255, 254, 255, 255, 254, 255, 255, 255, 255}},
        {2, 1, {10, 20, 30, 50, 60, 70}, 1, 1, 3, {30, 40, 50}},
        {2, 1, {10, 20, 30, 50, 60, 70}, 2, 1, 3, {10, 20, 30, 50, 60, 70}}};
    for (const auto& [width, height, pixels, newWidth, newHeight, components, expected] : rows)
        EXPECT_EQ(Filter(pixels, width, height, newWidth, newHeight, components), expected);
    using Samples = std::vector<short>;
    EXPECT_EQ(Filter(Samples{-1, 0}, 2, 1, 1, 1), Samples{0});
    EXPECT_EQ(Filter(Samples{-1, -2}, 2, 1, 1, 1), Samples{-1});
    static int calls = 0;
    Filter(Bytes(12), 2, 2, 1, 1, 3, [] { ++calls; });
    EXPECT_EQ(calls, 6);
}

TEST(CFilterBilinearFloat, EqualsTheDefinitionAndStaysInside)
{
    std::mt19937 random(30);
    const auto odd = [&random](unsigned limit) {
        return static_cast<int>(random() % limit) * 2 + 1;
    };
    for (int i = 0; i < 200; ++i) {
        const int width = odd(40), height = odd(40), newWidth = odd(i % 2 ? 50 : 5),
                  newHeight = odd(30);
        const Bytes pixels = NoisyBytes(width * height);
        ASSERT_EQ(Filter(pixels, width, height, newWidth, newHeight),
                  SlowFilter(pixels, width, height, newWidth, newHeight))
            << width << 'x' << height << " to " << newWidth << 'x' << newHeight;
    }
    // Running sums drift by whole columns here.
    for (const bool across : {true, false}) {
        const Bytes line = across ? Filter(Bytes(60000, 100), 60000, 1, 29989, 1)
                                  : Filter(Bytes(60000, 100), 1, 60000, 1, 29989);
        EXPECT_EQ(*std::max_element(line.begin(), line.end()), 100);
    }
}

TEST(CFilterBilinearFloat, DownScaleTakesEightSixteenAndTwentyFourBits)
{
    const std::tuple<int, int, int, bool> rows[] = {{8, 2, 2, true},   {16, 2, 2, true},
                                                    {24, 2, 4, true},  {32, 2, 2, false},
                                                    {24, 0, 2, false}, {8, 2, -1, false}};
    for (const auto& [bits, width, height, scaled] : rows) {
        TestImage image(4, 4, bits, Bytes(64, 7));
        const unsigned char* before = image.mData;
        const unsigned char* result = image.DownScale(width, height);
        EXPECT_TRUE(scaled ? result && result == image.mData : !result && image.mData == before);
        EXPECT_EQ(std::tuple(image.mWidth, image.mHeight, image.mBits),
                  std::tuple(scaled ? width : 4, scaled ? height : 4, bits));
        EXPECT_EQ(image.Samples(), Bytes(image.Bytes(), 7));
    }
#ifndef __SANITIZE_ADDRESS__  // which ends the process instead
    TestImage image(4, 4, 8, Bytes(16, 7));
    EXPECT_EQ(OutputOf([&] { EXPECT_FALSE(image.DownScale(2147483647, 2147483647)); }),
              "***** insufficent memory in DownScale mResultVectorX=NULL\n"
              "***** insufficent memory in DownScale mResultVectorY=NULL\n");
    EXPECT_EQ(image.Samples(), Bytes(16, 7));
#endif
}
