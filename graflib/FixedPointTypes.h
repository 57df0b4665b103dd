#ifndef TESSEL_GRAFLIB_FIXEDPOINTTYPES_H
#define TESSEL_GRAFLIB_FIXEDPOINTTYPES_H

#include <cstdint>

#include "graflib/CDataRect.h"

/// @file
/// The number, accumulator and parameter types of the fixed-point scaler CGraflib::DownScaleFix2.
/// All are plain values that own nothing; different threads may use different objects.

/// A number with SHIFT fraction bits in 32 bits.
template <int SHIFT>
struct CFixT
{
    static constexpr std::int32_t kOne = 1 << SHIFT;  ///< the number 1
    static constexpr std::int32_t kMask = kOne - 1;   ///< the fraction bits
    static constexpr std::int32_t kHalf = kOne / 2;   ///< one half

    std::int32_t mValue = 0;  ///< the number times kOne

    CFixT() = default;
    /// The quotient a / b, cut toward zero. `a` times kOne must fit in 32 bits.
    CFixT(int a, int b) : mValue(static_cast<std::int32_t>(static_cast<double>(a << SHIFT) / b)) {}

    /// The product, rounded down. Of a product beyond 32 bits the low 32 bits remain.
    friend CFixT operator*(CFixT a, CFixT b)
    {
        CFixT product;
        product.mValue = static_cast<std::int32_t>(Multiply(a.mValue, b.mValue));
        return product;
    }
    /// The product of two numbers that are given times kOne, rounded down, with all its bits.
    static std::int64_t Multiply(std::int64_t a, std::int64_t b) { return (a * b) >> SHIFT; }

    /// The number, rounded down.
    std::int32_t Integer() const { return mValue >> SHIFT; }
    /// The number minus Integer(), times kOne.
    std::int32_t Fraction() const { return mValue & kMask; }
};

/// The source columns (or rows) under one destination column (or row), and how much of each is
/// covered. With a step of 0 nothing is covered, and mLast is below mFirst.
template <int SHIFT>
struct SSpanT
{
    int mFirst;                 ///< the first column or row
    int mLast;                  ///< the last one
    std::int32_t mFirstWeight;  ///< the covered part of the first, times CFixT::kOne
    std::int32_t mLastWeight;   ///< the same of the last; 0 when there is only one

    /// For the destination column or row number `index`, counted from 0. `step` source columns or
    /// rows make one destination column or row.
    SSpanT(int index, CFixT<SHIFT> step)
    {
        constexpr std::int32_t kOne = CFixT<SHIFT>::kOne;
        const std::int32_t start = index * step.mValue;
        const std::int32_t end = start + step.mValue;
        mFirst = start >> SHIFT;
        mLast = (end - 1) >> SHIFT;
        mFirstWeight = mLast > mFirst ? (mFirst + 1) * kOne - start : step.mValue;
        mLastWeight = mLast > mFirst ? end - mLast * kOne : 0;
    }

    /// The covered part of column or row `i`, times CFixT::kOne. `i` is from mFirst to mLast.
    std::int32_t Weight(int i) const
    {
        return i == mFirst ? mFirstWeight : i == mLast ? mLastWeight : CFixT<SHIFT>::kOne;
    }
};

/// One sum per component of a pixel. A sum has 64 bits: 32 bits would overflow with 16-bit samples,
/// and with 8-bit samples when a destination pixel covers more than two million source pixels.
template <int SHIFT, int COUNT>
struct CPixelNfixT
{
    std::int64_t mSums[COUNT] = {};  ///< weighted sums, one for each component

    /// Sets all sums to 0.
    void Clear() { *this = {}; }

    /// Adds a source pixel's samples times `weight`.
    template <typename Tsample>
    void Add(const Tsample* samples, std::int64_t weight)
    {
        for (int k = 0; k < COUNT; ++k)
            mSums[k] += weight * samples[k];
    }

    /// Stores each sum divided by the footprint's area, rounded to the nearest number, halves up.
    template <typename Tpixel>
    void Store(std::int64_t area, Tpixel* dest) const
    {
        using Fix = CFixT<SHIFT>;
        for (int k = 0; k < COUNT; ++k) {
            const std::int64_t quotient = mSums[k] * Fix::kOne / area;
            dest->mSamples[k] =
                static_cast<typename Tpixel::Sample>((quotient + Fix::kHalf) >> SHIFT);
        }
    }
};

/// The sums of a pixel of 8 or 16 bits.
template <int SHIFT>
using CPixel1fixT = CPixelNfixT<SHIFT, 1>;
/// The sums of a pixel of 24 bits.
template <int SHIFT>
using CPixel3fixT = CPixelNfixT<SHIFT, 3>;
/// The sums of a pixel of 32 bits.
template <int SHIFT>
using CPixel4fixT = CPixelNfixT<SHIFT, 4>;

/// The values that all destination pixels of a picture share, for CGraflib::GetScaledPicturePixel.
template <int SHIFT, typename Tpixel>
struct SScaleParams
{
    std::int32_t mSrcWidth = 0;   ///< in pixels
    std::int32_t mSrcHeight = 0;  ///< in rows
    CFixT<SHIFT> mStepX;          ///< source columns per destination column
    CFixT<SHIFT> mStepY;          ///< source rows per destination row
    CFixT<SHIFT> mArea;           ///< source pixels per destination pixel: mStepX * mStepY
    Tpixel* mDest = nullptr;      ///< where the next call stores its pixel
};

/// The record for scaling a picture to `width` x `height`, both at least 1, with mDest = `dest`.
/// The picture's sides times 2^SHIFT must fit in 32 bits.
template <int SHIFT, typename Tpixel>
SScaleParams<SHIFT, Tpixel> MakeScaleParams(const CDataRect& source, Tpixel* dest, int width,
                                            int height)
{
    const CFixT<SHIFT> stepX(source.mWidth, width);
    const CFixT<SHIFT> stepY(source.mHeight, height);
    return {source.mWidth, source.mHeight, stepX, stepY, stepX * stepY, dest};
}

#endif
