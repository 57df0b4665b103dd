// Single precision defines the results, even a 254 where all samples are 255. So each operation is
// rounded by itself. (CMakeLists.txt forbids compilers to fuse two operations.)
#include "graflib/CFilterBilinearFloat.h"

#include <algorithm>
#include <cstdint>
#include <iostream>
#include <memory>
#include <new>

#include "graflib/SinglePrecision.h"
#include "util/SizeProduct.h"

namespace {

/// Fully covered samples are added up as integers, this many at a time.
constexpr int kGroup = 4;

/// How far the position lies behind the start of a sample.
template <typename F>
F Distance(F position, int sample)
{
    return Rounded(position - Rounded(static_cast<F>(sample)));
}

/// The weight of the first of the samples under a footprint that starts at `start`.
template <typename F>
F FirstWeight(F start, int first)
{
    return Rounded(static_cast<F>(1.0 - static_cast<double>(Distance(start, first))));
}

/// sum + value * weight, with both operations rounded.
template <typename F>
F AddWeighted(F sum, F value, F weight)
{
    return Rounded(sum + Rounded(value * weight));
}

/// A position cut to a whole number, from 0 to `most`. It is compared before it is converted,
/// because positions along the longest sides are too large for an int.
template <typename F>
int Cut(F position, int most)
{
    if (!(position > 0))
        return 0;
    return position < static_cast<F>(most) ? static_cast<int>(position) : most;
}

/// An array for a picture with one more row and one more column; null when memory runs out.
template <typename T>
std::unique_ptr<T[]> RoomFor(int width, int height, int components)
try {
    return NewArray<T>(std::int64_t{width} + 1, std::int64_t{height} + 1, components);
} catch (const std::bad_alloc&) {
    return nullptr;
}

}  // namespace

template <typename T, typename F>
F CFilterBilinearFloat<T, F>::RowSum(const T* samples, F start, F end) const
{
    // Running sums may drift beyond the last column, where nothing may be read.
    const int last = mSrcWidth - 1;
    const int first = Cut(start, last);
    const F rest = Distance(end, first + 1);
    const int full = Cut(rest, last - first);

    const std::ptrdiff_t step = mComponents;
    const T* sample = samples + first * step;
    F sum = Rounded(static_cast<F>(*sample) * FirstWeight(start, first));
    int left = full;
    for (; left >= kGroup; left -= kGroup, sample += kGroup * step)
        sum = Rounded(sum + static_cast<F>(sample[step] + sample[2 * step] + sample[3 * step] +
                                           sample[4 * step]));
    for (; left > 0; --left, sample += step)
        sum = Rounded(sum + static_cast<F>(sample[step]));
    const F part = std::min(Distance(rest, full), F{1});
    // A footprint within one sample has a negative part: it corrects the first sample's weight.
    const bool next = part > 0 && first + full < last;
    return AddWeighted(sum, static_cast<F>(sample[next ? step : 0]), part);
}

template <typename T, typename F>
void CFilterBilinearFloat<T, F>::BilinearStageX(int component)
{
    F* result = mResultVectorX;
    for (int row = 0; row < mSrcHeight; ++row) {
        const T* samples = mSource + std::ptrdiff_t{row} * mSrcLineWidth * mComponents + component;
        F start = 0;
        F end = mScaleX;
        for (int i = 0; i < mDstWidth; ++i) {
            *result++ = RowSum(samples, start, end);
            start = Rounded(start + mScaleX);
            end = Rounded(end + mScaleX);
        }
    }
}

/// Fills `sums` with the weighted sums of the rows of mResultVectorX from `start` to `end`.
template <typename T, typename F>
void CFilterBilinearFloat<T, F>::AddRows(F* sums, F start, F end) const
{
    const int last = mSrcHeight - 1;
    const auto row = [this](int index) {
        return mResultVectorX + std::ptrdiff_t{index} * mDstWidth;
    };
    int index = Cut(start, last);
    const F weight = FirstWeight(start, index);
    for (int i = 0; i < mDstWidth; ++i)
        sums[i] = Rounded(row(index)[i] * weight);
    F rest = Distance(end, index + 1);
    for (; rest >= 1 && index < last; rest = Rounded(rest - 1)) {
        const F* next = row(++index);
        for (int i = 0; i < mDstWidth; ++i)
            sums[i] = Rounded(sums[i] + next[i]);
    }
    rest = std::min(rest, F{1});
    const F* partial = row(rest > 0 ? std::min(index + 1, last) : index);
    for (int i = 0; i < mDstWidth; ++i)
        sums[i] = AddWeighted(sums[i], partial[i], rest);
}

template <typename T, typename F>
void CFilterBilinearFloat<T, F>::BilinearStageY(int component)
{
    const F area = Rounded(mScaleX * mScaleY);
    // mResultVectorX has room for one row more than the horizontal stage fills.
    F* const sums = mResultVectorX + std::ptrdiff_t{mSrcHeight} * mDstWidth;
    T* result = mResultVectorY + component;
    F start = 0;
    F end = mScaleY;
    for (int j = 0; j < mDstHeight; ++j) {
        AddRows(sums, start, end);
        for (int i = 0; i < mDstWidth; ++i, result += mComponents)
            *result = static_cast<T>(static_cast<int>(Rounded(sums[i] / area)));
        start = Rounded(start + mScaleY);
        end = Rounded(end + mScaleY);
    }
}

template <typename T, typename F>
void CFilterBilinearFloat<T, F>::RunStages()
{
    for (int component = 0; component < mComponents; ++component) {
        if (mProgress)
            mProgress();
        BilinearStageX(component);
        if (mProgress)
            mProgress();
        BilinearStageY(component);
    }
}

template <typename T, typename F>
T* CFilterBilinearFloat<T, F>::DownScale(T* source, int srcWidth, int srcHeight, int dstWidth,
                                         int dstHeight, int components, int srcLineWidth,
                                         void (*progress)())
{
    if (std::min({srcWidth, srcHeight, dstWidth, dstHeight, components}) < 1)
        return nullptr;
    const auto sums = RoomFor<F>(dstWidth, srcHeight, components);
    auto result = RoomFor<T>(dstWidth, dstHeight, components);
    // The spelling stays as it is, for programs that look for these lines.
    if (!sums)
        std::cout << "***** insufficent memory in DownScale mResultVectorX=NULL" << std::endl;
    if (!result)
        std::cout << "***** insufficent memory in DownScale mResultVectorY=NULL" << std::endl;
    if (!sums || !result)
        return nullptr;
    mSrcWidth = srcWidth;
    mSrcHeight = srcHeight;
    mSrcLineWidth = srcLineWidth;
    mDstWidth = dstWidth;
    mDstHeight = dstHeight;
    mComponents = components;
    mScaleX = Quotient(srcWidth, dstWidth);
    mScaleY = Quotient(srcHeight, dstHeight);
    mResultVectorX = sums.get();
    mResultVectorY = result.get();
    mSource = source;
    mProgress = progress;
    RunStages();
    mResultVectorX = nullptr;
    mResultVectorY = nullptr;
    return result.release();
}

template class CFilterBilinearFloat<unsigned char, float>;
template class CFilterBilinearFloat<short, float>;
