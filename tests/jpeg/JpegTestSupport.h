#ifndef TESSEL_TESTS_JPEG_JPEGTESTSUPPORT_H
#define TESSEL_TESTS_JPEG_JPEGTESTSUPPORT_H

// What the tests of this folder share.
#include <gmock/gmock.h>

#include "jpeg/CGraphicsJpeg.h"
#include "tests/support/TestSupport.h"

/// The pixels of a picture, decoded with libjpeg's defaults.
inline Bytes DecodeJpeg(const std::string& jpeg)
{
    jpeg_error_mgr errors{};
    jpeg_decompress_struct codec{};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&codec);
    jpeg_mem_src(&codec, reinterpret_cast<const unsigned char*>(jpeg.data()), jpeg.size());
    jpeg_read_header(&codec, TRUE);
    jpeg_start_decompress(&codec);
    const auto rowBytes = codec.output_width * static_cast<JDIMENSION>(codec.output_components);
    Bytes pixels(std::size_t{rowBytes} * codec.output_height);
    for (auto* row = pixels.data(); codec.output_scanline < codec.output_height; row += rowBytes)
        jpeg_read_scanlines(&codec, &row, 1);
    jpeg_destroy_decompress(&codec);
    return pixels;
}

/// All rows of the picture that `image` has opened, which is closed then.
inline Bytes ReadRows(CGraflibJpeg& image)
{
    Bytes rows;
    Bytes row(image.RowBytes());
    while (image.ReadLine(row.data()))
        rows.insert(rows.end(), row.begin(), row.end());
    image.CloseReadLine();
    return rows;
}

/// Writes the image's pixels line by line.
inline void WriteRows(CGraflibJpeg& image, const char* path)
{
    image.OpenWriteLine(path);
    for (int y = 0; y < image.mHeight; ++y)
        image.WriteLine(image.mData + SizeProduct(y, image.RowBytes()));
    image.CloseWriteLine();
}

#endif
