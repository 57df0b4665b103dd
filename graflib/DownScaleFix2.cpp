// The fixed-point area scaler: the definition of a pixel (GetScaledPicturePixel), and the walk over
// rows that makes the same pixels faster (WalkRows and DownScaleFix2Row.h).
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
// In a full column, wx is ONE and the weight is wy. So the column's weighted sum is the same for
// every destination pixel, and is formed once for a destination row. In the first and the last
// column, the weight of a full row is wx. So such a column is wx times the sum of its full rows,
// plus its two corners. Only there does the shift cut anything.
#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iostream>
#include <limits>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "graflib/CGraflib.h"
#include "graflib/DownScaleFix2Reader.h"
#include "graflib/DownScaleFix2Row.h"
#include "graflib/FixedPointTypes.h"
#include "graflib/PixelTypes.h"
#include "graflib/SinglePrecision.h"
#include "util/SizeProduct.h"

namespace {

/// Fraction bits by the area ratio. Sums of 64 bits would have room for more. But results depend on
/// the fraction bits, and pictures must come out as they always have: that is why the table stays.
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

/// Source pixels to a destination pixel.
float AreaRatio(const CDataRect& source, int width, int height)
{
    return Rounded(Quotient(source.mWidth, width) * Quotient(source.mHeight, height));
}

bool IsDepth(int bits)
{
    return bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

/// The fraction bits for the ratio, or fewer, so that every position along a side fits in 32 bits.
/// 0 when the picture can't be scaled.
int ChooseShift(const CDataRect& source, int width, int height)
{
    if (!IsDepth(source.mBits) || std::min({width, height, source.mWidth, source.mHeight}) < 1)
        return 0;
    const double ratio = double{AreaRatio(source, width, height)};
    for (const auto& [ratioLimit, shift] : kPrecisions) {
        if (ratio < ratioLimit && std::max(source.mWidth, source.mHeight) <= INT_MAX >> shift)
            return shift;
    }
    return 0;
}

void ShowPixelSize(int bytes)
{
    std::cout << "sizeof(Tpixel)=" << bytes << std::endl;
}

/// Writes the lines of DownScaleFix2 for a picture that has been scaled or refused.
void ShowScaled(const CDataRect& source, int width, int height, bool isScaled)
{
    if (!IsDepth(source.mBits))
        std::cout << "***** unsupported bitcount:" << source.mBits << std::endl;
    if (!isScaled)
        return;
    // The words stay as they are, for programs that look for them.
    if (source.mBits == 24)
        std::cout << "ScaleFakt=" << AreaRatio(source, width, height) << std::endl;
    ShowPixelSize(source.mBits / CHAR_BIT);
}

/// The types for every depth and precision.
#define TESSEL_WITH_SHIFTS(DO, TFIX, TPIXEL) \
    DO(16, TFIX, TPIXEL) DO(8, TFIX, TPIXEL) DO(4, TFIX, TPIXEL) DO(2, TFIX, TPIXEL)
#define TESSEL_INSTANCES(DO)                                     \
    TESSEL_WITH_SHIFTS(DO, CPixel1fixT, SPixel1i<unsigned char>) \
    TESSEL_WITH_SHIFTS(DO, CPixel1fixT, SPixel1i<short>)         \
    TESSEL_WITH_SHIFTS(DO, CPixel3fixT, SPixel3i<unsigned char>) \
    TESSEL_WITH_SHIFTS(DO, CPixel4fixT, SPixel4i<unsigned char>)

/// Gives the walk the source rows from `first` to `last`. `first` is the `last` of the call before,
/// or the row after it.
using RowSource = std::function<const unsigned char*(int first, int last)>;

/// Makes the pixels of GetScaledPicturePixel, row by row. A Tcolumn holds the sum of a column's
/// full rows, a Tsum the weighted sum of all its rows.
template <int SHIFT, typename Tfix, typename Tcolumn, typename Tsum, typename Tpixel>
void WalkRows(const SScaleParams<SHIFT, Tpixel>& params, const RowSource& source, int width,
              int height)
{
    const std::int64_t area = CFixT<SHIFT>::Multiply(params.mStepX.mValue, params.mStepY.mValue);
    const std::size_t length = SizeProduct(params.mSrcWidth, Tpixel::kComponents);
    std::vector<Tcolumn> full(length);
    std::vector<Tsum> weighted(length);
    Tpixel* dest = params.mDest;
    for (int y = 0; y < height; ++y, dest += width) {
        const SSpanT<SHIFT> rows(y, params.mStepY);
        const int below = std::max(rows.mLast - rows.mFirst, 0);
        const auto* const pixels =
            reinterpret_cast<const Tpixel*>(source(rows.mFirst, rows.mFirst + below));
        if (area == 0) {  // footprints without area: take the pixel in which each one starts
            for (int x = 0; x < width; ++x)
                dest[x] = pixels[SSpanT<SHIFT>(x, params.mStepX).mFirst];
            continue;
        }
        const auto* const top = pixels->mSamples;
        const auto* const bottom = top + static_cast<std::size_t>(below) * length;
        const fix2::SRowSums<typename Tpixel::Sample, Tcolumn, Tsum> row{
            top, bottom, rows.mFirstWeight, rows.mLastWeight, full.data(), weighted.data()};
        fix2::SumRows(full, top + length, std::max(below - 1, 0));
        if (params.mStepX.mValue > CFixT<SHIFT>::kOne)  // otherwise no pixel has full columns
            fix2::WeighRows<SHIFT>(row, weighted.data(), length);
        fix2::MakePixels<SHIFT, Tfix>(row, params.mStepX, area, dest, width);
    }
}

/// Chooses the types of the sums. Narrow ones make the walk faster: vector registers hold more of
/// them.
template <int SHIFT, typename Tfix, typename Tpixel>
void WalkPicture(const CDataRect& picture, const RowSource& source, Tpixel* dest, int width,
                 int height)
{
    constexpr int kMostRows = 256;
    static_assert(kMostRows * UCHAR_MAX <= UINT16_MAX &&
                  std::int64_t{kMostRows} * CFixT<SHIFT>::kOne * UCHAR_MAX <= UINT32_MAX);
    const auto params = MakeScaleParams<SHIFT>(picture, dest, width, height);
    if (sizeof(typename Tpixel::Sample) == 1 && params.mStepY.Integer() < kMostRows)
        WalkRows<SHIFT, Tfix, std::uint16_t, std::uint32_t>(params, source, width, height);
    else
        WalkRows<SHIFT, Tfix, std::int64_t, std::int64_t>(params, source, width, height);
}

/// The rows of a picture in memory.
RowSource BufferedRows(const CDataRect& picture)
{
    return [&picture](int first, int /*last*/) {
        return picture.mData + SizeProduct(first, picture.RowBytes());
    };
}

/// Scales a picture to `width` x `height`, taking its rows from `source`. Null when it can't be
/// scaled.
std::unique_ptr<unsigned char[]> ScaleRows(const CDataRect& picture, const RowSource& source,
                                           int width, int height)
{
    const int shift = ChooseShift(picture, width, height);
    if (shift == 0)
        return nullptr;
    auto pixels = NewArray<unsigned char>(width, height, picture.mBits / CHAR_BIT);
#define TESSEL_WALK(SHIFT, TFIX, TPIXEL)                                                          \
    if (picture.mBits == sizeof(TPIXEL) * CHAR_BIT && shift == SHIFT)                             \
        WalkPicture<SHIFT, TFIX<SHIFT>>(picture, source, reinterpret_cast<TPIXEL*>(pixels.get()), \
                                        width, height);
    TESSEL_INSTANCES(TESSEL_WALK)
    return pixels;
}

}  // namespace

template <int SHIFT, typename Tfix, typename Tpixel>
void CGraflib::GetScaledPicturePixel(SScaleParams<SHIFT, Tpixel>* params, int x, int y)
{
    const SSpanT<SHIFT> columns(x, params->mStepX);
    const SSpanT<SHIFT> rows(y, params->mStepY);
    const auto* const pixels = reinterpret_cast<const Tpixel*>(mData);
    const auto rowOf = [=](int row) { return pixels + std::ptrdiff_t{row} * params->mSrcWidth; };
    // The same as mArea, but with all bits: mArea holds 32, too few for millions of source pixels.
    const std::int64_t area = CFixT<SHIFT>::Multiply(params->mStepX.mValue, params->mStepY.mValue);
    if (area == 0) {
        *params->mDest = rowOf(rows.mFirst)[columns.mFirst];
        return;
    }
    Tfix sums;
    for (int row = rows.mFirst; row <= rows.mLast; ++row) {
        for (int column = columns.mFirst; column <= columns.mLast; ++column)
            sums.Add(rowOf(row)[column].mSamples,
                     CFixT<SHIFT>::Multiply(columns.Weight(column), rows.Weight(row)));
    }
    sums.Store(area, params->mDest);
}

template <int SHIFT, typename Tfix, typename Tpixel>
void CGraflib::DownScalePicture(Tpixel* dest, int width, int height)
{
    ShowPixelSize(sizeof(Tpixel));
    if (width > 0 && height > 0)
        WalkPicture<SHIFT, Tfix>(*this, BufferedRows(*this), dest, width, height);
}

unsigned char* CGraflib::DownScaleFix2(int width, int height)
{
    auto pixels = mData ? ScaleRows(*this, BufferedRows(*this), width, height) : nullptr;
    ShowScaled(*this, width, height, pixels != nullptr);
    return pixels ? ReplaceBuffer(std::move(pixels), width, height, mBits) : nullptr;
}

unsigned char* CGraflib::ScaleWhileReading(const CDataRect& opened, const char* name, int width,
                                           int height)
{
    fix2::CRowReader rows(this, opened, name);
    std::unique_ptr<unsigned char[]> pixels;
    try {
        const auto read = [&](int first, int last) { return rows.Rows(first, last); };
        pixels = ScaleRows(opened, read, width, height);
    } catch (const std::bad_alloc&) {
        rows.Finish();  // as when the picture had been read whole before memory ran out
        throw;
    }
    rows.Finish();
    ShowScaled(opened, width, height, pixels != nullptr);
    return pixels ? ReplaceBuffer(std::move(pixels), width, height, opened.mBits) : nullptr;
}

// For programs that call the templates themselves.
#define TESSEL_INSTANCE(SHIFT, TFIX, TPIXEL)                                                 \
    template void CGraflib::DownScalePicture<SHIFT, TFIX<SHIFT>, TPIXEL>(TPIXEL*, int, int); \
    template void CGraflib::GetScaledPicturePixel<SHIFT, TFIX<SHIFT>, TPIXEL>(               \
        SScaleParams<SHIFT, TPIXEL>*, int, int);
TESSEL_INSTANCES(TESSEL_INSTANCE)
