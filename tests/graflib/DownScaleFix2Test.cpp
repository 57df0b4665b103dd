#include <climits>
#include <new>

#include "tests/support/PixelByPixel.h"
#include "tests/support/TestSupport.h"

using testing::ElementsAre;
using testing::Eq;
using testing::Pointwise;
using testing::PrintToString;

namespace {

const std::vector<Sizes> kSizes = {
    // Area ratios at and just below the thresholds 16, 256 and 1024; one is rounded to 16.
    {80, 180, 30, 30},
    {31, 33, 8, 8},
    {64, 144, 6, 6},
    {47, 49, 3, 3},
    {64, 144, 3, 3},
    {95, 97, 3, 3},
    {6, 88, 11, 3},
    // Sides with and without room for 16 fraction bits.
    {32767, 1, 3000, 1},
    {32768, 3, 9999, 2},
    {70000, 2, 35000, 1},
    // More than 256 rows in one sum; sums beyond 32 bits.
    {3, 257, 2, 1},
    {9, 700, 1, 1},
    {3, 1200, 2, 2},
    {3000, 3000, 1, 1},
    // Enlarged, until footprints have no area; the same size.
    {300, 2, 2, 7},
    {9, 2, 9, 900},
    {2, 1, 70000, 1},
    {2, 1, 1001, 200},
    {2, 1, 1, 70000},
    {33, 21, 33, 21}};

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
    CDataRect Opened() const { return {nullptr, mSource.mWidth, mSource.mHeight, mSource.mBits}; }
    using CGraflib::ScaleWhileReading;

    CDataRect mSource;
    int mNextRow = 0;
    bool mIsClosed = false;
};

/// A grey picture scaled by the definition alone, with `shift` fraction bits.
Bytes ScaledByDefinition(int shift, const Sizes& sizes, const Bytes& pixels)
{
    const auto [width, height, newWidth, newHeight] = sizes;
    TestImage image({width, height, 8}, pixels);
    Bytes result(SizeProduct(newWidth, newHeight));
    ScaleWithShift<CPixel1fixT, SPixel1i<unsigned char>>(image, newWidth, newHeight, shift,
                                                         result.data());
    return result;
}

Bytes Scaled(const Shape& shape, const Bytes& pixels, int width, int height)
{
    TestImage image(shape, pixels);
    OutputOf([&] { image.DownScaleFix2(width, height); });
    return image.Pixels();
}

void ExpectRefused(const Shape& shape, const Bytes& pixels, int width, int height,
                   const std::string& words = "")
{
    SCOPED_TRACE(PrintToString(shape) + " to " + PrintToString(std::pair(width, height)));
    TestImage image(shape, pixels);
    const unsigned char* const before = image.mData;
    const unsigned char* result = before;
    const std::string output = OutputOf([&] { result = image.DownScaleFix2(width, height); });
    EXPECT_EQ(result, nullptr);
    EXPECT_EQ(output, words);
    EXPECT_EQ(image.mData, before);
    EXPECT_EQ(image.GetShape(), shape);
}

}  // namespace

// --- The definition ------------------------------------------------------------------------------

TEST(GetScaledPicturePixel, RoundsHalvesUpAtAnyPrecision)
{
    for (const int shift : {16, 8, 4, 2})
        EXPECT_EQ(ScaledByDefinition(shift, {2, 2, 1, 1}, {10, 11, 10, 11}), Bytes{11}) << shift;
}

TEST(GetScaledPicturePixel, WeighsPixelsByTheirCoveredPart)
{
    for (const int shift : {16, 8, 2})
        EXPECT_THAT(ScaledByDefinition(shift, {3, 1, 2, 1}, {0, 100, 200}), ElementsAre(33, 167))
            << shift;
}

TEST(GetScaledPicturePixel, DarkensWhiteAtLowPrecision)
{
    EXPECT_THAT(ScaledByDefinition(2, {7, 7, 3, 3}, Bytes(49, 255)),
                ElementsAre(255, 242, 242, 242, 242, 242, 242, 242, 242));
}

TEST(GetScaledPicturePixel, TakesThePixelInWhichAFootprintWithoutAreaStarts)
{
    Bytes firstRow = ScaledByDefinition(16, {2, 1, 1001, 200}, {1, 2});
    firstRow.resize(1001);
    Bytes expected(505, 1);
    expected.resize(1001, 2);
    EXPECT_THAT(firstRow, Pointwise(Eq(), expected));
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
            OutputOf([&, &s = sizes] { read.ScaleWhileReading(read.Opened(), "x", s[2], s[3]); });
            EXPECT_EQ(read.mNextRow, height) << "rows that were read";
            ASSERT_THAT(read.Pixels(), Pointwise(Eq(), expected));

            OutputOf([&, &s = sizes] { source.DownScaleFix2(s[2], s[3]); });
            ASSERT_THAT(source.Pixels(), Pointwise(Eq(), expected));
        }
    }
}

