#ifndef TESSEL_APP_CTHUMBNAIL_H
#define TESSEL_APP_CTHUMBNAIL_H

#include <cstdio>

#include "jpeg/CGraflibJpeg.h"

/// One picture's thumbnail in the making: read, perhaps changed, written. What it does, it says on
/// standard output; libjpeg's messages go to standard error. Failures are results: nothing is
/// thrown. One object makes one thumbnail and is used by one thread.
class CThumbnail
{
public:
    /// The thumbnail once it is read. Its settings hold from Read on.
    CGraflibJpeg mImage;

    /// Reads a picture with the longer side made `size` pixels (the default size, if that is below
    /// 1), in the picture's proportions. False when it is no regular file, can't be decoded or
    /// there is no memory for it.
    bool Read(const char* source, int size);
    /// Writes the thumbnail into the file `target` (see OpenOutput). False when that can't be; no
    /// half of a file is left then. An error of the JPEG encoder, such as a full disk, ends the
    /// process.
    bool Write(const char* target);
    /// Writes the thumbnail to an open file, saying that it is `target`.
    bool Write(std::FILE* stream, const char* target);

private:
    CPixelOwner mOwner{&mImage};
};

#endif
