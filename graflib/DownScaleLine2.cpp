// Two lines become one of half the width: every sample is the mean of a 2 x 2 block of samples.
#include <iostream>

#include "graflib/CGraflib.h"

namespace {

constexpr int kBlockShift = 2;  // four samples to a block

/// Stores sample number `component` of each of the `count` pixels at `dest`. A pixel has COUNT
/// samples. `dest` may be `source`: a sample is stored where all samples have been used.
template <typename Tsample, int COUNT>
void HalveLine(const void* source, void* dest, int count, int offset, int component)
{
    const auto* upper = static_cast<const Tsample*>(source) + component;
    const Tsample* lower = upper + offset;
    auto* half = static_cast<Tsample*>(dest) + component;
    for (int k = 0; k < count; ++k, upper += 2 * COUNT, lower += 2 * COUNT, half += COUNT) {
        const int sum = upper[0] + upper[COUNT] + lower[0] + lower[COUNT];
        *half = static_cast<Tsample>(sum >> kBlockShift);
    }
}

}  // namespace

void CGraflib::DownScaleLine2(void* source, void* dest, int width, int offset, int component)
{
    const int count = width / 2;
    switch (mBits) {
        case 8:
            HalveLine<unsigned char, 1>(source, dest, count, offset, 0);
            break;
        case 16:
            HalveLine<unsigned short, 1>(source, dest, count, offset, 0);
            break;
        case 24:
            HalveLine<unsigned char, 3>(source, dest, count, offset, component);
            break;
        case 32:
            HalveLine<unsigned char, 4>(source, dest, count, offset, component);
            break;
        default:
            break;
    }
}

void CGraflib::DownScaleLine2(void* source, void* dest, int offset)
{
    int components = 1;
    switch (mBits) {
        case 8:
        case 16:
            break;
        case 24:
        case 32:
            components = mBits / 8;
            break;
        default:
            std::cout << "***** Bitcount of " << mBits
                      << " not supported in CGraflib::DownScaleLine2" << std::endl;
            return;
    }
    for (int component = 0; component < components; ++component)
        DownScaleLine2(source, dest, mWidth, offset, component);
}
