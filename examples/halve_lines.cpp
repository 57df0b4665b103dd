// Halves a JPEG of any size with two of its lines in memory.
#include <iostream>
#include <vector>

#include "jpeg/CGraflibJpeg.h"

namespace {

/// Copies `lines` lines of half the width. Each pair of lines is halved in place.
void HalveLines(CGraflibJpeg& in, CGraflibJpeg& out, int lines)
{
    const auto lineBytes = static_cast<int>(in.RowBytes());
    std::vector<unsigned char> pair(in.RowBytes() * 2);
    for (int i = 0; i < lines; ++i) {
        if (!in.ReadLine(pair.data()) || !in.ReadLine(pair.data() + lineBytes))
            throw CGraflibException(GLIB_ERR_READ, "a row of the picture");
        in.DownScaleLine2(pair.data(), pair.data(), lineBytes);
        out.WriteLine(pair.data());
    }
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
        out.mBits = in.mBits;
        out.OpenWriteLine(argv[2]);  // throws for a picture too small to be halved
        HalveLines(in, out, out.mHeight);
        in.CloseReadLine();
        out.CloseWriteLine();
    } catch (const CGraflibException& error) {
        std::cerr << "failed: " << error.mInfo << std::endl;
        return 1;
    }
    return 0;
}
