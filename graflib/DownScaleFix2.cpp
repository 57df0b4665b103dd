// The fixed-point area scaler: what a pixel is (GetScaledPicturePixel), and the walk over rows that
// gets the same by a shorter way (WalkRows and DownScaleFix2Row.h).
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
static_assert(16.0 * (1 << 16) * UCHAR_MAX < 0x1p31 && 256.0 * (1 << 8) * UCHAR_MAX < 0x1p31 &&
              1024.0 * (1 << 4) * UCHAR_MAX < 0x1p31);

/// Source pixels to a destination pixel.
float AreaRatio(const CDataRect& source, int width, int height)
{
    return Rounded(Quotient(source.mWidth, width) * Quotient(source.mHeight, height));
}

bool IsDepth(int bits)
{
    return bits == 8 || bits == 16 || bits == 24 || bits == 32;
}

/// The fraction bits for the ratio, or fewer: every position along a side must fit in 32 bits.
/// 0 where the picture can't be scaled.
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

/// Writes what there is to say of a picture that has been scaled or refused.
void ShowScaled(const CDataRect& source, int width, int height, bool isScaled)
{
    if (!IsDepth(source.mBits))
        std::cout << "***** unsupported bitcount:" << source.mBits << std::endl;
    if (!isScaled)
        return;
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

/// Where the walk takes its source rows from, those from `first` to `last`. Each time, `first` is
/// the last row of the time before, or the next.
using RowSource = std::function<const unsigned char*(int first, int last)>;

/// Makes row by row the pixels that GetScaledPicturePixel makes one by one. A Tcolumn takes the sum
/// of a column's full rows, a Tsum that of all its rows, weighted.
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
        if (area == 0) {  // footprints vanish: each pixel is the one in which its own starts
            for (int x = 0; x < width; ++x)
                dest[x] = pixels[SSpanT<SHIFT>(x, params.mStepX).mFirst];
            continue;
        }
        const auto* const top = pixels->mSamples;
        const auto* const bottom = top + static_cast<std::size_t>(below) * length;
        const fix2::SRowSums<typename Tpixel::Sample, Tcolumn, Tsum> row{
            top, bottom, rows.mFirstWeight, rows.mLastWeight, full.data(), weighted.data()};
        fix2::SumRows(full, top + length, std::max(below - 1, 0));
        if (params.mStepX.mValue > CFixT<SHIFT>::kOne)  // else no pixel has full columns
            fix2::WeighRows<SHIFT>(row, weighted.data(), length);
        fix2::MakePixels<SHIFT, Tfix>(row, params.mStepX, area, dest, width);
    }
}

/// Chooses the sums. Narrow ones make the walk fast: half the bytes, twice the lanes.
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

/// The pixels of a picture scaled to `width` x `height`, made out of its rows; null where it can't
/// be scaled.
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
    // mArea, with the bits for which it has no room where one pixel is made of millions.
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
        rows.Finish();  // where there is no room, DownScaleFix2 would find out after that, too
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
