#ifndef TESSEL_GRAFLIB_PIXELWALK_H
#define TESSEL_GRAFLIB_PIXELWALK_H

// What the operations on whole pictures share: the walk over a buffer as pixels, a new buffer of
// pixels for a picture of the same size, and the line on a record. Not for users of the library.

#include <cstddef>
#include <memory>
#include <span>
#include <utility>

#include "graflib/CDataRect.h"
#include "graflib/PixelTypes.h"
#include "util/SizeProduct.h"

/// Writes the line of CGraflib::Show for any record.
void ShowRecord(const char* name, const CDataRect& record);

/// The pixels of a record, rows from the top, as values of its depth's type.
template <typename Tpixel>
std::span<Tpixel> PixelsOf(const CDataRect& image)
{
    return {reinterpret_cast<Tpixel*>(image.mData), image.PixelCount()};
}

/// A new buffer of `count` pixels, which a record takes over.
template <typename Tpixel>
class CNewPixels
{
public:
    explicit CNewPixels(std::size_t count)
        : mCount(count), mBytes(NewArray<unsigned char>(mCount, sizeof(Tpixel)))
    {
    }

    std::size_t Count() const { return mCount; }
    Tpixel& operator[](std::size_t i) { return reinterpret_cast<Tpixel*>(mBytes.get())[i]; }
    std::unique_ptr<unsigned char[]> Release() { return std::move(mBytes); }

private:
    std::size_t mCount;
    std::unique_ptr<unsigned char[]> mBytes;
};

#endif
