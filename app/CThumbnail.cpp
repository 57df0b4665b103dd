#include "app/CThumbnail.h"

#include <unistd.h>

#include <algorithm>
#include <iostream>
#include <new>

#include "app/GalleryLayout.h"
#include "app/OutputFile.h"
#include "graflib/SinglePrecision.h"

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
void ReadScaled(CGraflibJpeg& image, const char* source, int size)
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

bool CThumbnail::Read(const char* source, int size)
{
    std::cout << "Reading " << source << std::endl;
    if (!IsFileOrFolder(source))
        return false;
    try {
        ReadScaled(mImage, source, size < 1 ? kDefaultThumbSize : size);
        return true;
    } catch (const CGraflibException&) {
        return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool CThumbnail::Write(std::FILE* stream, const char* target)
{
    std::cout << "Writing " << target << std::endl;
    try {
        return stream && mImage.Write(stream);
    } catch (const CGraflibException&) {
        return false;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

bool CThumbnail::Write(const char* target)
{
    std::FILE* const stream = mImage.CanWrite() ? OpenOutput(target) : nullptr;
    const bool written = Write(stream, target);
    if (stream && !(CloseOutput(stream) && written)) {
        unlink(target);
        return false;
    }
    return written;
}
