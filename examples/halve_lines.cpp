// Halves a JPEG of any size with a few of its lines in memory.
#include <cstddef>
#include <exception>
#include <iostream>
#include <vector>

#include "Helpers.h"
#include "jpeg/CGraflibJpeg.h"

namespace {

/// Writes all lines of half the width; false when one couldn't be read and repeats the one before.
bool HalveLines(CGraflibJpeg& in, CGraflibJpeg& out)
{
    const std::size_t lineBytes = in.RowBytes();
    std::vector<unsigned char> pair(lineBytes * 2);
    std::vector<CRgb> line(static_cast<std::size_t>(out.mWidth));
    bool whole = true;
    for (int y = 0; y < out.mHeight; ++y) {
        whole &= in.ReadLine(pair.data()) && in.ReadLine(pair.data() + lineBytes);
        in.DownScaleLine2(pair.data(), pair.data(), static_cast<int>(lineBytes));
        const unsigned char* samples = pair.data();
        for (CRgb& pixel : line) {
            pixel = ColourOf(samples, in.mBits);
            samples += in.mBits / 8;
        }
        out.WriteLine(line.data());
    }
    return whole;
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "Usage: halve_lines PICTURE RESULT" << std::endl;
        return 2;
    }
    CGraflibJpeg in;
    CGraflibJpeg out;
    try {
        in.OpenReadLine(argv[1]);
        out.mWidth = in.mWidth / 2;
        out.mHeight = in.mHeight / 2;
        out.mBits = 24;
        out.OpenWriteLine(argv[2]);  // throws for a picture too small to be halved
        const bool whole = HalveLines(in, out);
        in.CloseReadLine();
        out.CloseWriteLine();
        if (!whole)
            throw CGraflibException(GLIB_ERR_READ, argv[1]);
    } catch (const std::exception& error) {  // CGraflibException, or std::bad_alloc
        std::cerr << "halve_lines: " << error.what() << std::endl;
        return 1;
    }
    return 0;
}
