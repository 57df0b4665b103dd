#ifndef TESSEL_GRAFLIB_COLLAPSEDROWS_H
#define TESSEL_GRAFLIB_COLLAPSEDROWS_H

// The innermost level of CGraflib::DownScaleFix2: the source rows under one destination row, summed
// up in flat loops. A part of DownScaleFix2.cpp, which has the drawing; for no other source.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "graflib/FixedPointTypes.h"

namespace {

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

/// full[i] = KEEP * full[i] + part[i], the sum of the full rows, and
/// weighted[i] = full[i] * ONE + top[i] * topWeight + bottom[i] * bottomWeight.
template <bool KEEP, int SHIFT, typename Tsample>
TESSEL_VERSIONS void WeighRows(SCollapsedRows<Tsample>& rows)
{
    using Total = typename SCollapsedRows<Tsample>::Total;
    Total* __restrict full = rows.mFull.data();
    Total* __restrict weighted = rows.mWeighted.data();
    const auto* part = rows.mPart.data();
    const Tsample* top = rows.mTop;
    const Tsample* bottom = rows.mBottom;
    const auto topWeight = static_cast<Total>(rows.mTopWeight);
    const auto bottomWeight = static_cast<Total>(rows.mBottomWeight);
    const std::size_t samples = rows.mFull.size();
    for (std::size_t i = 0; i < samples; ++i) {
        const Total sum = (KEEP ? full[i] : Total{0}) + static_cast<Total>(part[i]);
        full[i] = sum;
        weighted[i] = (sum << SHIFT) + topWeight * static_cast<Total>(top[i]) +
                      bottomWeight * static_cast<Total>(bottom[i]);
    }
}

/// Sums `count` neighbouring full rows and weighs all. The narrow partial sums are what makes this
/// fast: half the bytes, twice the lanes.
template <int SHIFT, typename Tsample>
void SumRows(SCollapsedRows<Tsample>& rows, const Tsample* row, int count)
{
    constexpr int kMost = SCollapsedRows<Tsample>::kRowsPerPart;
    static_assert(kMost * std::numeric_limits<Tsample>::max() <=
                  std::numeric_limits<typename SCollapsedRows<Tsample>::Part>::max());
    const std::size_t samples = rows.mFull.size();
    const bool inParts = count > kMost;
    if (inParts)
        std::fill(rows.mFull.begin(), rows.mFull.end(), 0);
    for (; count > kMost; count -= kMost, row += kMost * samples) {
        SumPart(rows, row, kMost);
        AddRows<true, 1>(rows.mFull.data(), rows.mPart.data(), samples);
    }
    SumPart(rows, row, count);
    inParts ? WeighRows<true, SHIFT>(rows) : WeighRows<false, SHIFT>(rows);
}

/// Renews params->mRows for destination row y. `source` is the source row number params->mBandRow.
template <int SHIFT, typename Tpixel>
[[gnu::noinline]] void RenewRows(SScaleParams<SHIFT, Tpixel>* params,
                                 const typename Tpixel::Sample* source, int y)
{
    auto& rows = params->mRows;
    const std::size_t samples = static_cast<std::size_t>(params->mSrcWidth) * Tpixel::kComponents;
    rows.mPart.resize(samples);
    rows.mFull.resize(samples);
    rows.mWeighted.resize(samples);

    const auto row = [params, source, samples](int index) {
        return source + static_cast<std::size_t>(index - params->mBandRow) * samples;
    };
    const SSpan span = SpanOf(y, params->mStepY);
    // A first row that is covered whole is one of the full rows.
    const bool whole = span.mFirstWeight == CFixT<SHIFT>::kOne;
    const int firstFull = span.mFirst + (whole ? 0 : 1);
    rows.mTop = row(span.mFirst);
    rows.mTopWeight = whole ? 0 : span.mFirstWeight;
    rows.mBottom = row(span.mLastWeight == 0 ? span.mFirst : span.mLast);
    rows.mBottomWeight = span.mLastWeight;
    SumRows<SHIFT>(rows, row(firstFull), std::max(span.mLast, span.mFirst + 1) - firstFull);
    params->mDivisor = CAreaT<SHIFT>(CFixT<SHIFT>::WideProduct(params->mStepX, params->mStepY));
    rows.mY = y;
}

/// The sums for destination row y, worked out where params->mRows holds another row's. `pixels` is
/// the image's buffer, which counts where the rows don't come one by one.
template <int SHIFT, typename Tpixel>
SRowSums<SHIFT, Tpixel> CollapseRows(SScaleParams<SHIFT, Tpixel>* params,
                                     const unsigned char* pixels, int y)
{
    using Sample = typename Tpixel::Sample;
    if (params->mRows.mY != y)
        RenewRows(params, params->mBand ? params->mBand : reinterpret_cast<const Sample*>(pixels),
                  y);
    return SRowSums<SHIFT, Tpixel>(*params);
}

}  // namespace

#endif
