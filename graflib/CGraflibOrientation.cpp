// Mirrored and transposed pictures.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <utility>

#include "graflib/CGraflib.h"
#include "util/SizeProduct.h"

namespace {

/// Puts `count` neighbouring blocks of `size` bytes into the opposite order.
void ReverseBlocks(unsigned char* blocks, int count, std::size_t size)
{
    for (int first = 0, last = count - 1; first < last; ++first, --last) {
        unsigned char* const block = blocks + SizeProduct(first, size);
        std::swap_ranges(block, block + size, blocks + SizeProduct(last, size));
    }
}

}  // namespace

void CGraflib::Yflip()
{
    ReverseBlocks(mData, mHeight, RowBytes());
}

void CGraflib::Xflip()
{
    const std::size_t rowBytes = RowBytes();
    for (int y = 0; y < mHeight; ++y)
        ReverseBlocks(mData + SizeProduct(y, rowBytes), mWidth, SizeProduct(mBits / 8));
}

void CGraflib::Transpose()
{
    const std::size_t pixelBytes = SizeProduct(mBits / 8);
    const std::size_t newRowBytes = SizeProduct(mHeight, pixelBytes);
    auto pixels = NewArray<unsigned char>(Bytes());
    const unsigned char* source = mData;
    for (int y = 0; y < mHeight; ++y) {
        unsigned char* dest = pixels.get() + SizeProduct(y, pixelBytes);
        for (int x = 0; x < mWidth; ++x, source += pixelBytes, dest += newRowBytes)
            std::memcpy(dest, source, pixelBytes);
    }
    ReplaceBuffer(std::move(pixels), mHeight, mWidth, mBits);
}
