#ifndef TESSEL_TESTS_SUPPORT_ENCODEJPEG_H
#define TESSEL_TESTS_SUPPORT_ENCODEJPEG_H

// JPEG files of every kind, by libjpeg alone: for seeds and tests.
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>
// libjpeg's header wants stdio's names declared before it.
#include <jpeglib.h>

inline void Progressive(jpeg_compress_struct& codec)
{
    jpeg_simple_progression(&codec);
}

inline void Arithmetic(jpeg_compress_struct& codec)
{
    codec.arith_code = TRUE;
}

/// The marker that holds a part of a colour profile, as a file has it.
inline std::string ProfilePart(int number, int count, const std::string& bytes)
{
    const std::string content = std::string("ICC_PROFILE") + '\0' + static_cast<char>(number) +
                                static_cast<char>(count) + bytes;
    const std::size_t length = content.size() + 2;
    return std::string("\xff\xe2") + static_cast<char>(length >> 8) + static_cast<char>(length) +
           content;
}

/// The file with markers behind its first, which every file begins with.
inline std::string WithMarkers(const std::string& jpeg, const std::string& markers)
{
    return jpeg.substr(0, 2) + markers + jpeg.substr(2);
}

/// Encodes pixels of 1 (grey), 3 (RGB), 4 (CMYK) or other numbers of components with libjpeg's
/// defaults, but for what `change` sets. More than four need several scans.
inline std::string EncodeJpeg(int width, int height, int components,
                              const std::vector<unsigned char>& pixels, int quality = 80,
                              const std::function<void(jpeg_compress_struct&)>& change = nullptr)
{
    jpeg_error_mgr errors{};
    jpeg_compress_struct codec{};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_compress(&codec);
    unsigned char* data = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&codec, &data, &size);
    codec.image_width = static_cast<JDIMENSION>(width);
    codec.image_height = static_cast<JDIMENSION>(height);
    codec.input_components = components;
    codec.in_color_space = components == 1   ? JCS_GRAYSCALE
                           : components == 3 ? JCS_RGB
                           : components == 4 ? JCS_CMYK
                                             : JCS_UNKNOWN;
    jpeg_set_defaults(&codec);
    jpeg_set_quality(&codec, quality, TRUE);
    if (change)
        change(codec);
    jpeg_start_compress(&codec, TRUE);
    auto* row = const_cast<JSAMPROW>(pixels.data());
    for (; codec.next_scanline < codec.image_height; row += width * components)
        jpeg_write_scanlines(&codec, &row, 1);
    jpeg_finish_compress(&codec);
    jpeg_destroy_compress(&codec);
    const std::unique_ptr<unsigned char, decltype(&free)> owner(data, free);
    return {data, data + size};
}

#endif
