// Makes one thumbnail: reads a picture, shrinks it until it fits a square, writes it.
#include <algorithm>
#include <cstdlib>
#include <iostream>

#include "jpeg/CGraflibJpeg.h"

int main(int argc, char** argv)
{
    if (argc != 4 || std::atoi(argv[3]) < 1) {
        std::cerr << "Usage: make_thumbnail PICTURE THUMBNAIL SIZE" << std::endl;
        return 2;
    }
    const int size = std::atoi(argv[3]);
    CGraflibJpeg image;
    const CPixelOwner owner(&image);  // releases the pixels, whichever they are in the end
    try {
        image.Read(argv[1], nullptr);
        const int longer = std::max(image.mWidth, image.mHeight);
        if (longer > size)  // proportions in 64 bits: neither side may wrap or vanish
            image.DownScaleFix2(
                static_cast<int>(std::max(1LL, 1LL * image.mWidth * size / longer)),
                static_cast<int>(std::max(1LL, 1LL * image.mHeight * size / longer)));
        image.Write(argv[2], false, nullptr);
    } catch (const CGraflibException& error) {
        std::cerr << (error.mCode == GLIB_ERR_READ ? "cannot read " : "cannot write ")
                  << error.mInfo << std::endl;
        return 1;
    }
    return 0;
}
