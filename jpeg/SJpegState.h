#ifndef TESSEL_JPEG_SJPEGSTATE_H
#define TESSEL_JPEG_SJPEGSTATE_H

// Private to the sources of CGraphicsJpeg, the only ones that see libjpeg.

#include <csetjmp>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <vector>
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

/// What a line-wise write goes to.
enum class EOutput {
    kNewFile,   // new, or replaced
    kAppended,  // a file that holds something else, too
    kStream     // the caller's, which stays open
};

/// A part of a colour profile: what one marker of the file holds.
struct SProfilePart
{
    JOCTET* mBytes;  // libjpeg's own memory
    std::size_t mSize;
};

/// A colour profile in the parts that have been read. They are numbered from 1, and each says how
/// many there are.
struct SProfileParts
{
    static constexpr int kMost = 255;

    SProfilePart mParts[kMost];
    int mCount;         // of the whole profile; 0 while no part has been read
    std::size_t mSize;  // of all parts read
    bool mDamaged;
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
    std::uint64_t mInputBytes;    // of the file that have been read
    std::FILE* mOutput;           // null while no line-wise write is open
    unsigned char* mImageData;    // the caller's pixels: those being read, or those to encode
    int mDecodedRowBytes;
    int mTargetRowBytes;  // in mImageData; equal to mDecodedRowBytes, as it is of the same width
    int mHeight;          // of the picture being encoded
    int mWidth;
    unsigned char* mWriteCursor;  // where in mImageData the next decoded row goes
    EOutput mOutputKind;
    int mLastScan;                  // that has been added to mArithmeticCost
    std::uint64_t mArithmeticCost;  // what all scans can take, in nanoseconds
    SProfileParts mProfile;
};

/// Lets the decompressor read from state.mInput.
void SetInput(SJpegState& state);

/// Makes the decompressor refuse, as damaged, pictures that take too much time or memory.
void SetLimits(SJpegState& state);
/// Refuses the scan that has begun, if it and those before are too many or too long. Of a file with
/// several scans libjpeg has each looked at, but not the one of a file that has no more.
void LimitScan(SJpegState& state);
/// Whether a file from its byte `offset` on can hold the pixels that its header claims. Files that
/// have no length, such as pipes, are believed.
bool CanHold(const SJpegState& state, int offset);

/// Lets the decompressor collect the parts of a colour profile in state.mProfile.
void CollectProfile(SJpegState& state);
/// The profile that was collected; empty if parts are missing, damaged or too large.
std::vector<unsigned char> JoinProfile(const SProfileParts& profile);
/// Writes a profile, which may be empty, behind the header that has just been written.
void WriteProfile(jpeg_compress_struct& compressor, const std::vector<unsigned char>& profile);

#endif
