#ifndef TESSEL_TESTS_GRAFLIB_SLOWSCALER_H
#define TESSEL_TESTS_GRAFLIB_SLOWSCALER_H

// The area scaler as it is defined, pixel by pixel and weight by weight, however slow.
#include <algorithm>
#include <cstdint>
#include <vector>

#include "graflib/SinglePrecision.h"

inline int SlowShift(int width, int height, int newWidth, int newHeight)
{
    const float ratio = Rounded(Quotient(width, newWidth) * Quotient(height, newHeight));
    const bool isShort = std::max(width, height) < 1 << 15;
    return ratio < 16 && isShort ? 16 : ratio < 256 ? 8 : ratio < 1024 ? 4 : 2;
}

template <typename Sample>
std::vector<Sample> SlowScale(const std::vector<Sample>& source, int width, int height,
                              int components, int newWidth, int newHeight, int shift)
{
    using Wide = std::int64_t;
    const Wide stepX = (Wide{width} << shift) / newWidth;
    const Wide stepY = (Wide{height} << shift) / newHeight;
    const Wide area = (stepX * stepY) >> shift;
    // The part of source column or row i that destination column or row d covers.
    const auto covered = [shift](Wide i, Wide d, Wide step) {
        return std::min((i + 1) << shift, (d + 1) * step) - std::max(i << shift, d * step);
    };
    std::vector<Sample> result;
    for (Wide at = 0; at < Wide{newWidth} * newHeight * components; ++at) {
        const Wide k = at % components, x = at / components % newWidth,
                   y = at / components / newWidth;
        Wide sum = 0;
        for (Wide r = (y * stepY) >> shift; r << shift < (y + 1) * stepY; ++r)
            for (Wide c = (x * stepX) >> shift; c << shift < (x + 1) * stepX; ++c)
                sum += ((covered(c, x, stepX) * covered(r, y, stepY)) >> shift) *
                       source[static_cast<std::size_t>((r * width + c) * components + k)];
        const Wide quotient = (sum << shift) / area;
        const Wide fraction = quotient & ((1 << shift) - 1);
        result.push_back(static_cast<Sample>((quotient >> shift) + (2 * fraction >> shift)));
    }
    return result;
}

#endif
