#include "bench/ScalerDefinition.h"

#include <cstdint>

namespace {

constexpr int kComponents = 3;

/// The source columns or rows, first to last, under a destination column or row. The last may be
/// covered by nothing.
template <int SHIFT>
struct SCover
{
    static constexpr int kOne = 1 << SHIFT;

    SCover(int index, int step)
        : mStart(index * step),
          mEnd(mStart + step),
          mFirst(mStart >> SHIFT),
          mLast((mEnd - 1) >> SHIFT)
    {
    }

    int Weight(int i) const
    {
        const int from = i == mFirst ? mStart & (kOne - 1) : 0;
        const int to = i == mLast ? mEnd - (mLast << SHIFT) : kOne;
        return to - from;
    }

    int mStart, mEnd, mFirst, mLast;
};

template <int SHIFT>
void Scale(const CDataRect& source, int width, int height, unsigned char* dest)
{
    const int stepX = static_cast<int>((std::int64_t{source.mWidth} << SHIFT) / width);
    const int stepY = static_cast<int>((std::int64_t{source.mHeight} << SHIFT) / height);
    const std::int64_t area = (std::int64_t{stepX} * stepY) >> SHIFT;
    for (int y = 0; y < height; ++y) {
        const SCover<SHIFT> rows(y, stepY);
        for (int x = 0; x < width; ++x) {
            const SCover<SHIFT> columns(x, stepX);
            std::int32_t sums[kComponents] = {};
            for (int row = rows.mFirst; row <= rows.mLast; ++row) {
                const int wy = rows.Weight(row);
                const unsigned char* pixel = source.mData +
                                             static_cast<std::size_t>(row) * source.RowBytes() +
                                             std::ptrdiff_t{columns.mFirst} * kComponents;
                for (int column = columns.mFirst; column <= columns.mLast; ++column) {
                    const auto weight = static_cast<std::int32_t>(
                        (std::int64_t{columns.Weight(column)} * wy) >> SHIFT);
                    for (int k = 0; k < kComponents; ++k)
                        sums[k] += weight * *pixel++;
                }
            }
            for (const std::int32_t sum : sums) {
                const std::int64_t quotient = (std::int64_t{sum} << SHIFT) / area;
                *dest++ = static_cast<unsigned char>((quotient + SCover<SHIFT>::kOne / 2) >> SHIFT);
            }
        }
    }
}

}  // namespace

void ScaleByDefinition(const CDataRect& source, int width, int height, unsigned char* dest)
{
    const float ratio = (static_cast<float>(source.mWidth) / static_cast<float>(width)) *
                        (static_cast<float>(source.mHeight) / static_cast<float>(height));
    const auto scale = ratio < 16     ? Scale<16>
                       : ratio < 256  ? Scale<8>
                       : ratio < 1024 ? Scale<4>
                                      : Scale<2>;
    scale(source, width, height, dest);
}
