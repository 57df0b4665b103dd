// Both scalers on small pictures, worked out by hand: the fixed-point scaler rounds, the float
// filter cuts.
#include <cstring>

#include "tests/support/TestSupport.h"

/// 16-bit samples in the machine's byte order.
static Bytes Shorts(const std::vector<short>& samples)
{
    Bytes bytes(samples.size() * sizeof(short));
    std::memcpy(bytes.data(), samples.data(), bytes.size());
    return bytes;
}

TEST(DownScale, SmallPicturesByHand)
{
    const Bytes wave{255, 254, 255, 255, 254, 255, 255, 255, 255};
    const std::tuple<Shape, Bytes, int, int, Bytes, Bytes> rows[] = {
        // nothing where refused
        {{2, 2, 8}, {10, 11, 10, 11}, 1, 1, {11}, {10}},
        {{3, 1, 8}, {0, 100, 200}, 2, 1, {33, 167}, {33, 166}},
        {{2, 1, 8}, {0, 90}, 3, 1, {0, 45, 90}, {0, 45, 89}},
        {{7, 7, 8}, Bytes(49, 255), 3, 3, Bytes(9, 255), wave},
        {{1, 3000000, 8}, Bytes(3000000, 255), 1, 1, {255}, {255}},
        {{2, 1, 24}, {10, 20, 30, 50, 60, 70}, 1, 1, {30, 40, 50}, {30, 40, 50}},
        {{1, 260, 8}, Bytes(260, 255), 1, 1, {255}, {255}},
        {{1, 2, 24}, {10, 20, 30, 50, 60, 70}, 1, 1, {30, 40, 50}, {30, 40, 50}},
        {{6, 1, 24},
         {0, 0, 0, 1, 2, 3, 2, 4, 6, 3, 6, 9, 4, 8, 12, 26, 28, 30},
         1,
         1,
         {6, 8, 10},
         {6, 8, 10}},
        {{1, 2, 32}, {1, 2, 3, 4, 3, 4, 5, 6}, 1, 1, {2, 3, 4, 5}, {}},
        {{2, 1, 16}, Shorts({255, 258}), 1, 1, Shorts({257}), Shorts({256})},
        {{2, 1, 16}, Shorts({-1, 0}), 1, 1, Shorts({0}), Shorts({0})},
        {{2, 1, 16}, Shorts({-1, -2}), 1, 1, Shorts({-1}), Shorts({-1})},
        {{2, 1, 8}, {}, 1, 1, {}, {}},
        {{2, 1, 8}, {1, 2}, 0, 1, {}, {}},
        {{1, 2, 8}, {1, 2}, 1, -1, {}, {}}};
    for (const auto& [shape, pixels, width, height, fixed, floating] : rows) {
        for (const auto scale : {&CGraflib::DownScaleFix2, &CGraflib::DownScale}) {
            const Bytes& wanted = scale == &CGraflib::DownScale ? floating : fixed;
            TestImage image(shape, pixels);
            const unsigned char* result = (image.*scale)(width, height);
            EXPECT_EQ(result, wanted.empty() ? nullptr : image.mData);
            EXPECT_EQ(image.GetShape(), wanted.empty() ? shape : Shape(width, height, image.mBits));
            EXPECT_EQ(image.Pixels(), wanted.empty() ? pixels : wanted);
        }
    }
}
