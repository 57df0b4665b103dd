// Blends a 32-bit picture over a photograph: here a soft light in the middle of darkened corners.
#include <algorithm>
#include <cmath>
#include <exception>
#include <iostream>

#include "graflib/PixelTypes.h"
#include "jpeg/CGraflibJpeg.h"

namespace {

/// A pixel of the vignette: black, and the less transparent the farther from the middle (0 to 1).
CRgba VignetteAt(double distance)
{
    const double dark = std::clamp(distance * 1.4 - 0.5, 0.0, 0.8);
    return {0, 0, 0, static_cast<unsigned char>(dark * 255)};
}

/// Gives a record a new buffer with a vignette of its size.
void DrawVignette(CDataRect* overlay)
{
    overlay->mBits = 32;
    overlay->mData = new unsigned char[overlay->Bytes()];
    auto* pixel = reinterpret_cast<CRgba*>(overlay->mData);
    for (int y = 0; y < overlay->mHeight; ++y) {
        for (int x = 0; x < overlay->mWidth; ++x) {
            const double across = 2.0 * x / overlay->mWidth - 1;
            const double down = 2.0 * y / overlay->mHeight - 1;
            *pixel++ = VignetteAt(std::hypot(across, down) / std::sqrt(2));
        }
    }
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "Usage: overlay PICTURE RESULT" << std::endl;
        return 2;
    }
    CGraflibJpeg photo;
    CDataRect overlay;
    const CPixelOwner photoOwner(&photo);
    const CPixelOwner overlayOwner(&overlay);
    try {
        photo.Read(argv[1], nullptr);
        overlay.mWidth = photo.mWidth;
        overlay.mHeight = photo.mHeight;
        DrawVignette(&overlay);
        photo.CombineWithAlpha(&overlay);  // throws unless photo has 24 bits
        photo.Write(argv[2], false, nullptr);
    } catch (const std::exception& error) {  // CGraflibException, or std::bad_alloc
        std::cerr << "overlay: " << error.what() << std::endl;
        return 1;
    }
    return 0;
}
