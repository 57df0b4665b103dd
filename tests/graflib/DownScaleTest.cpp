// Both scalers of whole pictures: DownScaleFix2 rounds, DownScale cuts.
#include "tests/support/TestSupport.h"

namespace {

using Scaler = unsigned char* (CGraflib::*)(int width, int height);

constexpr Scaler kFixed = &CGraflib::DownScaleFix2;
constexpr Scaler kFloat = &CGraflib::DownScale;

const Bytes kRamp = {0, 0, 0, 1, 2, 3, 2, 4, 6, 3, 6, 9, 4, 8, 12, 26, 28, 30};

Bytes Scaled(Scaler scaler, const Shape& shape, const Bytes& pixels, int width, int height)
{
    TestImage image(shape, pixels);
    const unsigned char* result = nullptr;
    OutputOf([&] { result = (image.*scaler)(width, height); });
    EXPECT_EQ(result, image.mData) << "the record's new buffer";
    EXPECT_EQ(image.GetShape(), Shape(width, height, std::get<2>(shape)));
    return image.Pixels();
}

}  // namespace

TEST(Scalers, RoundOrCutTheMeansOfSmallPictures)
{
    const std::tuple<const char*, Shape, Bytes, int, Bytes, Bytes> rows[] = {
        {"halves", {2, 2, 8}, {10, 11, 10, 11}, 1, {11}, {10}},
        {"partly covered", {3, 1, 8}, {0, 100, 200}, 2, {33, 167}, {33, 166}},
        {"enlarged", {2, 1, 8}, {0, 90}, 3, {0, 45, 90}, {0, 45, 89}},
        {"many white rows", {1, 300, 8}, Bytes(300, 255), 1, {255}, {255}},
        {"colours", {6, 1, 24}, kRamp, 1, {6, 8, 10}, {6, 8, 10}},
        {"16 bits", {2, 1, 16}, Shorts({255, 258}), 1, Shorts({257}), Shorts({256})},
        {"half below 0", {2, 1, 16}, Shorts({-1, 0}), 1, Shorts({0}), Shorts({0})},
        {"half below -1", {2, 1, 16}, Shorts({-1, -2}), 1, Shorts({-1}), Shorts({-1})}};
    for (const auto& [name, shape, pixels, width, rounded, cut] : rows) {
        SCOPED_TRACE(name);
        EXPECT_EQ(Scaled(kFixed, shape, pixels, width, 1), rounded);
        EXPECT_EQ(Scaled(kFloat, shape, pixels, width, 1), cut);
    }
}

TEST(Scalers, RefuseWhatCannotBeScaled)
{
    const std::tuple<const char*, Shape, Bytes, int, int> rows[] = {
        {"no buffer", {4, 4, 24}, {}, 2, 2},
        {"no columns", {0, 4, 24}, Bytes(64), 2, 2},
        {"no rows", {4, 0, 24}, Bytes(64), 2, 2},
        {"target width 0", {4, 4, 24}, Bytes(64), 0, 2},
        {"target height -1", {4, 4, 24}, Bytes(64), 2, -1}};
    for (const auto& [name, shape, pixels, width, height] : rows) {
        for (const Scaler scaler : {kFixed, kFloat}) {
            SCOPED_TRACE(name + std::string(scaler == kFixed ? ", fixed" : ", float"));
            TestImage image(shape, pixels);
            const unsigned char* const before = image.mData;
            EXPECT_EQ((image.*scaler)(width, height), nullptr);
            EXPECT_EQ(image.mData, before);
            EXPECT_EQ(image.GetShape(), shape);
        }
    }
}

TEST(Scalers, RefuseOtherDepthsAndTooLongSides)
{
    TestImage flat({4, 4, 1}, Bytes(64));
    TestImage four({4, 4, 32}, Bytes(64));
    TestImage wide({1 << 29, 1, 8}, Bytes(64));
    const unsigned char* result = flat.mData;
    const std::string output = OutputOf([&] { result = flat.DownScaleFix2(2, 2); });
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(output, "***** unsupported bitcount:1\n");
    EXPECT_EQ(four.DownScale(2, 2), nullptr);
    EXPECT_EQ(wide.DownScaleFix2(2, 2), nullptr);
}
