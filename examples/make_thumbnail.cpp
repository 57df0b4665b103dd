// Makes one thumbnail: reads a picture, shrinks it until it fits a square, writes it.
#include <cstdlib>
#include <exception>
#include <iostream>

#include "Helpers.h"
#include "jpeg/CGraflibJpeg.h"

int main(int argc, char** argv)
{
    if (argc != 4 || std::atoi(argv[3]) < 1) {
        std::cerr << "Usage: make_thumbnail PICTURE THUMBNAIL SIZE" << std::endl;
        return 2;
    }
    CGraflibJpeg image;
    const CPixelOwner owner(&image);  // releases the pixels, whichever they are in the end
    try {
        image.Read(argv[1], nullptr);
        if (!ShrinkTo(&image, std::atoi(argv[3])))
            return 1;
        image.Write(argv[2], false, nullptr);
    } catch (const std::exception& error) {  // CGraflibException, or std::bad_alloc
        std::cerr << "make_thumbnail: " << error.what() << std::endl;
        return 1;
    }
    return 0;
}