TEST(DownScaleFix2, SmallPicturesByHand)
{
    EXPECT_EQ(Scaled({2, 2, 8}, {1, 2, 3, 4}, 2, 2), Bytes({1, 2, 3, 4}));
    EXPECT_EQ(Scaled({1, 1, 8}, {77}, 3, 3), Bytes(9, 77));
    EXPECT_EQ(Scaled({2, 1, 8}, {0, 90}, 3, 1), Bytes({0, 45, 90}));
    EXPECT_EQ(Scaled({7, 7, 8}, Bytes(49, 255), 3, 3), Bytes(9, 255));
    EXPECT_EQ(Scaled({1, 1 << 23, 8}, Bytes(1 << 23, 255), 4, 1), Bytes(4, 255));
    EXPECT_EQ(Scaled({1, 2, 24}, {10, 20, 30, 50, 60, 70}, 1, 1), Bytes({30, 40, 50}));
    EXPECT_EQ(Scaled({1, 2, 32}, {1, 2, 3, 4, 3, 4, 5, 6}, 1, 1), Bytes({2, 3, 4, 5}));
    EXPECT_EQ(Scaled({2, 1, 16}, Shorts({255, 258}), 1, 1), Shorts({257}));
    EXPECT_EQ(Scaled({2, 1, 16}, Shorts({-1, 0}), 1, 1), Shorts({0}));
    EXPECT_EQ(Scaled({2, 1, 16}, Shorts({-1, -2}), 1, 1), Shorts({-1}));
}

TEST(DownScaleFix2, ReturnsTheRecordsNewBuffer)
{
    TestImage image({4, 4, 24}, Bytes(48));
    const unsigned char* result = nullptr;
    OutputOf([&] { result = image.DownScaleFix2(2, 3); });
    EXPECT_EQ(result, image.mData);
    EXPECT_EQ(image.GetShape(), Shape(2, 3, 24));
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

TEST(DownScaleFix2, RefusesWhatCannotBeScaled)
{
    ExpectRefused({4, 4, 1}, Bytes(64), 2, 2, "***** unsupported bitcount:1\n");
    ExpectRefused({4, 4, 24}, Bytes(64), 0, 2);
    ExpectRefused({4, 4, 24}, Bytes(64), 2, -1);
    ExpectRefused({0, 4, 24}, Bytes(64), 2, 2);
    ExpectRefused({4, 0, 24}, Bytes(64), 2, 2);
    ExpectRefused({4, 4, 24}, {}, 2, 2);
    ExpectRefused({1 << 29, 1, 8}, Bytes(64), 2, 2);
    ExpectRefused({1, 1 << 29, 8}, Bytes(64), 2, 2);
}

TEST(DownScalePicture, FillsNothingForATargetWithoutPixels)
{
    TestImage image({1, 1, 8}, {1});
    SPixel1i<unsigned char>* const nowhere = nullptr;
    const std::string output =
        OutputOf([&] { image.DownScalePicture<16, CPixel1fixT<16>>(nowhere, 0, 1); });
    EXPECT_EQ(output, "sizeof(Tpixel)=1\n");
}

// --- A picture that is read meanwhile ------------------------------------------------------------

TEST(ScaleWhileReading, ReadsAllRowsAndSaysSoAlsoWhenItRefuses)
{
    const std::string shown = "x.jpg Width=3 Height=2 mBits=24 Data != NULL\n";
    const std::string scaled = shown + "ScaleFakt=3\nsizeof(Tpixel)=3\n";
    for (const int width : {1, 0}) {
        TestImage source({3, 2, 24}, Noise(18));
        CBufferImage image(source);
        const std::string output =
            OutputOf([&] { image.ScaleWhileReading(image.Opened(), "x.jpg", width, 2); });
        EXPECT_EQ(output, width == 1 ? scaled : shown);
        EXPECT_EQ(image.mWidth, width);
        EXPECT_EQ(image.mNextRow, 2) << width;
        EXPECT_TRUE(image.mIsClosed) << width;
    }
}

TEST(ScaleWhileReading, ReadsAllRowsAlsoWhenThereIsNoMemory)
{
    TestImage source({3, 2, 24}, Noise(18));
    CBufferImage image(source);
    EXPECT_THROW(image.ScaleWhileReading(image.Opened(), "x.jpg", INT_MAX, INT_MAX),
                 std::bad_alloc);
    EXPECT_EQ(image.mNextRow, 2);
    EXPECT_TRUE(image.mIsClosed);
}

TEST(ScaleWhileReading, ThrowsWhenARowCannotBeRead)
{
    TestImage source({3, 2, 24}, Noise(18));
    CBufferImage image(source);
    image.mNextRow = 1;
    const std::string output =
        OutputOf([&] { image.ScaleWhileReading(image.Opened(), "x.jpg", 1, 1); });
    EXPECT_EQ(output, "Errors: 1 x.jpg");
    EXPECT_EQ(image.mData, nullptr);
}
