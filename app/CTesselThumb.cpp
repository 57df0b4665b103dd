// Making one thumbnail.
#include <algorithm>
#include <iostream>
#include <new>

#include "app/CTessel.h"
#include "app/OutputFile.h"
#include "graflib/SinglePrecision.h"
#include "jpeg/CGraflibJpeg.h"

namespace {

/// The shorter side of a thumbnail: at least 1, so that every picture gets one. In single
/// precision and cut, which may give one pixel less than exact arithmetic.
int ShorterSide(int size, int shorter, int longer)
{
    const float side = Rounded(Rounded(static_cast<float>(size)) * Quotient(shorter, longer));
    // The largest sizes become a float that no int can hold.
    return side < 0x1p31F ? std::max(1, static_cast<int>(side)) : size;
}

/// Reads a picture at the size of its thumbnail.
void ReadThumb(CGraflibJpeg& image, const char* source, int size)
{
    image.OpenReadLine(source);
    int width = size;
    int height = size;
    if (image.mHeight < image.mWidth)
        height = ShorterSide(size, image.mHeight, image.mWidth);
    else
        width = ShorterSide(size, image.mWidth, image.mHeight);
    image.ScaleWhileReading(source, width, height);
}

}  // namespace

void CTessel::MakeThumb(const char* source, const char* target, int size)
{
    MakeThumb(source, target, size, true);
}

/// Without `store`, what is made isn't kept, as if its file couldn't be created.
void CTessel::MakeThumb(const char* source, const char* target, int size, bool store)
{
    CGraflibJpeg image;
    const CPixelOwner owner(&image);
    try {
        std::cout << "Reading " << source << std::endl;
        if (!IsReadable(source))
            return;
        ReadThumb(image, source, size < 1 ? kDefaultThumbSize : size);
        std::cout << "Writing " << target << std::endl;
        if (store && image.CanWrite() && MakeWay(target))
            image.Write(target, true, nullptr);
    } catch (const CGraflibException&) {
        // A picture that can't be read, or a thumbnail that can't be written, is left out.
    } catch (const std::bad_alloc&) {
        // So is a picture for which there is no memory.
    }
}
