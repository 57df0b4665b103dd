#ifndef TESSEL_GRAFLIB_PIXELTYPES_H
#define TESSEL_GRAFLIB_PIXELTYPES_H

#include <utility>

/// @file
/// Value types of exactly one pixel. They hold their components and nothing else, so a picture's
/// buffer can be read and written as an array of them. They own nothing; different threads may use
/// different pixels.

/// A 32-bit pixel: red, green, blue, alpha. Alpha 0 is fully transparent, 255 fully opaque.
template <typename T>
struct CPixel32T
{
    T mRed;    ///< the first component
    T mGreen;  ///< the second
    T mBlue;   ///< the third
    T mAlpha;  ///< the fourth

    /// Exchanges the first and the third component; green and alpha stay.
    void SwapRedBlue() { std::swap(mRed, mBlue); }
};

/// A 24-bit pixel: red, green, blue.
template <typename T>
struct CPixel24T
{
    T mRed;    ///< the first component
    T mGreen;  ///< the second
    T mBlue;   ///< the third

    /// Takes the colour of a 32-bit pixel and drops its alpha. (It is a template so that three
    /// values in braces can only mean a 24-bit pixel.)
    template <typename U>
    CPixel24T& operator=(const CPixel32T<U>& src)
    {
        mRed = src.mRed;
        mGreen = src.mGreen;
        mBlue = src.mBlue;
        return *this;
    }

    /// Blends `src` over this pixel by its alpha a: d * (255 - a) / 255 + s * a / 255. Each
    /// quotient is cut by itself, so that a blend of two equal colours may come out one step
    /// darker.
    void MixPixel(const CPixel32T<T>* src)
    {
        if (src->mAlpha == 0)
            return;
        if (src->mAlpha == kOpaque) {
            *this = *src;
            return;
        }
        mRed = Mix(mRed, src->mRed, src->mAlpha);
        mGreen = Mix(mGreen, src->mGreen, src->mAlpha);
        mBlue = Mix(mBlue, src->mBlue, src->mAlpha);
    }

    /// Exchanges the first and the third component.
    void SwapRedBlue() { std::swap(mRed, mBlue); }

private:
    static constexpr int kOpaque = 255;

    static T Mix(int below, int above, int alpha)
    {
        return static_cast<T>(below * (kOpaque - alpha) / kOpaque + above * alpha / kOpaque);
    }
};

using CRgb = CPixel24T<unsigned char>;   ///< one 24-bit pixel
using CRgba = CPixel32T<unsigned char>;  ///< one 32-bit pixel

/// A pixel of COUNT samples of type T, without operations. The scalers read and write these.
template <typename T, int COUNT>
struct SPixelNi
{
    using Sample = T;                          ///< the type of a sample
    static constexpr int kComponents = COUNT;  ///< samples in a pixel

    T mSamples[COUNT];  ///< in the order of the buffer
};

/// A pixel of 8 or 16 bits.
template <typename T>
using SPixel1i = SPixelNi<T, 1>;
/// A pixel of 24 bits.
template <typename T>
using SPixel3i = SPixelNi<T, 3>;
/// A pixel of 32 bits.
template <typename T>
using SPixel4i = SPixelNi<T, 4>;

static_assert(sizeof(CRgb) == 3 && sizeof(CRgba) == 4);
static_assert(sizeof(SPixel1i<unsigned char>) == 1 && sizeof(SPixel1i<short>) == 2);
static_assert(sizeof(SPixel3i<unsigned char>) == 3 && sizeof(SPixel4i<unsigned char>) == 4);

#endif
