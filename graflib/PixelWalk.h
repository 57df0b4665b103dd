#ifndef TESSEL_GRAFLIB_PIXELWALK_H
#define TESSEL_GRAFLIB_PIXELWALK_H

// What the operations on whole pictures share. The library's own sources alone include it.

#include <cstddef>
#include <memory>
#include <span>
#include <utility>

#include "graflib/CDataRect.h"
#include "graflib/PixelTypes.h"
#include "util/SizeProduct.h"

/// Writes the line of CGraflib::Show for a record.
void ShowRecord(const char* name, const CDataRect& record);

/// The pixels of a record, row by row from the top. Tpixel is the type for the record's depth.
template <typename Tpixel>
std::span<Tpixel> PixelsOf(const CDataRect& image)
{
    return {reinterpret_cast<Tpixel*>(image.mData), image.PixelCount()};
}

/// A new buffer of `count` pixels, for a record to take over.
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
