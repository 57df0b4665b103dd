#ifndef TESSEL_GRAFLIB_READROWS_H
#define TESSEL_GRAFLIB_READROWS_H

// The rows of a picture that is scaled while it is read: a part of DownScaleFix2.cpp, for no other
// source.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "graflib/CGraflib.h"
#include "util/SizeProduct.h"

/// Reads the picture that `image` has opened and keeps the rows asked for last. `opened` has its
/// size and depth, whatever has become of the image's record since; a row that can't be read is
/// thrown with `name`.
class CReadRows
{
public:
    CReadRows(CGraflib* image, const CDataRect& opened, const char* name)
        : mImage(image), mName(name), mPicture(opened), mRows(opened.RowBytes())
    {
    }

    /// The rows from `first` to `last`. Neither may be less than in the call before.
    const unsigned char* Rows(int first, int last)
    {
        mRows.resize(std::max(mRows.size(), SizeProduct(last - first + 1, mPicture.RowBytes())));
        if (first < mNext)  // rows that are there already move to the front
            std::memmove(Row(0), Row(first - mFirst),
                         SizeProduct(mNext - first, mPicture.RowBytes()));
        mFirst = first;
        while (mNext <= last)
            Read(std::max(mNext - first, 0));
        return Row(0);
    }

    /// Reads the rows that nothing is made of. Returns the picture as it would have been read, but
    /// that its buffer is that of the rows at hand.
    CDataRect Finish()
    {
        while (mNext < mPicture.mHeight)
            Read(0);
        mPicture.mData = Row(0);
        return mPicture;
    }

private:
    unsigned char* Row(int index)
    {
        return mRows.data() + static_cast<std::size_t>(index) * mPicture.RowBytes();
    }

    void Read(int index)
    {
        if (!mImage->ReadLine(Row(index)))
            throw CGraflibException(GLIB_ERR_READ, mName);
        ++mNext;
    }

    CGraflib* mImage;
    const char* mName;
    CDataRect mPicture;
    std::vector<unsigned char> mRows;
    int mFirst = 0;  // the first row in mRows
    int mNext = 0;   // the row that will be read next
};

#endif
