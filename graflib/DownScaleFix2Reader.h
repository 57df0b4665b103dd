#ifndef TESSEL_GRAFLIB_DOWNSCALEFIX2READER_H
#define TESSEL_GRAFLIB_DOWNSCALEFIX2READER_H

// The rows of a picture that is scaled while it is read. A part of DownScaleFix2.cpp: no other
// source includes it.
#include <algorithm>
#include <cstring>
#include <vector>

#include "graflib/CGraflib.h"
#include "graflib/PixelWalk.h"
#include "util/SizeProduct.h"

namespace fix2 {

/// Reads the rows of the picture that `image` has opened. Only the rows of the last request are
/// kept. `opened` has the picture's size and depth: the image's own record may have changed since
/// the picture was opened. `name` is the picture's, for exceptions and for the line of Show.
class CRowReader
{
public:
    CRowReader(CGraflib* image, const CDataRect& opened, const char* name)
        : mImage(image), mName(name), mOpened(opened), mRows(opened.RowBytes())
    {
    }

    /// Returns the rows `first` to `last`. `first` is the last row of the request before, or the
    /// row after it. Throws GLIB_ERR_READ when a row can't be read.
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

    /// Reads the rows that are left, closes the file, and writes the line of Show for the picture
    /// as if it were in memory.
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

}  // namespace fix2

#endif
