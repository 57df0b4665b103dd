// Alpha channels and planes.
#include <cstddef>
#include <iostream>
#include <memory>

#include "graflib/CGraflib.h"
#include "graflib/PixelWalk.h"

bool CGraflib::InterleaveAlpha(CGraflib* alpha)
{
    if (alpha->mBits != 8 || alpha->mWidth != mWidth || alpha->mHeight != mHeight)
        return false;
    const auto alphas = PixelsOf<unsigned char>(*alpha);
    if (mBits == 24) {
        const auto colours = PixelsOf<CRgb>(*this);
        CNewPixels<CRgba> pixels(PixelCount());
        for (std::size_t i = 0; i < pixels.Count(); ++i)
            pixels[i] = {colours[i].mRed, colours[i].mGreen, colours[i].mBlue, alphas[i]};
        ReplaceBuffer(pixels.Release(), mWidth, mHeight, 32);
        return true;
    }
    if (mBits == 32) {
        const auto pixels = PixelsOf<CRgba>(*this);
        for (std::size_t i = 0; i < pixels.size(); ++i)
            pixels[i].mAlpha = alphas[i];
        return true;
    }
    return false;
}

bool CGraflib::SeparateAlpha(CGraflib* color, CGraflib* alpha)
{
    if (mBits != 32) {
        std::cout << "***** CGraflib::SeparateAlpha Bits=" << mBits << std::endl;
        return false;
    }
    const auto pixels = PixelsOf<CRgba>(*this);
    // The buffers that the two records hold belong to the caller: they aren't released.
    if (color) {
        CNewPixels<CRgb> colours(PixelCount());
        for (std::size_t i = 0; i < colours.Count(); ++i)
            colours[i] = pixels[i];
        static_cast<CDataRect&>(*color) = {colours.Release().release(), mWidth, mHeight, 24};
        color->Show("COLOR");
    }
    if (alpha) {
        CNewPixels<unsigned char> alphas(PixelCount());
        for (std::size_t i = 0; i < alphas.Count(); ++i)
            alphas[i] = pixels[i].mAlpha;
        static_cast<CDataRect&>(*alpha) = {alphas.Release().release(), mWidth, mHeight, 8};
        alpha->Show("ALPHA");
    }
    return true;
}

void CGraflib::CombineWithAlpha(const CDataRect* overlay)
{
    const char* const operation = "CombineWithAlpha";
    if (mBits != 24)
        throw CGraflibException(GLIB_ERR_NOT24BIT, operation);
    if (overlay->mBits != 32)
        throw CGraflibException(GLIB_ERR_NOT32BIT, operation);
    if (overlay->mWidth != mWidth || overlay->mHeight != mHeight)
        throw CGraflibException(GLIB_ERR_SIZE, operation);
    const auto pixels = PixelsOf<CRgb>(*this);
    const auto above = PixelsOf<const CRgba>(*overlay);
    for (std::size_t i = 0; i < pixels.size(); ++i)
        pixels[i].MixPixel(&above[i]);
}

void CGraflib::SplitBitplanes(char** plane0, char** plane1, char** plane2)
{
    if (mBits != 24)
        return;
    const auto pixels = PixelsOf<CRgb>(*this);
    const auto newPlane = [&pixels] { return std::unique_ptr<char[]>(new char[pixels.size()]); };
    auto red = newPlane();
    auto green = newPlane();
    auto blue = newPlane();
    for (std::size_t i = 0; i < pixels.size(); ++i) {
        red[i] = static_cast<char>(pixels[i].mRed);
        green[i] = static_cast<char>(pixels[i].mGreen);
        blue[i] = static_cast<char>(pixels[i].mBlue);
    }
    *plane0 = red.release();
    *plane1 = green.release();
    *plane2 = blue.release();
}

void CGraflib::JoinBitplanes(const char* plane0, const char* plane1, const char* plane2)
{
    if (mBits != 24)
        return;
    CNewPixels<CRgb> pixels(PixelCount());
    for (std::size_t i = 0; i < pixels.Count(); ++i)
        pixels[i] =
            CRgb{static_cast<unsigned char>(plane0[i]), static_cast<unsigned char>(plane1[i]),
                 static_cast<unsigned char>(plane2[i])};
    ReplaceBuffer(pixels.Release(), mWidth, mHeight, 24);
}
