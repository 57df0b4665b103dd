#ifndef TESSEL_GRAFLIB_CROWBAND_H
#define TESSEL_GRAFLIB_CROWBAND_H

#include <cstddef>
#include <cstring>
#include <vector>

#include "graflib/CGraflib.h"

/// The rows that are needed at a time of a picture that CGraflib::OpenReadLine has opened: a part
/// of CGraflib::DownScaleLines. Refers to the picture and its name; for one thread.
class CRowBand
{
public:
    CRowBand(CGraflib* source, const char* name, int mostRows)
        : mSource(source),
          mName(name),
          mRowBytes(source->RowBytes()),
          mRows(static_cast<std::size_t>(mostRows) * mRowBytes)
    {
    }

    const unsigned char* Rows() const { return mRows.data(); }

    /// Makes row `first` the first of the band and reads on until row `end` would be the next.
    /// Rows that are there already move to the front.
    void MoveTo(int first, int end)
    {
        if (first < mNext)
            std::memmove(mRows.data(), Row(first), RowsBytes(mNext - first));
        mFirst = first;
        for (; mNext < end; ++mNext) {
            if (!mSource->ReadLine(Row(mNext)))
                throw CGraflibException(GLIB_ERR_READ, mName);
        }
    }

    /// Reads the rows up to `end` that nothing is made of.
    void Skip(int end)
    {
        while (mNext < end)
            MoveTo(mNext, mNext + 1);
    }

private:
    std::size_t RowsBytes(int count) const { return static_cast<std::size_t>(count) * mRowBytes; }
    unsigned char* Row(int index) { return mRows.data() + RowsBytes(index - mFirst); }

    CGraflib* mSource;
    const char* mName;
    std::size_t mRowBytes;
    std::vector<unsigned char> mRows;
    int mFirst = 0;  // the band's first row
    int mNext = 0;   // the row that will be read next
};

#endif
