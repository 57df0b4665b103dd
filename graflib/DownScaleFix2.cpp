// The fixed-point area scaler, in three levels: the picture (DownScaleFix2 and DownScalePicture, or
// DownScaleLines and DownScaleBand), the pixel (GetScaledPicturePixel), and the collapse of the
// source rows under one destination row (CollapsedRows.h).
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
// destination pixel: it is formed once per destination row (mWeighted), in flat loops. In the first
// and last column the cut of the shift matters only at the corners, as the weight of a full row is
// wx itself: such a column is wx times the sum of the full rows (mFull) plus its two corners. Both
// sums make up the cache in the parameter record that is renewed when y changes.
#include <algorithm>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <limits>
#include <memory>
#include <utility>

#include "graflib/CGraflib.h"
#include "graflib/CRowBand.h"
#include "graflib/CollapsedRows.h"
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
constexpr int kLowestShift = 2;
static_assert(16.0 * (1 << 16) * UCHAR_MAX < 0x1p31 && 256.0 * (1 << 8) * UCHAR_MAX < 0x1p31 &&
              1024.0 * (1 << 4) * UCHAR_MAX < 0x1p31);

/// The most source rows to a destination row, so that the weighted sum of a column of 8-bit samples
/// fits in 32 bits wherever it is used: where a destination pixel has full columns, the thresholds
/// above keep the column short, except at the lowest precision. (16-bit samples are summed in 64.)
constexpr int kMostRows = 1 << 22;
static_assert(std::int64_t{kMostRows} * (1 << kLowestShift) * UCHAR_MAX <= UINT32_MAX);

/// True when every position along the side fits in 32 bits with SHIFT fraction bits.
constexpr bool FitsSide(int side, int shift)
{
    return side <= INT_MAX >> shift;
}

int ChooseShift(double ratio, int longerSide)
{
    for (const auto& precision : kPrecisions) {
        if (ratio < precision.mRatioLimit && FitsSide(longerSide, precision.mShift))
            return precision.mShift;
    }
    return kLowestShift;
}

/// The part of a weight in two dimensions that is left after the cut.
template <int SHIFT>
std::int32_t CornerWeight(std::int32_t wx, std::int32_t wy)
{
    return static_cast<std::int32_t>((std::int64_t{wx} * wy) >> SHIFT);
}

/// The source index under the middle of a destination column or row.
int Nearest(int index, int destSide, int sourceSide)
{
    const std::int64_t middle = (2 * std::int64_t{index} + 1) * sourceSide;
    return static_cast<int>(std::min<std::int64_t>(
        middle / std::max<std::int64_t>(2 * std::int64_t{destSide}, 1), sourceSide - 1));
}

/// What the average comes to where the footprint's area vanishes.
template <int SHIFT, typename Tpixel>
Tpixel NearestPixel(const SScaleParams<SHIFT, Tpixel>& params, const Tpixel* pixels, int x, int y)
{
    const auto row = std::ptrdiff_t{Nearest(y, params.mDestHeight, params.mSrcHeight)};
    const auto column = std::ptrdiff_t{Nearest(x, params.mDestWidth, params.mSrcWidth)};
    return pixels[row * params.mSrcWidth + column];
}

template <int SHIFT, typename Tpixel>
SScaleParams<SHIFT, Tpixel> MakeParams(const CDataRect& source, Tpixel* dest, int width, int height)
{
    SScaleParams<SHIFT, Tpixel> params;
    params.mSrcWidth = source.mWidth;
    params.mSrcHeight = source.mHeight;
    params.mStepX = CFixT<SHIFT>(source.mWidth, width);
    params.mStepY = CFixT<SHIFT>(source.mHeight, height);
    params.mArea = params.mStepX * params.mStepY;
    params.mDest = dest;
    params.mDestWidth = width;
    params.mDestHeight = height;
    return params;
}

/// Source pixels to a destination pixel.
float AreaRatio(const CDataRect& source, int width, int height)
{
    return Rounded(Quotient(source.mWidth, width) * Quotient(source.mHeight, height));
}

void ShowRatio(const CDataRect& source, int width, int height)
{
    if (source.mBits == 24)
        std::cout << "ScaleFakt=" << AreaRatio(source, width, height) << std::endl;
}

