#include "tests/support/TestSupport.h"

namespace {

/// The half of two lines as it is defined. The second line begins `offset` samples after the first.
template <typename Sample>
std::vector<Sample> Halved(const std::vector<Sample>& lines, int width, int components, int offset)
{
    std::vector<Sample> half;
    for (int x = 0; x < width / 2; ++x) {
        for (int k = 0; k < components; ++k) {
            const Sample* at = lines.data() + 2 * x * components + k;
            const int sum = at[0] + at[components] + at[offset] + at[offset + components];
            half.push_back(static_cast<Sample>(sum / 4));
        }
    }
    return half;
}

/// Halves two lines of noise into the first of them, and compares it with the definition.
template <typename Sample>
void ExpectHalvedInPlace(int width, int components)
{
    const int offset = width * components + 5;
    std::vector<Sample> lines(static_cast<std::size_t>(2 * offset));
    const Bytes noise = Noise(static_cast<int>(lines.size() * sizeof(Sample)));
    std::memcpy(lines.data(), noise.data(), noise.size());
    std::vector<Sample> expected = Halved(lines, width, components, offset);
    std::copy(lines.begin() + std::ssize(expected), lines.end(), std::back_inserter(expected));

    TestImage image({width, 1, components * static_cast<int>(sizeof(Sample)) * 8});
    image.DownScaleLine2(lines.data(), lines.data(), offset);
    EXPECT_THAT(lines, testing::Pointwise(testing::Eq(), expected))
        << width << " pixels of " << image.mBits << " bits";
}

}  // namespace

TEST(DownScaleLine2, HalvesLinesOfEveryDepthInPlace)
{
    for (const int width : {66, 67, 1}) {
        for (const int components : {1, 3, 4})
            ExpectHalvedInPlace<unsigned char>(width, components);
        ExpectHalvedInPlace<unsigned short>(width, 1);
    }
}

TEST(DownScaleLine2, LeavesTheOtherComponentsAlone)
{
    TestImage image({2, 1, 24});
    Bytes lines{1, 10, 3, 1, 20, 3, 1, 11, 3, 1, 21, 3};
    Bytes dest(3, 99);
    image.DownScaleLine2(lines.data(), dest.data(), 2, 6, 1);
    EXPECT_THAT(dest, testing::ElementsAre(99, 15, 99));
}

TEST(DownScaleLine2, IgnoresTheComponentOfSingleSamples)
{
    for (const int bits : {8, 16}) {
        TestImage image({2, 1, bits});
        Bytes lines = Noise(8);
        Bytes first(4, 99);
        Bytes seventh(4, 99);
        image.DownScaleLine2(lines.data(), first.data(), 2, 2, 0);
        image.DownScaleLine2(lines.data(), seventh.data(), 2, 2, 7);
        EXPECT_EQ(seventh, first) << bits << " bits";
    }
}

TEST(DownScaleLine2, RefusesOtherDepths)
{
    TestImage image({2, 1, 1});
    Bytes lines(12, 1);
    Bytes dest(3, 99);
    const std::string refusal =
        OutputOf([&] { image.DownScaleLine2(lines.data(), dest.data(), 6); });
    const std::string silence =
        OutputOf([&] { image.DownScaleLine2(lines.data(), dest.data(), 2, 6, 1); });
    EXPECT_EQ(refusal, "***** Bitcount of 1 not supported in CGraflib::DownScaleLine2\n");
    EXPECT_EQ(silence, "");
    EXPECT_THAT(dest, testing::Each(99));
}
