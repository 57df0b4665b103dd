// The fixed-point area scaler, in three levels: the picture (DownScaleFix2, DownScalePicture), the
// pixel (GetScaledPicturePixel), and the collapse of the source rows under one destination row.
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
#include <iostream>
#include <limits>

#include "graflib/CGraflib.h"
#include "graflib/FixedPointTypes.h"
#include "graflib/PixelTypes.h"

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

/// The source columns or rows under a destination column or row. Between the first and the last,
/// each counts in full.
struct SSpan
{
    int mFirst;
    int mLast;
    std::int32_t mFirstWeight;
    std::int32_t mLastWeight;  ///< 0: the last isn't touched, and may lie outside the picture
};

template <int SHIFT>
SSpan SpanOf(int index, CFixT<SHIFT> step)
{
    CFixT<SHIFT> start;
    CFixT<SHIFT> end;
    start.mValue = index * step.mValue;
    end.mValue = start.mValue + step.mValue;
    if (start.Integer() == end.Integer())
        return {start.Integer(), end.Integer(), step.mValue, 0};
    return {start.Integer(), end.Integer(), CFixT<SHIFT>::kOne - start.Fraction(), end.Fraction()};
}

// The flat loops, compiled once for every x86-64 and once for those with wider registers; the
// machine picks its version when the program starts. All is integers: the results are the same.
// (Clang 14 can't do this for templates.)
#if defined(__x86_64__) && defined(__gnu_linux__) && !defined(__clang__)
#define TESSEL_VERSIONS [[gnu::target_clones("avx2", "default")]]
#else
#define TESSEL_VERSIONS
#endif

/// sums[i] = KEEP * sums[i] + the samples at i of ROWS neighbouring rows.
template <bool KEEP, int ROWS, typename Tpart, typename Tsample>
TESSEL_VERSIONS void AddRows(Tpart* __restrict sums, const Tsample* row, std::size_t samples)
{
    for (std::size_t i = 0; i < samples; ++i) {
        Tpart sum = KEEP ? sums[i] : Tpart{0};
        for (std::size_t r = 0; r < ROWS; ++r)
            sum = static_cast<Tpart>(sum + row[r * samples + i]);
        sums[i] = sum;
    }
}

/// Rows added at once, which saves most of the traffic to and from the sums.
constexpr int kAtOnce = 4;

/// Sums `count` neighbouring rows, at most kRowsPerPart, into rows.mPart.
template <typename Tsample>
void SumPart(SCollapsedRows<Tsample>& rows, const Tsample* row, int count)
{
    auto* sums = rows.mPart.data();
    const std::size_t samples = rows.mPart.size();
    const int rest = count % kAtOnce;
    switch (rest) {
        case 0:
            AddRows<false, 0>(sums, row, samples);
            break;
        case 1:
            AddRows<false, 1>(sums, row, samples);
            break;
        case 2:
            AddRows<false, 2>(sums, row, samples);
            break;
        default:
            AddRows<false, 3>(sums, row, samples);
            break;
    }
    row += static_cast<std::size_t>(rest) * samples;
    for (int i = rest; i < count; i += kAtOnce, row += kAtOnce * samples)
        AddRows<true, kAtOnce>(sums, row, samples);
}

/// Sums `count` neighbouring rows into rows.mFull. The narrow partial sums are what makes this
/// fast: half the bytes, twice the lanes.
template <typename Tsample>
void SumFullRows(SCollapsedRows<Tsample>& rows, const Tsample* row, int count)
{
    using Rows = SCollapsedRows<Tsample>;
    static_assert(Rows::kRowsPerPart * std::numeric_limits<Tsample>::max() <=
                  std::numeric_limits<typename Rows::Part>::max());
    const std::size_t samples = rows.mFull.size();
    SumPart(rows, row, std::min(count, Rows::kRowsPerPart));
    AddRows<false, 1>(rows.mFull.data(), rows.mPart.data(), samples);
    for (count -= Rows::kRowsPerPart; count > 0; count -= Rows::kRowsPerPart) {
        row += Rows::kRowsPerPart * samples;
        SumPart(rows, row, std::min(count, Rows::kRowsPerPart));
        AddRows<true, 1>(rows.mFull.data(), rows.mPart.data(), samples);
    }
}

/// weighted = full * ONE + top * topWeight + bottom * bottomWeight, sample by sample.
template <int SHIFT, typename Tsample, typename Ttotal>
TESSEL_VERSIONS void WeighRows(Ttotal* __restrict weighted, const Ttotal* full, const Tsample* top,
                               const Tsample* bottom, Ttotal topWeight, Ttotal bottomWeight,
                               std::size_t samples)
{
    for (std::size_t i = 0; i < samples; ++i)
        weighted[i] = (full[i] << SHIFT) + topWeight * static_cast<Ttotal>(top[i]) +
                      bottomWeight * static_cast<Ttotal>(bottom[i]);
}