template <typename Tpixel>
void ShowPixelSize()
{
    std::cout << "sizeof(Tpixel)=" << sizeof(Tpixel) << std::endl;
}

}  // namespace

template <int SHIFT, typename Tfix, typename Tpixel>
void CGraflib::GetScaledPicturePixel(const SRowSums<SHIFT, Tpixel>& row, int x, Tpixel* dest)
{
    constexpr int kComponents = Tpixel::kComponents;
    Tfix sums;
    const auto addEdge = [&](int column, std::int32_t weight) {
        const std::ptrdiff_t i = std::ptrdiff_t{column} * kComponents;
        sums.Add(row.mFull + i, weight);
        sums.Add(row.mTop + i, CornerWeight<SHIFT>(weight, row.mTopWeight));
        sums.Add(row.mBottom + i, CornerWeight<SHIFT>(weight, row.mBottomWeight));
    };
    const SSpan span = SpanOf(x, row.mStepX);
    addEdge(span.mFirst, span.mFirstWeight);
    for (int column = span.mFirst + 1; column < span.mLast; ++column)
        sums.Add(row.mWeighted + std::ptrdiff_t{column} * kComponents, 1);
    if (span.mLastWeight != 0)
        addEdge(span.mLast, span.mLastWeight);
    sums.Store(row.mDivisor, dest);
}

template <int SHIFT, typename Tfix, typename Tpixel>
void CGraflib::GetScaledPicturePixel(SScaleParams<SHIFT, Tpixel>* params, int x, int y)
{
    const auto row = CollapseRows(params, mData, y);
    if (row.mDivisor.IsZero())
        *params->mDest = NearestPixel(*params, reinterpret_cast<const Tpixel*>(mData), x, y);
    else
        GetScaledPicturePixel<SHIFT, Tfix>(row, x, params->mDest);
}

template <int SHIFT, typename Tfix, typename Tpixel>
void CGraflib::DownScaleRow(SScaleParams<SHIFT, Tpixel>* params, int y)
{
    const auto row = CollapseRows(params, mData, y);
    const int width = params->mDestWidth;
    if (row.mDivisor.IsZero()) {
        for (int x = 0; x < width; ++x, ++params->mDest)
            GetScaledPicturePixel<SHIFT, Tfix>(params, x, y);
        return;
    }
    for (int x = 0; x < width; ++x)
        GetScaledPicturePixel<SHIFT, Tfix>(row, x, params->mDest + x);
    params->mDest += width;
}

// Flattened, as is the next: a call for every pixel would cost as much as half of its sums.
template <int SHIFT, typename Tfix, typename Tpixel>
[[gnu::flatten]] void CGraflib::DownScalePicture(Tpixel* dest, int width, int height)
{
    ShowPixelSize<Tpixel>();
    if (width <= 0 || height <= 0)
        return;
    auto params = MakeParams<SHIFT>(*this, dest, width, height);
    for (int y = 0; y < height; ++y)
        DownScaleRow<SHIFT, Tfix>(&params, y);
}

/// DownScalePicture of rows that are read meanwhile. False, with none read, where the footprint
/// vanishes: then the rows under a destination row aren't the ones it is made of.
template <int SHIFT, typename Tfix, typename Tpixel>
[[gnu::flatten]] bool CGraflib::DownScaleBand(const char* name, Tpixel* dest, int width, int height)
{
    auto params = MakeParams<SHIFT>(*this, dest, width, height);
    if (CFixT<SHIFT>::WideProduct(params.mStepX, params.mStepY) == 0)
        return false;
    CRowBand band(this, name, params.mStepY.Integer() + 2);
    params.mBand = reinterpret_cast<const typename Tpixel::Sample*>(band.Rows());
    for (int y = 0; y < height; ++y) {
        const SSpan span = SpanOf(y, params.mStepY);
        const int end = span.mLastWeight == 0 ? span.mLast : span.mLast + 1;
        band.MoveTo(span.mFirst, std::max(end, span.mFirst + 1));
        params.mBandRow = span.mFirst;
        DownScaleRow<SHIFT, Tfix>(&params, y);
    }
    band.Skip(mHeight);
    mData = reinterpret_cast<unsigned char*>(dest);  // for Show: the record isn't empty any more
    Show(name);
    mData = nullptr;
    ShowRatio(*this, width, height);
    ShowPixelSize<Tpixel>();
    return true;
}

