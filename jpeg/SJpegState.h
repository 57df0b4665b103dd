#ifndef TESSEL_JPEG_SJPEGSTATE_H
#define TESSEL_JPEG_SJPEGSTATE_H

// Private to the sources of CGraphicsJpeg, the only ones that see libjpeg.

#include <csetjmp>
#include <cstdio>
// libjpeg's header wants stdio's names declared before it.
#include <jpeglib.h>

/// Rows go to and from libjpeg one by one.
inline constexpr JDIMENSION kOneRow = 1;

/// libjpeg's error manager with the place to which its error exit jumps.
struct SJumpingErrors
{
    jpeg_error_mgr mManager;  // first, so that a pointer to it is a pointer to the whole
    std::jmp_buf mJump;
};

/// What libjpeg needs between calls. A plain record, so that zeroing it makes it new.
struct SJpegState
{
    jpeg_decompress_struct mDecompressor;
    jpeg_compress_struct mCompressor;
    SJumpingErrors mReadErrors;   // jumps out of libjpeg
    jpeg_error_mgr mWriteErrors;  // ends the process
    jpeg_progress_mgr mProgress;  // counts the scans read
    std::FILE* mInput;            // null while no read is open
    JOCTET* mInputBuffer;         // libjpeg's own memory
    bool mHasInput;               // some of the file has been read
    std::FILE* mOutput;           // null while no line-wise write is open
    unsigned char* mImageData;    // the caller's pixels: those being read, or those to encode
    int mDecodedRowBytes;
    int mTargetRowBytes;  // in mImageData; equal to mDecodedRowBytes, as nothing is scaled
    int mHeight;          // of the picture being encoded
    int mWidth;
    unsigned char* mWriteCursor;  // where in mImageData the next decoded row goes
};

/// Lets the decompressor read from state.mInput.
void SetInput(SJpegState& state);

#endif
