#include "graflib/CGraflib.h"

#include <iostream>

#include "graflib/PixelWalk.h"

void ShowRecord(const char* name, const CDataRect& record)
{
    if (name)
        std::cout << name << ' ';
    std::cout << "Width=" << record.mWidth << " Height=" << record.mHeight
              << " mBits=" << record.mBits << (record.mData ? " Data != NULL" : " Data = NULL")
              << std::endl;
}

void CGraflib::SetAppendMode(bool append)
{
    mAppendMode = append;
}

void CGraflib::Show(const char* name)
{
    ShowRecord(name, *this);
}

void CGraflib::ShowGlibError(CGraflibException& e)
{
    // The texts stay as they are, for programs that look for them.
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
