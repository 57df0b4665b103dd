#ifndef TESSEL_TESTS_SUPPORT_PIXELBYPIXEL_H
#define TESSEL_TESTS_SUPPORT_PIXELBYPIXEL_H

// The fixed-point scaler pixel by pixel, as CGraflib::GetScaledPicturePixel defines it, however
// slow. Tests and benchmark hold the fast one against it.
#include "graflib/CGraflib.h"
#include "graflib/FixedPointTypes.h"

template <int SHIFT, typename Tfix, typename Tpixel>
void ScalePixels(CGraflib& image, int width, int height, void* dest)
{
    auto params = MakeScaleParams<SHIFT>(image, static_cast<Tpixel*>(dest), width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x, ++params.mDest)
            image.GetScaledPicturePixel<SHIFT, Tfix>(&params, x, y);
    }
}

template <template <int> class Tfix, typename Tpixel>
void ScaleWithShift(CGraflib& image, int width, int height, int shift, void* dest)
{
    const auto scale = shift == 16  ? ScalePixels<16, Tfix<16>, Tpixel>
                       : shift == 8 ? ScalePixels<8, Tfix<8>, Tpixel>
                       : shift == 4 ? ScalePixels<4, Tfix<4>, Tpixel>
                                    : ScalePixels<2, Tfix<2>, Tpixel>;
    scale(image, width, height, dest);
}

/// The precision for an area ratio, where the sides leave room for it.
inline int ShiftOf(const CDataRect& image, int width, int height)
{
    const float across = static_cast<float>(image.mWidth) / static_cast<float>(width);
    const float ratio = across * (static_cast<float>(image.mHeight) / static_cast<float>(height));
    const bool fits = image.mWidth < 1 << 15 && image.mHeight < 1 << 15;
    return ratio < 16 && fits ? 16 : ratio < 256 ? 8 : ratio < 1024 ? 4 : 2;
}

/// Stores the picture scaled to `width` x `height` at `dest`; its depth is one of the four.
inline void ScalePixelByPixel(CGraflib& image, int width, int height, void* dest)
{
    const auto scale = image.mBits == 8    ? ScaleWithShift<CPixel1fixT, SPixel1i<unsigned char>>
                       : image.mBits == 16 ? ScaleWithShift<CPixel1fixT, SPixel1i<short>>
                       : image.mBits == 24 ? ScaleWithShift<CPixel3fixT, SPixel3i<unsigned char>>
                                           : ScaleWithShift<CPixel4fixT, SPixel4i<unsigned char>>;
    scale(image, width, height, ShiftOf(image, width, height), dest);
}

#endif
