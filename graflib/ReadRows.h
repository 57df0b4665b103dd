#ifndef TESSEL_GRAFLIB_READROWS_H
#define TESSEL_GRAFLIB_READROWS_H

// The rows of a picture that is scaled while it is read: a part of DownScaleFix2.cpp, for no other
// source.
#include <algorithm>
#include <cstring>
#include <vector>

#include "graflib/CGraflib.h"
#include "graflib/PixelWalk.h"
#include "util/SizeProduct.h"

/// Reads the picture that `image` has opened and keeps the rows asked for last. `opened` has its
/// size and depth, whatever has become of the image's record since; a row that can't be read is
/// thrown with `name`.
class CReadRows
{
public:
    CReadRows(CGraflib* image, const CDataRect& opened, const char* name)
        : mImage(image), mName(name), mOpened(opened), mRows(opened.RowBytes())
    {
    }

    /// The rows from `first`, the last one of the call before or the next, to `last`.
    const unsigned char* Rows(int first, int last)
    {
        mRows.resize(std::max(mRows.size(), SizeProduct(last - first + 1, mOpened.RowBytes())));
        if (first < mNext)
            std::memmove(Row(0), Row(first - mFirst), mOpened.RowBytes());
        mFirst = first;
        while (mNext <= last)
            Read(mNext - first);
        return Row(0);
    }

    /// Reads the rows that nothing is made of, closes the file, and writes the line of Show that
    /// the picture would have got.
    void Finish()
    {
        while (mNext < mOpened.mHeight)
            Read(0);
        mImage->CloseReadLine();
        mOpened.mData = Row(0);
        ShowRecord(mName, mOpened);
    }

private:
    unsigned char* Row(int index) { return mRows.data() + SizeProduct(index, mOpened.RowBytes()); }

    void Read(int index)
    {
        if (!mImage->ReadLine(Row(index)))
            throw CGraflibException(GLIB_ERR_READ, mName);
        ++mNext;
    }

    CGraflib* mImage;
    const char* mName;
    CDataRect mOpened;
    std::vector<unsigned char> mRows;
    int mFirst = 0;  // the first row in mRows
    int mNext = 0;   // the row that will be read next
};

#endif
