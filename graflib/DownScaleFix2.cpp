// The fixed-point area scaler: the picture (DownScaleFix2 and DownScaleLines), the walk over its
// rows (WalkRows), and the definition of a pixel (GetScaledPicturePixel), which the walk gets by a
// shorter way (ScaledRow.h).
//
// A destination pixel's footprint, with the weights of its source columns and rows:
//
//                 first     full      full      last            column weights wx
//               +-----:---+---------+---------+---:-----+
//          top  |     :  corner     |         |   :     |       row weights wy, and
//               | - - + - + - - - - + - - - - + - + - - |       weight = (wx * wy) >> SHIFT
//         full  |     : wx|   ONE   |   ONE   |wx :     |
//               | - - + - + - - - - + - - - - + - + - - |
//       bottom  |     :   |         |         |   :     |
//               +-----:---+---------+---------+---:-----+
//
// In a full column the weight is wy itself, so the column's weighted sum is the same for every
// destination pixel: it is formed once per destination row. In the first and last column the cut of
// the shift matters only at the corners, as the weight of a full row is wx itself: such a column is
// wx times the sum of the full rows plus its two corners.
#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

#include "graflib/CGraflib.h"
#include "graflib/FixedPointTypes.h"
#include "graflib/PixelTypes.h"
#include "graflib/PixelWalk.h"
#include "graflib/ReadRows.h"
#include "graflib/ScaledRow.h"
#include "graflib/SinglePrecision.h"
#include "util/SizeProduct.h"

