// The fixed-point scaler against its definition, in memory and while a picture is read.
#include <climits>
#include <new>

#include "tests/support/PixelByPixel.h"
#include "tests/support/TestSupport.h"

using testing::Eq;
using testing::Pointwise;
using testing::PrintToString;

namespace {

// Area ratios at the thresholds 16 (one is rounded to it), 256 and 1024, and just below them; sides
// with and without room for 16 fraction bits; more than 256 rows in one sum, and sums beyond 32
// bits; enlarged, until footprints have no area; the same size.
const std::vector<Sizes> kSizes = {
    {80, 180, 30, 30},   {6, 88, 11, 3},      {64, 144, 6, 6},   {64, 144, 3, 3},
    {31, 33, 8, 8},      {47, 49, 3, 3},      {95, 97, 3, 3},    {32767, 1, 3000, 1},
    {3, 32768, 2, 9999}, {32768, 3, 9999, 2}, {9, 700, 1, 1},    {3000, 3000, 1, 1},
    {300, 2, 2, 7},      {9, 2, 9, 900},      {2, 1, 1001, 200}, {33, 21, 33, 21}};

/// An image that reads its rows out of a record's buffer.
struct CBufferImage : TestImage
{
    explicit CBufferImage(const CDataRect& source) : mSource(source) {}

    bool ReadLine(void* line) override
    {
        if (mNextRow == mSource.mHeight)
            return false;
        std::memcpy(line, mSource.mData + SizeProduct(mNextRow, mSource.RowBytes()),
                    mSource.RowBytes());
        ++mNextRow;
        return true;
    }
    void CloseReadLine() override { mIsClosed = true; }
    void Scale(int width, int height)
    {
        CGraflib::ScaleWhileReading({nullptr, mSource.mWidth, mSource.mHeight, mSource.mBits},
                                    "x.jpg", width, height);
    }

    CDataRect mSource;
    int mNextRow = 0;
    bool mIsClosed = false;
};

}  // namespace

// --- The definition ------------------------------------------------------------------------------

TEST(GetScaledPicturePixel, WeighsPixelsByTheirCoveredPartInTwoFractionBits)
{
    const std::tuple<const char*, Sizes, Bytes, Bytes> rows[] = {
        {"white, which darkens",
         {7, 7, 3, 3},
         Bytes(49, 255),
         {255, 242, 242, 242, 242, 242, 242, 242, 242}},
        {"without area", {2, 1, 5, 2}, {1, 2}, {1, 1, 1, 1, 2, 1, 1, 1, 1, 2}}};
    for (const auto& [name, sizes, pixels, expected] : rows) {
        TestImage image({sizes[0], sizes[1], 8}, pixels);
        Bytes scaled(expected.size());
        ScaleWithShift<CPixel1fixT, SPixel1i<unsigned char>>(image, sizes[2], sizes[3], 2,
                                                             scaled.data());
        EXPECT_EQ(scaled, expected) << name;
    }
}

TEST(MakeScaleParams, CutsTheAreaAsItCutsTheSteps)
{
    const CDataRect source{nullptr, 3, 5, 8};
    const auto params = MakeScaleParams<8, SPixel1i<unsigned char>>(source, nullptr, 2, 3);
    EXPECT_EQ(params.mArea.mValue, 639);  // 1.5 * 426, which is 5 / 3 * 256, cut
}

// --- The scaler ----------------------------------------------------------------------------------

TEST(DownScaleFix2, EqualsTheDefinitionInMemoryAndWhileReading)
{
    for (const Sizes& sizes : WithRandomSizes(kSizes)) {
        const auto [width, height, newWidth, newHeight] = sizes;
        for (const int bits : {8, 16, 24, 32}) {
            SCOPED_TRACE(PrintToString(sizes) + ", bits " + std::to_string(bits));
            TestImage source({width, height, bits}, Noise(width * height * bits / 8));
            Bytes expected(SizeProduct(newWidth, newHeight, bits / 8));
            ScalePixelByPixel(source, newWidth, newHeight, expected.data());

            CBufferImage read(source);
            OutputOf([&, &s = sizes] { read.Scale(s[2], s[3]); });
            EXPECT_EQ(read.mNextRow, height) << "rows that were read";
            ASSERT_THAT(read.Pixels(), Pointwise(Eq(), expected));

            OutputOf([&, &s = sizes] { source.DownScaleFix2(s[2], s[3]); });
            ASSERT_THAT(source.Pixels(), Pointwise(Eq(), expected));
        }
    }
}

TEST(DownScaleFix2, RoundsAMeanJustBelowAHalfDownOverMillionsOfPixels)
{
    Bytes pixels(3000 * 3000, 255);
    std::fill_n(pixels.begin(), pixels.size() / 2, 254);
    pixels[0] = 253;
    TestImage image({3000, 3000, 8}, pixels);
    OutputOf([&] { image.DownScaleFix2(1, 1); });
    EXPECT_EQ(image.Pixels(), Bytes{254});
}

TEST(DownScalePicture, FillsWhatItIsGiven)
{
    TestImage image({2, 1, 8}, {10, 21});
    SPixel1i<unsigned char> pixel{};
    OutputOf([&] { image.DownScalePicture<16, CPixel1fixT<16>>(&pixel, 1, 1); });
    EXPECT_EQ(pixel.mSamples[0], 16);
}

// --- A picture that is read meanwhile ------------------------------------------------------------

TEST(ScaleWhileReading, ReadsAllRowsAlsoOfWhatItRefuses)
{
    TestImage source({3, 2, 24}, Noise(18));
    CBufferImage image(source);
    const std::string output = OutputOf([&] { image.Scale(0, 2); });
    EXPECT_EQ(output, "x.jpg Width=3 Height=2 mBits=24 Data != NULL\n");
    EXPECT_EQ(image.mNextRow, 2);
    EXPECT_TRUE(image.mIsClosed);
}

TEST(ScaleWhileReading, ReadsAllRowsAlsoWhenThereIsNoMemory)
{
    TestImage source({3, 2, 24}, Noise(18));
    CBufferImage image(source);
    EXPECT_THROW(image.Scale(INT_MAX, INT_MAX), std::bad_alloc);
    EXPECT_EQ(image.mNextRow, 2);
    EXPECT_TRUE(image.mIsClosed);
}

TEST(ScaleWhileReading, ThrowsWhenARowCannotBeRead)
{
    TestImage source({3, 2, 24}, Noise(18));
    CBufferImage image(source);
    image.mNextRow = 1;
    const std::string output = OutputOf([&] { image.Scale(1, 1); });
    EXPECT_EQ(output, "Errors: 1 x.jpg");
    EXPECT_EQ(image.mData, nullptr);
}
