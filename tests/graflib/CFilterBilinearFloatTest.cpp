#include "graflib/CFilterBilinearFloat.h"

#include <climits>

#include "graflib/SinglePrecision.h"
#include "tests/support/TestSupport.h"

using Line = std::vector<float>;

/// The sums along one axis as they are defined, one for each of `count` footprints.
static Line SlowSums(const Line& samples, int count)
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

TEST(CFilterBilinearFloat, EqualsTheDefinition)
{
    static int calls = 0;
    // Running sums drift by whole columns and rows over the long sides.
    for (const Sizes& sizes : WithRandomSizes({{60000, 1, 29989, 1},
                                               {1, 60000, 1, 29989},
                                               {3739, 1, 10254, 1},
                                               {6492, 1, 16733, 1},
                                               {1, 6492, 1, 16733}})) {
        const auto [width, height, newWidth, newHeight] = sizes;
        const int lineWidth = width + height % 3;
        Bytes source = Noise(lineWidth * height);
        CFilterBilinearFloat<unsigned char, float> filter;
        const std::unique_ptr<unsigned char[]> result(filter.DownScale(
            source.data(), width, height, newWidth, newHeight, 1, lineWidth, [] { ++calls; }));
        EXPECT_TRUE(!filter.mResultVectorX && !filter.mResultVectorY);
        std::vector<Line> columns(static_cast<std::size_t>(newWidth));
        for (auto row = source.begin(); row != source.end(); row += lineWidth) {
            const Line sums = SlowSums(Line(row, row + width), newWidth);
            for (std::size_t x = 0; x < sums.size(); ++x)
                columns[x].push_back(sums[x]);
        }
        const auto rows = static_cast<std::size_t>(newHeight);
        for (std::size_t i = 0, x = 0; x < columns.size(); ++x)
            for (const float sum : SlowSums(columns[x], newHeight))
                ASSERT_EQ(result[i++ % rows * columns.size() + x],
                          static_cast<int>(Rounded(sum / Rounded(filter.mScaleX * filter.mScaleY))))
                    << testing::PrintToString(sizes);
    }
    EXPECT_EQ(calls, 2 * 305);
}

TEST(CFilterBilinearFloat, RefusesWhatHasNoResultOrNoRoom)
{
    const std::string x = "***** insufficent memory in DownScale mResultVectorX=NULL\n";
    const std::string y = "***** insufficent memory in DownScale mResultVectorY=NULL\n";
    const std::tuple<Sizes, int, std::string> rows[] = {
        {{0, 1, 1, 1}, 1, ""}, {{1, 0, 1, 1}, 1, ""}, {{1, 1, 0, 1}, 1, ""},
        {{1, 1, 1, 0}, 1, ""}, {{1, 1, 1, 1}, 0, ""}, {{1, INT_MAX, INT_MAX, INT_MAX}, 3, x + y}};
    CFilterBilinearFloat<short, float> filter;
    for (const auto& [sizes, components, words] : rows) {
        const auto scale = [&, &s = sizes, &count = components] {
            EXPECT_FALSE(filter.DownScale(nullptr, s[0], s[1], s[2], s[3], count, 1, nullptr));
        };
        EXPECT_EQ(OutputOf(scale), words);
    }
}

TEST(CFilterBilinearFloat, StagesRunOnFieldsFilledByHand)
{
    unsigned char source[] = {0, 100, 200}, result[2];
    float sums[4];
    CFilterBilinearFloat<unsigned char, float> filter;
    filter.mSource = source;
    filter.mResultVectorX = sums;
    filter.mResultVectorY = result;
    filter.mSrcWidth = filter.mSrcLineWidth = 3;
    filter.mSrcHeight = filter.mDstHeight = filter.mComponents = 1;
    filter.mDstWidth = 2;
    filter.mScaleX = 1.5F;
    filter.mScaleY = 1;
    filter.BilinearStageX(0);
    filter.BilinearStageY(0);
    EXPECT_EQ(Bytes(result, result + 2), Bytes({33, 166}));
    filter.mScaleX = 0x1p31F;  // positions that no int holds end at the last column
    filter.BilinearStageX(0);
    EXPECT_EQ(Line(sums, sums + 2), Line({300 + 200, 200 - 0x1p31F * 200 + 200}));
}
