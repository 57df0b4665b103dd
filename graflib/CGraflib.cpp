#include "graflib/CGraflib.h"

#include <iostream>

void CGraflib::SetAppendMode(bool append)
{
    mAppendMode = append;
}

void CGraflib::Show(const char* name)
{
    if (name)
        std::cout << name << ' ';
    std::cout << "Width=" << mWidth << " Height=" << mHeight << " mBits=" << mBits
              << (mData ? " Data != NULL" : " Data = NULL") << std::endl;
}

void CGraflib::ShowGlibError(CGraflibException& e)
{
    switch (e.mCode) {
        case GLIB_ERR_SIZE:
            std::cout << "GLIB error: Groesse der Bitmaps verschieden" << std::endl;
            break;
        case GLIB_ERR_NOT32BIT:
            std::cout << "GLIB error: Datei muss 32 bit sein" << std::endl;
            break;
        case GLIB_ERR_NOT24BIT:
            std::cout << "GLIB error: Datei muss 24 bit sein" << std::endl;
            break;
        default:
            break;
    }
}

unsigned char* CGraflib::ReplaceBuffer(std::unique_ptr<unsigned char[]> pixels, int width,
                                       int height, int bits)
{
    delete[] mData;
    mData = pixels.release();
    mWidth = width;
    mHeight = height;
    mBits = bits;
    return mData;
}
