#ifndef TESSEL_EXAMPLES_HELPERS_H
#define TESSEL_EXAMPLES_HELPERS_H

// What the examples share, to be copied into one's own program.

#include <algorithm>

#include "graflib/CGraflib.h"

/// The colour of a pixel of any depth that JPEG files have. Of four samples, each colour is
/// multiplied by the fourth: right for CMYK as files have it, and for alpha over black.
inline CRgb ColourOf(const unsigned char* samples, int bits)
{
    if (bits == 8)
        return {samples[0], samples[0], samples[0]};
    const int fourth = bits == 32 ? samples[3] : 255;
    const auto part = [=](int i) {
        return static_cast<unsigned char>((samples[i] * fourth + 127) / 255);
    };
    return {part(0), part(1), part(2)};
}

/// Shrinks a picture until it fits a square. False when the scaler doesn't take it.
inline bool ShrinkTo(CGraflib* image, int size)
{
    const int longer = std::max(image->mWidth, image->mHeight);
    if (longer <= size)
        return true;
    // In 64 bits, and at least 1: neither side may wrap or vanish.
    const auto side = [=](long long pixels) {
        return static_cast<int>(std::max(1LL, pixels * size / longer));
    };
    return image->DownScaleFix2(side(image->mWidth), side(image->mHeight)) != nullptr;
}

#endif
