#ifndef TESSEL_GRAFLIB_FIXEDPOINTTYPES_H
#define TESSEL_GRAFLIB_FIXEDPOINTTYPES_H

#include <cstdint>
#include <type_traits>
#include <vector>

/// The number, accumulator and parameter types of the fixed-point scaler CGraflib::DownScaleFix2.
/// All are plain values; a parameter record is used by one thread at a time.

/// A number with SHIFT fraction bits in 32 bits.
template <int SHIFT>
struct CFixT
{
    static constexpr std::int32_t kOne = 1 << SHIFT;
    static constexpr std::int32_t kMask = kOne - 1;
    static constexpr std::int32_t kHalf = kOne / 2;

    std::int32_t mValue = 0;  ///< the number times kOne

    CFixT() = default;
    /// The quotient a / b, cut toward zero. `a` must leave room for the fraction bits.
    CFixT(int a, int b) : mValue(static_cast<std::int32_t>(static_cast<double>(a << SHIFT) / b)) {}

    /// The product, cut downward; beyond 32 bits its low 32 bits remain.
    friend CFixT operator*(CFixT a, CFixT b)
    {
        CFixT product;
        product.mValue = static_cast<std::int32_t>(WideProduct(a, b));
        return product;
    }

    /// The product with all its bits.
    static std::int64_t WideProduct(CFixT a, CFixT b)
    {
        return (std::int64_t{a.mValue} * b.mValue) >> SHIFT;
    }

    std::int32_t Integer() const { return mValue >> SHIFT; }
    std::int32_t Fraction() const { return mValue & kMask; }
};

/// A footprint's area, by which the sums of a picture's samples are divided.
///
/// A quotient with SHIFT fraction bits, halves rounded up, is floor((2 * sum + area) / (2 * area))
/// for sums from 0 on. This division is a product with the reciprocal, rounded up: that adds less
/// than dividend / 2^64, and a quotient by 2 * area is at least 1 / (2 * area) short of the next
/// whole number, so the result is exact while dividend * 2 * area stays below 2^64.
template <int SHIFT>
class CAreaT
{
public:
    CAreaT() = default;
    explicit CAreaT(std::int64_t area) : mArea(area)
    {
        if (area != 0)
            mReciprocal = ~std::uint64_t{0} / static_cast<std::uint64_t>(2 * area) + 1;
    }

    bool IsZero() const { return mArea == 0; }

    /// The mean of samples of type Tsample whose weighted sum is `sum`.
    template <typename Tsample>
    Tsample Mean(std::int64_t sum) const
    {
        // The sum is at most the area times the largest sample, which bounds the dividend.
        constexpr std::int64_t kExact = sizeof(Tsample) == 1 ? 1 << 27 : 1 << 23;
        if ((std::is_signed_v<Tsample> && sum < 0) || mArea >= kExact)
            return static_cast<Tsample>(LongMean(sum));
        __extension__ using Wide = unsigned __int128;
        const Wide dividend = static_cast<std::uint64_t>(2 * sum + mArea);
        return static_cast<Tsample>(dividend * mReciprocal >> 64);
    }

private:
    std::int64_t LongMean(std::int64_t sum) const
    {
        return (sum * CFixT<SHIFT>::kOne / mArea + CFixT<SHIFT>::kHalf) >> SHIFT;
    }

    std::int64_t mArea = 0;
    std::uint64_t mReciprocal = 0;
};

/// One accumulator per component of a pixel. 64 bits, because 32 would overflow with 16-bit
/// samples, and with 8-bit ones where a pixel stands for more than two million.
template <int SHIFT, int COUNT>
struct CPixelNfixT
{
    std::int64_t mSums[COUNT] = {};

    void Clear()
    {
        for (std::int64_t& sum : mSums)
            sum = 0;
    }

    /// Adds a source pixel's samples times `weight`.
    template <typename Tsample>
    void Add(const Tsample* samples, std::int32_t weight)
    {
        for (int k = 0; k < COUNT; ++k)
            mSums[k] += std::int64_t{weight} * samples[k];
    }

