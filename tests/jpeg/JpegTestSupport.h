#ifndef TESSEL_TESTS_JPEG_JPEGTESTSUPPORT_H
#define TESSEL_TESTS_JPEG_JPEGTESTSUPPORT_H

// What the tests of this folder share.
#include <fcntl.h>
#include <gmock/gmock.h>

#include <cmath>

#include "jpeg/CGraphicsJpeg.h"
#include "tests/support/TestSupport.h"

/// Whether two contents, too long to be printed, are the same; where they differ, if not.
template <typename Tfound, typename Texpected>
testing::AssertionResult AreSame(const Tfound& found, const Texpected& expected)
{
    const auto sizes =
        std::to_string(found.size()) + " bytes, expected " + std::to_string(expected.size());
    if (found.size() != expected.size())
        return testing::AssertionFailure() << sizes;
    const auto [at, wanted] = std::mismatch(found.begin(), found.end(), expected.begin());
    if (at == found.end())
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "byte " << at - found.begin() << " is " << int{*at} << ", expected " << int{*wanted};
}

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

/// A picture as a file, as what it is decoded to, and as the colours that are written of it.
struct SSample
{
    static constexpr int kWidth = 33;
    static constexpr int kHeight = 21;

    explicit SSample(int components)
        : mShape(kWidth, kHeight, components * 8),
          mFile(SampleJpeg(kWidth, kHeight, components)),
          mPixels(DecodeJpeg(mFile))
    {
        for (int i = 0; i < kWidth * kHeight; ++i) {
            const unsigned char* pixel = &mPixels[static_cast<std::size_t>(i * components)];
            const double alpha = components == 4 ? pixel[3] / 255.0 : 1.0;
            for (int colour = 0; colour < 3; ++colour)
                mRgb.push_back(
                    static_cast<unsigned char>(std::lround(pixel[colour % components] * alpha)));
        }
    }

    Shape mShape;
    std::string mFile;
    Bytes mPixels;
    Bytes mRgb;
};

struct SKind
{
    const char* mName;
    int mComponents;
};

inline constexpr SKind kKinds[] = {{"grey", 1}, {"colour", 3}, {"four channels", 4}};

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

/// How many descriptors the process has in use.
inline long OpenDescriptors()
{
    long count = 0;
    for (int descriptor = 0; descriptor < 256; ++descriptor)
        count += fcntl(descriptor, F_GETFD) == -1 ? 0 : 1;
    return count;
}

/// The place of the first marker that begins with `marker`.
inline std::size_t FindMarker(const std::string& jpeg, const std::string& marker)
{
    const std::size_t at = jpeg.find(marker);
    EXPECT_NE(at, std::string::npos) << "the file that the test makes has not the marker it needs";
    return at;
}

/// The file with another size in its header, whose marker is `frame`.
inline std::string Claiming(std::string jpeg, const char* frame, int width, int height)
{
    const auto bytes = [](int side) {
        return std::string{static_cast<char>(side >> 8), static_cast<char>(side)};
    };
    return jpeg.replace(FindMarker(jpeg, frame) + 5, 4, bytes(height) + bytes(width));
}

#endif