/// Renews params->mRows for destination row y.
template <int SHIFT, typename Tpixel>
[[gnu::noinline]] void CollapseRows(SScaleParams<SHIFT, Tpixel>* params,
                                    const typename Tpixel::Sample* source, int y)
{
    auto& rows = params->mRows;
    const std::size_t samples = static_cast<std::size_t>(params->mSrcWidth) * Tpixel::kComponents;
    rows.mPart.resize(samples);
    rows.mFull.resize(samples);
    rows.mWeighted.resize(samples);

    const auto row = [source, samples](int index) {
        return source + static_cast<std::size_t>(index) * samples;
    };
    const SSpan span = SpanOf(y, params->mStepY);
    // A first row that is covered whole is one of the full rows.
    const bool whole = span.mFirstWeight == CFixT<SHIFT>::kOne;
    const int firstFull = span.mFirst + (whole ? 0 : 1);
    rows.mTop = row(span.mFirst);
    rows.mTopWeight = whole ? 0 : span.mFirstWeight;
    rows.mBottom = row(span.mLastWeight == 0 ? span.mFirst : span.mLast);
    rows.mBottomWeight = span.mLastWeight;
    SumFullRows(rows, row(firstFull), std::max(span.mLast, span.mFirst + 1) - firstFull);
    using Total = typename SCollapsedRows<typename Tpixel::Sample>::Total;
    WeighRows<SHIFT>(rows.mWeighted.data(), rows.mFull.data(), rows.mTop, rows.mBottom,
                     static_cast<Total>(rows.mTopWeight), static_cast<Total>(rows.mBottomWeight),
                     samples);
    params->mDivisor = CAreaT<SHIFT>(CFixT<SHIFT>::WideProduct(params->mStepX, params->mStepY));
    rows.mY = y;
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

}  // namespace

template <int SHIFT, typename Tfix, typename Tpixel>
void CGraflib::GetScaledPicturePixel(SScaleParams<SHIFT, Tpixel>* params, int x, int y)
{
    using Sample = typename Tpixel::Sample;
    constexpr int kComponents = Tpixel::kComponents;
    const auto* source = reinterpret_cast<const Sample*>(mData);

    if (params->mRows.mY != y)
        CollapseRows(params, source, y);
    if (params->mDivisor.IsZero()) {
        *params->mDest = NearestPixel(*params, reinterpret_cast<const Tpixel*>(mData), x, y);
        return;
    }

    const auto& rows = params->mRows;
    const auto* const full = rows.mFull.data();
    const auto* const weighted = rows.mWeighted.data();
    const Sample* const top = rows.mTop;
    const Sample* const bottom = rows.mBottom;
    const std::int32_t topWeight = rows.mTopWeight;
    const std::int32_t bottomWeight = rows.mBottomWeight;
    Tfix sums;
    const auto addEdge = [=, &sums](int column, std::int32_t weight) {
        const std::ptrdiff_t i = std::ptrdiff_t{column} * kComponents;
        sums.Add(full + i, weight);
        sums.Add(top + i, CornerWeight<SHIFT>(weight, topWeight));
        sums.Add(bottom + i, CornerWeight<SHIFT>(weight, bottomWeight));
    };
    const SSpan span = SpanOf(x, params->mStepX);
    addEdge(span.mFirst, span.mFirstWeight);
    for (int column = span.mFirst + 1; column < span.mLast; ++column)
        sums.Add(weighted + std::ptrdiff_t{column} * kComponents, 1);
    if (span.mLastWeight != 0)
        addEdge(span.mLast, span.mLastWeight);
    sums.Store(params->mDivisor, params->mDest);
}

// Flattened: a call for every pixel would cost as much as half of its sums.
template <int SHIFT, typename Tfix, typename Tpixel>
[[gnu::flatten]] void CGraflib::DownScalePicture(Tpixel* dest, int width, int height)
{
    std::cout << "sizeof(Tpixel)=" << sizeof(Tpixel) << std::endl;
    if (width <= 0 || height <= 0)
        return;
    SScaleParams<SHIFT, Tpixel> params;
    params.mSrcWidth = mWidth;
    params.mSrcHeight = mHeight;
    params.mStepX = CFixT<SHIFT>(mWidth, width);
    params.mStepY = CFixT<SHIFT>(mHeight, height);
    params.mArea = params.mStepX * params.mStepY;
    params.mDest = dest;
    params.mDestWidth = width;
    params.mDestHeight = height;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            GetScaledPicturePixel<SHIFT, Tfix, Tpixel>(&params, x, y);
            ++params.mDest;
        }
    }
}

template <template <int> class Tfix, typename Tpixel>
unsigned char* CGraflib::DownScaleDepth(int width, int height)
{
    if (width < 1 || height < 1 || mWidth < 1 || mHeight < 1 || !mData ||
        !FitsSide(std::max(mWidth, mHeight), kLowestShift) || mHeight / height >= kMostRows)
        return nullptr;
    auto pixels = std::make_unique_for_overwrite<unsigned char[]>(
        static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * sizeof(Tpixel));
    auto* dest = reinterpret_cast<Tpixel*>(pixels.get());
    const float ratio = (static_cast<float>(mWidth) / static_cast<float>(width)) *
                        (static_cast<float>(mHeight) / static_cast<float>(height));
    if (mBits == 24)
        std::cout << "ScaleFakt=" << ratio << std::endl;
    switch (ChooseShift(ratio, std::max(mWidth, mHeight))) {
        case 16:
            DownScalePicture<16, Tfix<16>>(dest, width, height);
            break;
        case 8:
            DownScalePicture<8, Tfix<8>>(dest, width, height);
            break;
        case 4:
            DownScalePicture<4, Tfix<4>>(dest, width, height);
            break;
        default:
            DownScalePicture<kLowestShift, Tfix<kLowestShift>>(dest, width, height);
            break;
    }
    return ReplaceBuffer(std::move(pixels), width, height, mBits);
}

unsigned char* CGraflib::DownScaleFix2(int width, int height)
{
    switch (mBits) {
        case 8:
            return DownScaleDepth<CPixel1fixT, SPixel1i<unsigned char>>(width, height);
        case 16:
            return DownScaleDepth<CPixel1fixT, SPixel1i<short>>(width, height);
        case 24:
            return DownScaleDepth<CPixel3fixT, SPixel3i<unsigned char>>(width, height);
        case 32:
            return DownScaleDepth<CPixel4fixT, SPixel4i<unsigned char>>(width, height);
        default:
            std::cout << "***** unsupported bitcount:" << mBits << std::endl;
            return nullptr;
    }
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