namespace {

/// Fraction bits by the area ratio: the more pixels are summed, the fewer bits are left for the
/// fractions of a 32-bit sum of 8-bit samples.
constexpr struct
{
    double mRatioLimit;
    int mShift;
} kPrecisions[] = {
    {16.0, 16},
    {256.0, 8},
    {1024.0, 4},
    {std::numeric_limits<double>::infinity(), 2},
};
constexpr int kLowestShift = 2;
static_assert(16.0 * (1 << 16) * UCHAR_MAX < 0x1p31 && 256.0 * (1 << 8) * UCHAR_MAX < 0x1p31 &&
              1024.0 * (1 << 4) * UCHAR_MAX < 0x1p31);

/// True when every position along the side fits in 32 bits with SHIFT fraction bits.
constexpr bool FitsSide(int side, int shift)
{
    return side <= INT_MAX >> shift;
}

/// Source pixels to a destination pixel.
float AreaRatio(const CDataRect& source, int width, int height)
{
    return Rounded(Quotient(source.mWidth, width) * Quotient(source.mHeight, height));
}

int ChooseShift(const CDataRect& source, int width, int height)
{
    const double ratio = double{AreaRatio(source, width, height)};
    for (const auto& precision : kPrecisions) {
        if (ratio < precision.mRatioLimit &&
            FitsSide(std::max(source.mWidth, source.mHeight), precision.mShift))
            return precision.mShift;
    }
    return kLowestShift;
}

bool IsDepth(int bits)
{
    return bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

/// Whether a picture of this size and depth can be scaled.
bool IsScalable(const CDataRect& source, int width, int height)
{
    return IsDepth(source.mBits) && width >= 1 && height >= 1 && source.mWidth >= 1 &&
           source.mHeight >= 1 && FitsSide(std::max(source.mWidth, source.mHeight), kLowestShift);
}

unsigned char* Refuse(const CDataRect& source)
{
    if (!IsDepth(source.mBits))
        std::cout << "***** unsupported bitcount:" << source.mBits << std::endl;
    return nullptr;
}

void ShowRatio(const CDataRect& source, int width, int height)
{
    if (source.mBits == 24)
        std::cout << "ScaleFakt=" << AreaRatio(source, width, height) << std::endl;
}

void ShowPixelSize(int bits)
{
    std::cout << "sizeof(Tpixel)=" << bits / CHAR_BIT << std::endl;
}

std::unique_ptr<unsigned char[]> NewPixels(int width, int height, int bits)
{
    return NewArray<unsigned char>(width, height, bits / CHAR_BIT);
}

/// The types for every depth and precision.
#define TESSEL_WITH_SHIFTS(DO, TFIX, TPIXEL) \
    DO(16, TFIX, TPIXEL) DO(8, TFIX, TPIXEL) DO(4, TFIX, TPIXEL) DO(2, TFIX, TPIXEL)
#define TESSEL_INSTANCES(DO)                                     \
    TESSEL_WITH_SHIFTS(DO, CPixel1fixT, SPixel1i<unsigned char>) \
    TESSEL_WITH_SHIFTS(DO, CPixel1fixT, SPixel1i<short>)         \
    TESSEL_WITH_SHIFTS(DO, CPixel3fixT, SPixel3i<unsigned char>) \
    TESSEL_WITH_SHIFTS(DO, CPixel4fixT, SPixel4i<unsigned char>)

/// Calls `action` with the types for a depth and a precision.
template <typename Taction>
void WithTypes(int bits, int shift, const Taction& action)
{
#define TESSEL_CALL(SHIFT, TFIX, TPIXEL)                     \
    if (bits == sizeof(TPIXEL) * CHAR_BIT && shift == SHIFT) \
        action.template operator()<SHIFT, TFIX<SHIFT>, TPIXEL>();
    TESSEL_INSTANCES(TESSEL_CALL)
}

/// Where a walk takes its source rows from, neighbouring ones from `first` to `last`. It asks for
/// them in ascending order; those of one destination row may belong to the next, too.
using RowSource = std::function<const unsigned char*(int first, int last)>;

/// Makes the pixels of footprints that vanish: each is the source pixel in which its own starts.
template <int SHIFT, typename Tpixel>
void WalkPoints(const SScaleParams<SHIFT, Tpixel>& params, const RowSource& source, int width,
                int height)
{
    Tpixel* dest = params.mDest;
    for (int y = 0; y < height; ++y) {
        const int row = SSpanT<SHIFT>(y, params.mStepY).mFirst;
        const auto* pixels = reinterpret_cast<const Tpixel*>(source(row, row));
        for (int x = 0; x < width; ++x)
            *dest++ = pixels[SSpanT<SHIFT>(x, params.mStepX).mFirst];
    }
}

/// Makes all other pixels, row by row. A Tcolumn takes the sum of a column's full rows, a Tsum that
/// of all its rows, weighted.
template <int SHIFT, typename Tfix, typename Tcolumn, typename Tsum, typename Tpixel>
void WalkAreas(const SScaleParams<SHIFT, Tpixel>& params, const RowSource& source, int width,
               int height)
{
    using Sample = typename Tpixel::Sample;
    const SDivisor<Tpixel> divisor(CFixT<SHIFT>::WideProduct(params.mStepX, params.mStepY));
    const std::size_t length = SizeProduct(params.mSrcWidth, Tpixel::kComponents);
    std::vector<Tcolumn> full(length);
    std::vector<Tsum> weighted(length);
    Tpixel* dest = params.mDest;
    for (int y = 0; y < height; ++y, dest += width) {
        const SSpanT<SHIFT> rows(y, params.mStepY);
        const int below = rows.mLast - rows.mFirst;
        const auto* const top = reinterpret_cast<const Sample*>(source(rows.mFirst, rows.mLast));
        const SRowSums<Sample, Tcolumn, Tsum> row{top,
                                                  top + static_cast<std::size_t>(below) * length,
                                                  rows.mFirstWeight,
                                                  below > 0 ? rows.mLastWeight : 0,
                                                  full.data(),
                                                  weighted.data()};
        SumRows(full, top + length, std::max(below - 1, 0));
        if (params.mStepX.mValue > CFixT<SHIFT>::kOne)  // else no pixel has full columns
            WeighRows<SHIFT>(row, weighted.data(), length);
        MakePixels<SHIFT, Tfix>(row, params.mStepX, divisor, dest, width);
    }
}

/// Fills `dest` with the pixels that GetScaledPicturePixel makes one by one. Narrow sums make this
/// fast: half the bytes, twice the lanes.
template <int SHIFT, typename Tfix, typename Tpixel>
void WalkRows(const CDataRect& picture, const RowSource& source, Tpixel* dest, int width,
              int height)
{
    using Wide = std::int64_t;
    constexpr bool kBytes = sizeof(typename Tpixel::Sample) == 1;
    using Column = std::conditional_t<kBytes, std::uint16_t, std::int32_t>;
    using Sum = std::conditional_t<kBytes, std::uint32_t, Wide>;
    constexpr int kMostRows = 256;
    static_assert(kMostRows * UCHAR_MAX <= UINT16_MAX && kMostRows * SHRT_MIN >= INT32_MIN &&
                  Wide{kMostRows} * CFixT<SHIFT>::kOne * UCHAR_MAX <= UINT32_MAX);
    const auto params = MakeScaleParams<SHIFT>(picture, dest, width, height);
    if (CFixT<SHIFT>::WideProduct(params.mStepX, params.mStepY) == 0)
        WalkPoints(params, source, width, height);
    else if (params.mStepY.Integer() < kMostRows)
        WalkAreas<SHIFT, Tfix, Column, Sum>(params, source, width, height);
    else
        WalkAreas<SHIFT, Tfix, Wide, Wide>(params, source, width, height);
}

}  // namespace

template <int SHIFT, typename Tfix, typename Tpixel>
void CGraflib::GetScaledPicturePixel(SScaleParams<SHIFT, Tpixel>* params, int x, int y)
{
    const SSpanT<SHIFT> columns(x, params->mStepX);
    const SSpanT<SHIFT> rows(y, params->mStepY);
    const auto source = [this, params](int row, int column) {
        return reinterpret_cast<const Tpixel*>(mData) + std::ptrdiff_t{row} * params->mSrcWidth +
               column;
    };
    // mArea, with the bits for which it has no room where one pixel is made of millions.
    const std::int64_t area = CFixT<SHIFT>::WideProduct(params->mStepX, params->mStepY);
    if (area == 0) {
        *params->mDest = *source(rows.mFirst, columns.mFirst);
        return;
    }
    Tfix sums;
    sums.Clear();
    for (int row = rows.mFirst; row <= rows.mLast; ++row) {
        for (int column = columns.mFirst; column <= columns.mLast; ++column)
            sums.Add(source(row, column)->mSamples,
                     CFixT<SHIFT>::Multiply(columns.Weight(column), rows.Weight(row)));
    }
    sums.Store(area, params->mDest);
}

template <int SHIFT, typename Tfix, typename Tpixel>
void CGraflib::DownScalePicture(Tpixel* dest, int width, int height)
{
    ShowPixelSize(sizeof(Tpixel) * CHAR_BIT);
    if (width <= 0 || height <= 0)
        return;
    const auto buffered = [this, rowBytes = sizeof(Tpixel) * static_cast<std::size_t>(mWidth)](
                              int first, int /*last*/) {
        return mData + static_cast<std::size_t>(first) * rowBytes;
    };
    WalkRows<SHIFT, Tfix>(*this, buffered, dest, width, height);
}

unsigned char* CGraflib::DownScaleFix2(int width, int height)
{
    if (!mData || !IsScalable(*this, width, height))
        return Refuse(*this);
    auto pixels = NewPixels(width, height, mBits);
    ShowRatio(*this, width, height);
    WithTypes(mBits, ChooseShift(*this, width, height),
              [&]<int SHIFT, typename Tfix, typename Tpixel>() {
                  auto* dest = reinterpret_cast<Tpixel*>(pixels.get());
                  DownScalePicture<SHIFT, Tfix>(dest, width, height);
              });
    return ReplaceBuffer(std::move(pixels), width, height, mBits);
}

unsigned char* CGraflib::DownScaleLines(const CDataRect& opened, const char* name, int width,
                                        int height)
{
    CReadRows rows(this, opened, name);
    const auto finish = [&] {
        const CDataRect picture = rows.Finish();
        CloseReadLine();
        ShowRecord(name, picture);
    };
    const bool isScalable = IsScalable(opened, width, height);
    std::unique_ptr<unsigned char[]> pixels;
    try {
        pixels = isScalable ? NewPixels(width, height, opened.mBits) : nullptr;
    } catch (const std::bad_alloc&) {
        finish();  // where there is no room, DownScaleFix2 would find out after that, too
        throw;
    }
    if (isScalable)
        WithTypes(opened.mBits, ChooseShift(opened, width, height),
                  [&]<int SHIFT, typename Tfix, typename Tpixel>() {
                      const auto read = [&](int first, int last) { return rows.Rows(first, last); };
                      auto* dest = reinterpret_cast<Tpixel*>(pixels.get());
                      WalkRows<SHIFT, Tfix>(opened, read, dest, width, height);
                  });
    finish();
    if (!isScalable)
        return Refuse(opened);
    ShowRatio(opened, width, height);
    ShowPixelSize(opened.mBits);
    return ReplaceBuffer(std::move(pixels), width, height, opened.mBits);
}

// For programs that call the templates themselves.
#define TESSEL_INSTANCE(SHIFT, TFIX, TPIXEL)                                                 \
    template void CGraflib::DownScalePicture<SHIFT, TFIX<SHIFT>, TPIXEL>(TPIXEL*, int, int); \
    template void CGraflib::GetScaledPicturePixel<SHIFT, TFIX<SHIFT>, TPIXEL>(               \
        SScaleParams<SHIFT, TPIXEL>*, int, int);
TESSEL_INSTANCES(TESSEL_INSTANCE)
