#include "tests/TestSupport.h"

namespace {

template <typename Sample>
void ExpectHalved(int bits, int width, std::vector<Sample> lines, const std::vector<Sample>& half)
{
    TestImage image(width, 1, bits, Bytes());
    const int offset = static_cast<int>(lines.size()) / 2;
    std::vector<Sample> dest(half.size() + 1, 99);
    OutputOf([&] { image.DownScaleLine2(lines.data(), dest.data(), offset); });
    EXPECT_EQ(dest.back(), 99) << bits;
    dest.pop_back();
    EXPECT_EQ(dest, half) << bits;
    image.DownScaleLine2(lines.data(), lines.data(), offset);  // over the first line
    EXPECT_TRUE(std::equal(half.begin(), half.end(), lines.begin())) << bits;
}

}  // namespace

TEST(DownScaleLine2, HalvesEveryDepth)
{
    ExpectHalved<unsigned char>(8, 4, {10, 20, 30, 40, 11, 21, 31, 41}, {15, 35});
    ExpectHalved<unsigned char>(8, 5, {10, 20, 30, 40, 255, 11, 21, 31, 41, 255}, {15, 35});
    ExpectHalved<unsigned char>(8, 1, {10, 11}, {});
    ExpectHalved<unsigned short>(16, 2, {65535, 65535, 0, 0}, {32767});
    ExpectHalved<unsigned char>(24, 2, {255, 0, 0, 0, 0, 255, 255, 0, 0, 0, 0, 255}, {127, 0, 127});
    ExpectHalved<unsigned char>(32, 2, {1, 2, 3, 8, 1, 2, 3, 9, 1, 2, 3, 10, 1, 2, 3, 11},
                                {1, 2, 3, 9});
    for (const int bits : {8, 24, 32}) {
        const int width = 2 * 33, components = bits / 8;
        const Bytes noise = NoisyBytes(width * components * 2);
        Bytes half;
        for (std::size_t i = 0; i < 33; ++i)
            for (std::size_t c = 0, n = static_cast<std::size_t>(components); c < n; ++c) {
                const std::size_t left = 2 * i * n + c, below = left + 66 * n;
                half.push_back(static_cast<unsigned char>(
                    (noise[left] + noise[left + n] + noise[below] + noise[below + n]) / 4));
            }
        ExpectHalved(bits, width, noise, half);
    }
}

TEST(DownScaleLine2, OneComponentOrNothing)
{
    TestImage image(2, 1, 24, Bytes());
    Bytes lines{1, 2, 3, 1, 2, 3, 1, 2, 3, 1, 2, 3}, dest(3, 99);
    image.DownScaleLine2(lines.data(), dest.data(), 2, 6, 1);
    EXPECT_EQ(dest, (Bytes{99, 2, 99}));
    image.mBits = 1;
    EXPECT_EQ(OutputOf([&] { image.DownScaleLine2(lines.data(), dest.data(), 6); }),
              "***** Bitcount of 1 not supported in CGraflib::DownScaleLine2\n");
    EXPECT_EQ(OutputOf([&] { image.DownScaleLine2(lines.data(), dest.data(), 2, 6, 0); }), "");
    EXPECT_EQ(dest, (Bytes{99, 2, 99}));
}
