#include "tests/support/TestSupport.h"

template <typename Sample>
static void ExpectHalved(int width, int components)
{
    const int offset = width * components, size = static_cast<int>(sizeof(Sample));
    Bytes noise = Noise(2 * offset * size);
    auto* lines = reinterpret_cast<Sample*>(noise.data());
    std::vector<Sample> half;
    for (int i = 0; i < width / 2 * components; ++i) {
        const Sample* at = lines + i + i / components * components;
        const int sum = at[0] + at[components] + at[offset] + at[offset + components];
        half.push_back(static_cast<Sample>(sum / 4));
    }
    half.push_back(lines[half.size()]);  // behind the result, left alone
    TestImage image({width, 1, components * size * 8}, {});
    image.DownScaleLine2(lines, lines, offset);
    EXPECT_TRUE(std::equal(half.begin(), half.end(), lines)) << image.mBits << " bits";
}

TEST(DownScaleLine2, HalvesEveryDepthInPlace)
{
    for (const int width : {66, 67, 1}) {
        for (const int components : {1, 3, 4})
            ExpectHalved<unsigned char>(width, components);
        ExpectHalved<unsigned short>(width, 1);
    }
    TestImage image({2, 1, 24}, {});
    Bytes lines{1, 10, 3, 1, 20, 3, 1, 11, 3, 1, 21, 3}, dest(3, 99);
    image.DownScaleLine2(lines.data(), dest.data(), 2, 6, 1);  // one component alone
    for (const int bits : {8, 16}) {                           // where the component plays no role
        Bytes line = lines, same(3, 99);
        image.mBits = bits;
        image.DownScaleLine2(line.data(), line.data(), 2, 2, 0);
        image.DownScaleLine2(lines.data(), same.data(), 2, 2, 7);
        EXPECT_TRUE(std::equal(line.data(), line.data() + bits / 8, same.data())) << bits;
    }
    image.mBits = 1;
    EXPECT_EQ(OutputOf([&] { image.DownScaleLine2(lines.data(), dest.data(), 6); }),
              "***** Bitcount of 1 not supported in CGraflib::DownScaleLine2\n");
    EXPECT_EQ(dest, Bytes({99, 15, 99}));
}
