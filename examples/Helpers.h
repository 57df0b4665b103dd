#ifndef TESSEL_EXAMPLES_HELPERS_H
#define TESSEL_EXAMPLES_HELPERS_H

// What the examples share, to be copied into one's own program.

#include "graflib/PixelTypes.h"

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

#endif
