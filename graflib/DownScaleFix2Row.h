#ifndef TESSEL_GRAFLIB_DOWNSCALEFIX2ROW_H
#define TESSEL_GRAFLIB_DOWNSCALEFIX2ROW_H

// The innermost level of the fixed-point scaler: it makes one destination row out of the source
// rows under it. A part of DownScaleFix2.cpp, which has the drawing: no other source includes it.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "graflib/FixedPointTypes.h"

namespace fix2 {

// GCC compiles the flat loops twice, for every x86-64 machine and for those with wider registers.
// The program picks one version when it starts. All numbers are integers, so both give the same
// results. (Clang 14 can't do this for templates.)
#if defined(__x86_64__) && defined(__gnu_linux__) && !defined(__clang__)
#define TESSEL_VERSIONS [[gnu::target_clones("avx2", "default")]]
#else
#define TESSEL_VERSIONS
#endif

/// sums[i] = KEEP * sums[i] + the samples at i of ROWS neighbouring rows. Several rows at once save
/// most of the reads and writes of the sums.
template <bool KEEP, std::size_t ROWS, typename Tcolumn, typename Tsample>
TESSEL_VERSIONS static void AddRows(Tcolumn* __restrict sums, const Tsample* row,
                                    std::size_t length)
{
    for (std::size_t i = 0; i < length; ++i) {
        Tcolumn sum = KEEP ? sums[i] : Tcolumn{0};
        for (std::size_t r = 0; r < ROWS; ++r)
            sum = static_cast<Tcolumn>(sum + row[r * length + i]);
        sums[i] = sum;
    }
}

/// Stores the sums of `count` neighbouring rows, the first of which is `row`.
template <typename Tcolumn, typename Tsample>
void SumRows(std::vector<Tcolumn>& sums, const Tsample* row, int count)
{
    constexpr int kAtOnce = 4;
    static constexpr decltype(&AddRows<false, 0, Tcolumn, Tsample>) kFirst[kAtOnce] = {
        AddRows<false, 0>, AddRows<false, 1>, AddRows<false, 2>, AddRows<false, 3>};
    const std::size_t length = sums.size();
    const int rest = count % kAtOnce;
    kFirst[rest](sums.data(), row, length);
    for (row += static_cast<std::size_t>(rest) * length; count >= kAtOnce; count -= kAtOnce) {
        AddRows<true, kAtOnce>(sums.data(), row, length);
        row += kAtOnce * length;
    }
}

/// Divides the sums of 8-bit samples by a footprint's area, halves rounded up, without a division.
///
/// With d = 2 * area and n = 2 * sum + area, the result is n / d, cut. Store multiplies n by
/// m = 2^kBits / d, cut, plus 1, and drops kBits bits. The results are the same:
///
///     n <= 255.5 * d         because a footprint's weights add up to at most its area
///     m <= 2^kBits / d + 1   so the product is above n / d, by at most n / 2^kBits
///     n / 2^kBits < 1 / d    because 256 * d * d <= 2^kBits (the first assertion below), and
///                            n / d is at least 1 / d below the next whole number
///     n * m < 2^64           because 255.5 * (2^kBits + d) < 2^64 (the second assertion)
///
/// Larger areas and samples of 16 bits are divided.
template <typename Tpixel>
class CDivisor
{
public:
    explicit CDivisor(std::int64_t area)
        : mArea(area), mReciprocal(kOne / static_cast<std::uint64_t>(2 * area) + 1)
    {
    }

    template <typename Tfix>
    void Store(const Tfix& sums, Tpixel* dest) const
    {
        if (sizeof(typename Tpixel::Sample) > 1 || mArea > kMostArea)
            return sums.Store(mArea, dest);
        for (int k = 0; k < Tpixel::kComponents; ++k) {
            const auto dividend = static_cast<std::uint64_t>(2 * sums.mSums[k] + mArea);
            dest->mSamples[k] =
                static_cast<typename Tpixel::Sample>(dividend * mReciprocal >> kBits);
        }
    }

private:
    static constexpr int kBits = 56;
    static constexpr std::uint64_t kOne = std::uint64_t{1} << kBits;
    static constexpr std::int64_t kMostArea = 1 << 23;
    static_assert(256 * (2 * kMostArea) * (2 * kMostArea) <= std::int64_t{1} << kBits);
    static_assert(kOne / 2 + kMostArea <= UINT64_MAX / 511);  // 511 being 2 * 255.5

    std::int64_t mArea;
    std::uint64_t mReciprocal;
};

/// The source rows under a destination row and their sums. Functions take it by value: behind a
/// pointer, its fields would be read again after every pixel that is stored.
template <typename Tsample, typename Tcolumn, typename Tsum>
struct SRowSums
{
    const Tsample* mTop;     ///< the first row
    const Tsample* mBottom;  ///< the last one
    std::int32_t mTopWeight;
    std::int32_t mBottomWeight;  ///< 0 where there is but one row
    const Tcolumn* mFull;        ///< the sums of the rows between
    const Tsum* mWeighted;       ///< the sums of all rows, each times its weight
};

/// Fills `weighted`, which is row.mWeighted.
template <int SHIFT, typename Trow, typename Tsum>
TESSEL_VERSIONS static void WeighRows(const Trow row, Tsum* __restrict weighted, std::size_t length)
{
    const auto topWeight = static_cast<Tsum>(row.mTopWeight);
    const auto bottomWeight = static_cast<Tsum>(row.mBottomWeight);
    for (std::size_t i = 0; i < length; ++i)
        weighted[i] = (static_cast<Tsum>(row.mFull[i]) << SHIFT) +
                      static_cast<Tsum>(row.mTop[i]) * topWeight +
                      static_cast<Tsum>(row.mBottom[i]) * bottomWeight;
}

/// Makes the pixels of a destination row. Not inlined, because its loops need all registers.
template <int SHIFT, typename Tfix, typename Trow, typename Tpixel>
[[gnu::noinline]] void MakePixels(const Trow row, CFixT<SHIFT> step, std::int64_t area,
                                  Tpixel* dest, int width)
{
    const CDivisor<Tpixel> divisor(area);
    for (int x = 0; x < width; ++x) {
        const SSpanT<SHIFT> columns(x, step);
        Tfix sums;
        const auto addEdge = [&](int column, std::int32_t weight) {
            const std::ptrdiff_t i = std::ptrdiff_t{column} * Tpixel::kComponents;
            sums.Add(row.mFull + i, weight);
            sums.Add(row.mTop + i, CFixT<SHIFT>::Multiply(weight, row.mTopWeight));
            sums.Add(row.mBottom + i, CFixT<SHIFT>::Multiply(weight, row.mBottomWeight));
        };
        addEdge(columns.mFirst, columns.mFirstWeight);
        for (int column = columns.mFirst + 1; column < columns.mLast; ++column)
            sums.Add(row.mWeighted + std::ptrdiff_t{column} * Tpixel::kComponents, 1);
        if (columns.mLast != columns.mFirst)
            addEdge(columns.mLast, columns.mLastWeight);
        divisor.Store(sums, dest + x);
    }
}

}  // namespace fix2

#endif