    /// Writes each sum divided by the footprint's area, halves rounded up.
    template <typename Tpixel>
    void Store(const CAreaT<SHIFT>& area, Tpixel* dest) const
    {
        for (int k = 0; k < COUNT; ++k)
            dest->mSamples[k] = area.template Mean<typename Tpixel::Sample>(mSums[k]);
    }
};

template <int SHIFT>
using CPixel1fixT = CPixelNfixT<SHIFT, 1>;
template <int SHIFT>
using CPixel3fixT = CPixelNfixT<SHIFT, 3>;
template <int SHIFT>
using CPixel4fixT = CPixelNfixT<SHIFT, 4>;

/// The source rows under one destination row, summed up once and then used by all its pixels.
/// Sums are per sample: `width * components` of them.
template <typename Tsample>
struct SCollapsedRows
{
    /// Twice as wide as a sample: room for the sum of kRowsPerPart samples.
    using Part = std::conditional_t<sizeof(Tsample) == 1, std::uint16_t, std::int32_t>;
    static constexpr int kRowsPerPart = 256;
    using Total = std::conditional_t<sizeof(Tsample) == 1, std::uint32_t, std::int64_t>;

    int mY = -1;                       ///< the destination row; -1 while there is none
    const Tsample* mTop = nullptr;     ///< the first row, of which mTopWeight is covered
    const Tsample* mBottom = nullptr;  ///< the last row, of which mBottomWeight is covered
    std::int32_t mTopWeight = 0;
    std::int32_t mBottomWeight = 0;
    std::vector<Part> mPart;       ///< work space: the sum of up to kRowsPerPart rows
    std::vector<Total> mFull;      ///< the sum of the rows between top and bottom
    std::vector<Total> mWeighted;  ///< the sum of all rows, each times its weight
};

/// What CGraflib::DownScalePicture works out once and CGraflib::GetScaledPicturePixel uses for
/// every pixel. A record belongs to one picture whose pixels don't change meanwhile.
template <int SHIFT, typename Tpixel>
struct SScaleParams
{
    int mSrcWidth = 0;        ///< in pixels
    int mSrcHeight = 0;       ///< in rows
    CFixT<SHIFT> mStepX;      ///< source columns per destination column
    CFixT<SHIFT> mStepY;      ///< source rows per destination row
    CFixT<SHIFT> mArea;       ///< source pixels per destination pixel
    Tpixel* mDest = nullptr;  ///< the destination pixel that the next call writes

    CAreaT<SHIFT> mDivisor;  ///< mArea without its limit to 32 bits; renewed with mRows
    int mDestWidth = 0;      ///< in pixels; the target size matters only where mArea vanishes
    int mDestHeight = 0;
    SCollapsedRows<typename Tpixel::Sample> mRows;
    /// The source row mBandRow and those behind it, where rows come one by one; null where all of
    /// them are in the image's buffer.
    const typename Tpixel::Sample* mBand = nullptr;
    int mBandRow = 0;
};

/// What the pixels of one destination row share. Made for each row and held by value: a record
/// behind a pointer would have to be read again for every pixel, as the bytes stored for the one
/// before may be anything, and that took a seventh of the time.
template <int SHIFT, typename Tpixel>
struct SRowSums
{
    using Sample = typename Tpixel::Sample;
    using Total = typename SCollapsedRows<Sample>::Total;

    explicit SRowSums(const SScaleParams<SHIFT, Tpixel>& params)
        : mFull(params.mRows.mFull.data()),
          mWeighted(params.mRows.mWeighted.data()),
          mTop(params.mRows.mTop),
          mBottom(params.mRows.mBottom),
          mTopWeight(params.mRows.mTopWeight),
          mBottomWeight(params.mRows.mBottomWeight),
          mStepX(params.mStepX),
          mDivisor(params.mDivisor)
    {
    }

    const Total* mFull;
    const Total* mWeighted;
    const Sample* mTop;
    const Sample* mBottom;
    std::int32_t mTopWeight;
    std::int32_t mBottomWeight;
    CFixT<SHIFT> mStepX;
    CAreaT<SHIFT> mDivisor;
};

#endif
