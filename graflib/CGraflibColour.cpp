// Channel order and palettes.
#include <cstddef>
#include <iostream>

#include "graflib/CGraflib.h"
#include "graflib/PixelWalk.h"

namespace {

constexpr std::size_t kPaletteSize = 256;

}  // namespace

void CGraflib::SwapRedBlue()
{
    if (mBits == 24) {
        for (CRgb& pixel : PixelsOf<CRgb>(*this))
            pixel.SwapRedBlue();
    } else if (mBits == 32) {
        for (CRgba& pixel : PixelsOf<CRgba>(*this))
            pixel.SwapRedBlue();
    } else {
        std::cout << "***** CGraflib::SwapRedBlue: not 24 or 32 bit" << std::endl;
    }
}

void CGraflib::ConvertPalToRGB(const CRgb* palette)
{
    const auto indices = PixelsOf<unsigned char>(*this);
    CNewPixels<CRgb> pixels(PixelCount());
    for (std::size_t i = 0; i < pixels.Count(); ++i)
        pixels[i] = palette[indices[i]];
    ReplaceBuffer(pixels.Release(), mWidth, mHeight, 24);
}

void CGraflib::ConvertPalToRGBA(const CRgb* palette, const unsigned char* alpha)
{
    CRgba colours[kPaletteSize];
    for (std::size_t k = 0; k < kPaletteSize; ++k)
        colours[k] = {palette[k].mRed, palette[k].mGreen, palette[k].mBlue, alpha[k]};
    const auto indices = PixelsOf<unsigned char>(*this);
    CNewPixels<CRgba> pixels(PixelCount());
    for (std::size_t i = 0; i < pixels.Count(); ++i)
        pixels[i] = colours[indices[i]];
    ReplaceBuffer(pixels.Release(), mWidth, mHeight, 32);
}