template <template <int> class Tfix, typename Tpixel>
unsigned char* CGraflib::DownScaleDepth(int width, int height, const char* linesOf)
{
    if (width < 1 || height < 1 || mWidth < 1 || mHeight < 1 || !(mData || linesOf) ||
        !FitsSide(std::max(mWidth, mHeight), kLowestShift) || mHeight / height >= kMostRows)
        return nullptr;
    auto pixels = NewArray<unsigned char>(width, height, sizeof(Tpixel));
    auto* dest = reinterpret_cast<Tpixel*>(pixels.get());
    bool done = true;
    const auto scale = [&]<int SHIFT>() {
        if (linesOf)
            done = DownScaleBand<SHIFT, Tfix<SHIFT>>(linesOf, dest, width, height);
        else
            DownScalePicture<SHIFT, Tfix<SHIFT>>(dest, width, height);
    };
    if (!linesOf)
        ShowRatio(*this, width, height);
    switch (ChooseShift(AreaRatio(*this, width, height), std::max(mWidth, mHeight))) {
        case 16:
            scale.template operator()<16>();
            break;
        case 8:
            scale.template operator()<8>();
            break;
        case 4:
            scale.template operator()<4>();
            break;
        default:
            scale.template operator()<kLowestShift>();
            break;
    }
    return done ? ReplaceBuffer(std::move(pixels), width, height, mBits) : nullptr;
}

/// DownScaleLines of the picture called `linesOf`, or, where that is null, DownScaleFix2.
unsigned char* CGraflib::DownScaleAnyDepth(int width, int height, const char* linesOf)
{
    switch (mBits) {
        case 8:
            return DownScaleDepth<CPixel1fixT, SPixel1i<unsigned char>>(width, height, linesOf);
        case 16:
            return DownScaleDepth<CPixel1fixT, SPixel1i<short>>(width, height, linesOf);
        case 24:
            return DownScaleDepth<CPixel3fixT, SPixel3i<unsigned char>>(width, height, linesOf);
        case 32:
            return DownScaleDepth<CPixel4fixT, SPixel4i<unsigned char>>(width, height, linesOf);
        default:
            if (!linesOf)
                std::cout << "***** unsupported bitcount:" << mBits << std::endl;
            return nullptr;
    }
}

unsigned char* CGraflib::DownScaleFix2(int width, int height)
{
    return DownScaleAnyDepth(width, height, nullptr);
}

unsigned char* CGraflib::DownScaleLines(const char* name, int width, int height)
{
    unsigned char* const pixels = DownScaleAnyDepth(width, height, name);
    CloseReadLine();
    return pixels;
}

// The instances for programs that call the templates themselves.
#define TESSEL_INSTANCE(SHIFT, TFIX, TPIXEL)                                                 \
    template void CGraflib::DownScalePicture<SHIFT, TFIX<SHIFT>, TPIXEL>(TPIXEL*, int, int); \
    template void CGraflib::GetScaledPicturePixel<SHIFT, TFIX<SHIFT>, TPIXEL>(               \
        SScaleParams<SHIFT, TPIXEL>*, int, int);
#define TESSEL_INSTANCES(TFIX, TPIXEL) \
    TESSEL_INSTANCE(16, TFIX, TPIXEL)  \
    TESSEL_INSTANCE(8, TFIX, TPIXEL)   \
    TESSEL_INSTANCE(4, TFIX, TPIXEL)   \
    TESSEL_INSTANCE(2, TFIX, TPIXEL)
TESSEL_INSTANCES(CPixel1fixT, SPixel1i<unsigned char>)
TESSEL_INSTANCES(CPixel1fixT, SPixel1i<short>)
TESSEL_INSTANCES(CPixel3fixT, SPixel3i<unsigned char>)
TESSEL_INSTANCES(CPixel4fixT, SPixel4i<unsigned char>)
