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
    const struct
    {
        const char* mName;
        Shape mShape;
        Bytes mPixels;
        int mWidth;
        Bytes mRounded;
        Bytes mCut;
    } rows[] = {
        {"halves", {2, 2, 8}, {10, 11, 10, 11}, 1, {11}, {10}},
        {"partly covered", {3, 1, 8}, {0, 100, 200}, 2, {33, 167}, {33, 166}},
        {"enlarged", {2, 1, 8}, {0, 90}, 3, {0, 45, 90}, {0, 45, 89}},
        {"colours", {6, 1, 24}, kRamp, 1, {6, 8, 10}, {6, 8, 10}},
        {"16 bits", {2, 1, 16}, Shorts({255, 258}), 1, Shorts({257}), Shorts({256})},
        {"half below 0", {2, 1, 16}, Shorts({-1, 0}), 1, Shorts({0}), Shorts({0})},
        {"half below -1", {2, 1, 16}, Shorts({-1, -2}), 1, Shorts({-1}), Shorts({-1})},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mName);
        EXPECT_EQ(Scaled(kFixed, row.mShape, row.mPixels, row.mWidth, 1), row.mRounded);
        EXPECT_EQ(Scaled(kFloat, row.mShape, row.mPixels, row.mWidth, 1), row.mCut);
    }
}

TEST(Scalers, RefuseWhatCannotBeScaled)
{
    const struct
    {
        const char* mName;
        Scaler mScaler;
        Shape mShape;
        Bytes mPixels;
        int mWidth;
        int mHeight;
        const char* mOutput;
    } rows[] = {{"float: depth 32", kFloat, {4, 4, 32}, Bytes(64), 2, 2, ""},
                {"float: no buffer", kFloat, {4, 4, 24}, {}, 2, 2, ""},
                {"float: no columns", kFloat, {0, 4, 24}, Bytes(64), 2, 2, ""},
                {"float: no rows", kFloat, {4, 0, 24}, Bytes(64), 2, 2, ""},
                {"float: target width 0", kFloat, {4, 4, 24}, Bytes(64), 0, 2, ""},
                {"float: target height -1", kFloat, {4, 4, 24}, Bytes(64), 2, -1, ""},
                {"depth 1", kFixed, {4, 4, 1}, Bytes(64), 2, 2, "***** unsupported bitcount:1\n"},
                {"no buffer", kFixed, {4, 4, 24}, {}, 2, 2, ""},
                {"no columns", kFixed, {0, 4, 24}, Bytes(64), 2, 2, ""},
                {"no rows", kFixed, {4, 0, 24}, Bytes(64), 2, 2, ""},
                {"target width 0", kFixed, {4, 4, 24}, Bytes(64), 0, 2, ""},
                {"target height -1", kFixed, {4, 4, 24}, Bytes(64), 2, -1, ""},
                {"too wide", kFixed, {1 << 29, 1, 8}, Bytes(64), 2, 2, ""}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mName);
        TestImage image(row.mShape, row.mPixels);
        const unsigned char* const before = image.mData;
        const unsigned char* result = before;
        const std::string output =
            OutputOf([&] { result = (image.*row.mScaler)(row.mWidth, row.mHeight); });
        EXPECT_EQ(result, nullptr);
        EXPECT_EQ(output, row.mOutput);
        EXPECT_EQ(image.mData, before);
        EXPECT_EQ(image.GetShape(), row.mShape);
    }
}

TEST(DownScaleFix2, WritesTheBytesOfAPixelAndTheRatioOf24Bits)
{
    for (const int bits : {8, 16, 24, 32}) {
        TestImage image({4, 4, bits}, Bytes(64));
        const std::string output = OutputOf([&] { image.DownScaleFix2(2, 2); });
        const std::string ratio = bits == 24 ? "ScaleFakt=4\n" : "";
        EXPECT_EQ(output, ratio + "sizeof(Tpixel)=" + std::to_string(bits / 8) + "\n");
    }
}
