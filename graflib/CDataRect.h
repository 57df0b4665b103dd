#ifndef TESSEL_GRAFLIB_CDATARECT_H
#define TESSEL_GRAFLIB_CDATARECT_H

#include <cstddef>

#include "util/SizeProduct.h"

/// The image record: a buffer of packed pixels with the picture's size and depth.
///
/// The top row comes first, and rows have no padding: a row is `mWidth * (mBits / 8)` bytes long.
/// The layout of a pixel depends on the depth:
///
///     mBits   bytes   one pixel
///         8       1   a grey level, or an index into a palette of 256 colours
///        16       2   one signed 16-bit sample in the host's byte order
///        24       3   red, green, blue
///        32       4   red, green, blue, alpha (or a JPEG file's four channels)
///
/// The buffer is an array made with `new unsigned char[]`. The record points to it and never
/// releases it: whoever had it filled releases it with `delete[]`, by hand or with CPixelOwner.
/// Copying a record copies the pointer, not the pixels. The functions below throw `std::bad_alloc`
/// for sizes that no buffer can have. One record is used by one thread at a time.
struct CDataRect
{
    unsigned char* mData = nullptr;  ///< null while the record holds no picture
    int mWidth = 0;                  ///< pixels per row
    int mHeight = 0;                 ///< rows
    int mBits = 0;                   ///< bits per pixel

    /// Bytes from one row to the next.
    std::size_t RowBytes() const { return SizeProduct(mWidth, mBits / 8); }
    /// Bytes of the whole buffer.
    std::size_t Bytes() const { return SizeProduct(mWidth, mBits / 8, mHeight); }
    /// Pixels of the whole picture.
    std::size_t PixelCount() const { return SizeProduct(mWidth, mHeight); }
};

/// Releases the buffer of a record when the scope ends: the one that the record then holds. The
/// record's mData is null afterwards.
class CPixelOwner
{
public:
    /// `image` must outlive the owner.
    explicit CPixelOwner(CDataRect* image) : mImage(image) {}
    CPixelOwner(const CPixelOwner&) = delete;
    CPixelOwner& operator=(const CPixelOwner&) = delete;
    ~CPixelOwner()
    {
        delete[] mImage->mData;
        mImage->mData = nullptr;
    }

private:
    CDataRect* mImage;
};

#endif
