#include "graflib/CFilterBilinearFloat.h"

#include <climits>

#include "graflib/SinglePrecision.h"
#include "tests/support/TestSupport.h"

namespace {

using Line = std::vector<float>;
using ByteFilter = CFilterBilinearFloat<unsigned char, float>;

/// The sums along one axis as they are defined, one for each of `count` footprints.
Line SumsByDefinition(const Line& samples, int count)
{
    const int last = static_cast<int>(samples.size()) - 1;
    const float step = Quotient(last + 1, count);
    Line sums;
    for (float start = 0; count-- > 0; start = Rounded(start + step)) {
        int i = std::min(static_cast<int>(start), last);
        const float left = Rounded(start - static_cast<float>(i));
        const float weight = Rounded(static_cast<float>(1.0 - static_cast<double>(left)));
        float sum = Rounded(samples.data()[i] * weight);
        float rest = Rounded(Rounded(start + step) - static_cast<float>(i + 1));
        for (; rest >= 1 && i < last; rest = Rounded(rest - 1))
            sum = Rounded(sum + samples.data()[++i]);
        i = rest > 0 ? std::min(i + 1, last) : i;
        sums.push_back(Rounded(sum + Rounded(samples.data()[i] * std::min(rest, 1.0F))));
    }
    return sums;
}

/// A picture of one component scaled as it is defined.
Bytes ScaledByDefinition(const Bytes& source, const Sizes& sizes, int lineWidth)
{
    const auto [width, height, newWidth, newHeight] = sizes;
    std::vector<Line> columns(static_cast<std::size_t>(newWidth));
    for (int y = 0; y < height; ++y) {
        const auto row = source.begin() + std::ptrdiff_t{y} * lineWidth;
        const Line sums = SumsByDefinition(Line(row, row + width), newWidth);
        for (std::size_t x = 0; x < sums.size(); ++x)
            columns[x].push_back(sums[x]);
    }
    const float area = Rounded(Quotient(width, newWidth) * Quotient(height, newHeight));
    Bytes result(SizeProduct(newWidth, newHeight));
    for (std::size_t x = 0; x < columns.size(); ++x) {
        const Line sums = SumsByDefinition(columns[x], newHeight);
        for (std::size_t y = 0; y < sums.size(); ++y)
            result[y * columns.size() + x] = static_cast<unsigned char>(Rounded(sums[y] / area));
    }
    return result;
}

}  // namespace

TEST(CFilterBilinearFloat, EqualsTheDefinition)
{
    // Running sums drift by whole columns and rows over the long sides.
    const std::vector<Sizes> longSides = {
        {60000, 1, 29989, 1}, {1, 60000, 1, 29989}, {6492, 1, 16733, 1}, {1, 6492, 1, 16733}};
    for (const Sizes& sizes : WithRandomSizes(longSides)) {
        SCOPED_TRACE(testing::PrintToString(sizes));
        const auto [width, height, newWidth, newHeight] = sizes;
        const int lineWidth = width + height % 3;
        Bytes source = Noise(lineWidth * height);
        ByteFilter filter;
        const std::unique_ptr<unsigned char[]> result(filter.DownScale(
            source.data(), width, height, newWidth, newHeight, 1, lineWidth, nullptr));
        const Bytes pixels(result.get(), result.get() + SizeProduct(newWidth, newHeight));
        const Bytes expected = ScaledByDefinition(source, sizes, lineWidth);
        ASSERT_THAT(pixels, testing::Pointwise(testing::Eq(), expected));
    }
}

TEST(CFilterBilinearFloat, CallsProgressTwiceForEachComponent)
{
    static int calls = 0;
    Bytes source(12);
    ByteFilter filter;
    const std::unique_ptr<unsigned char[]> result(
        filter.DownScale(source.data(), 2, 2, 1, 1, 3, 2, [] { ++calls; }));
    EXPECT_EQ(calls, 6);
    EXPECT_EQ(filter.mResultVectorX, nullptr);
    EXPECT_EQ(filter.mResultVectorY, nullptr);
}

TEST(CFilterBilinearFloat, RefusesWhatHasNoRoom)
{
    CFilterBilinearFloat<short, float> filter;
    const short room = 0;
    const short* result = &room;
    const std::string output = OutputOf(
        [&] { result = filter.DownScale(nullptr, 1, INT_MAX, INT_MAX, INT_MAX, 3, 1, nullptr); });
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(output,
              "***** insufficent memory in DownScale mResultVectorX=NULL\n"
              "***** insufficent memory in DownScale mResultVectorY=NULL\n");
}
