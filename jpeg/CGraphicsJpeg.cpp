// Reading, and what becomes of errors meanwhile.
#include "jpeg/CGraphicsJpeg.h"

#include <algorithm>
#include <climits>
#include <csetjmp>
#include <memory>
#include <new>

#include "jpeg/SJpegState.h"
#include "util/SizeProduct.h"
// libjpeg's error codes, which need its types.
#include <jerror.h>

namespace {

constexpr int kProfiledComponents = 3;

[[noreturn]] void JumpOut(j_common_ptr codec)
{
    codec->err->output_message(codec);
    std::longjmp(reinterpret_cast<SJumpingErrors*>(codec->err)->mJump, 1);
}

/// Runs a step that calls libjpeg; false when an error jumped out of it. A step is a lambda that
/// captures references and holds nothing with a destructor: the jump skips it without a trace.
template <typename Step>
bool Guarded(SJpegState& state, Step step)
{
    if (setjmp(state.mReadErrors.mJump) != 0)
        return false;
    step();
    return true;
}

/// Releases all that an open read holds; the state is idle then.
void ReleaseRead(SJpegState& state)
{
    jpeg_destroy_decompress(&state.mDecompressor);
    std::fclose(state.mInput);
    state.mInput = nullptr;
}

/// Sets up the decompressor on state.mInput and reads the header. When that fails the read is
/// ended.
bool ReadHeader(SJpegState& state, bool keepProfile)
{
    state.mDecompressor.err = jpeg_std_error(&state.mReadErrors.mManager);
    state.mReadErrors.mManager.error_exit = JumpOut;
    const bool ok = Guarded(state, [&state, keepProfile] {
        jpeg_create_decompress(&state.mDecompressor);
        SetLimits(state);
        SetInput(state);
        if (keepProfile)
            CollectProfile(state);
        jpeg_read_header(&state.mDecompressor, TRUE);
    });
    if (!ok)
        ReleaseRead(state);
    return ok;
}

/// Lets libjpeg decode to the smallest of 1/2, 1/4 and 1/8 that leaves the longer side at least
/// `leastSide` pixels; whole, if there is none, or for 0.
void ChooseScale(jpeg_decompress_struct& decompressor, int leastSide)
{
    const JDIMENSION longer = std::max(decompressor.image_width, decompressor.image_height);
    JDIMENSION part = 1;
    // libjpeg rounds up.
    while (leastSide > 0 && part < 8 &&
           (longer + 2 * part - 1) / (2 * part) >= static_cast<JDIMENSION>(leastSide))
        part *= 2;
    decompressor.scale_num = 1;
    decompressor.scale_denom = part;
}

}  // namespace

CGraphicsJpeg::CGraphicsJpeg() : mState(new SJpegState{}) {}

CGraphicsJpeg::~CGraphicsJpeg()
{
    delete mState;
}

std::FILE* CGraphicsJpeg::OpenJpegFile(const char* fileName) const
{
    std::FILE* stream = std::fopen(fileName, "rb");
    if (stream && mReadOffset != 0 && std::fseek(stream, mReadOffset, SEEK_SET) != 0) {
        std::fclose(stream);
        return nullptr;
    }
    return stream;
}

/// Ends the open read, with or without its last rows.
void CGraphicsJpeg::EndRead()
{
    CountWarnings();
    ReleaseRead(*mState);
}

void CGraphicsJpeg::CountWarnings()
{
    mWarnings = mState->mReadErrors.mManager.num_warnings;
}

bool CGraphicsJpeg::InitJpegRead(int* width, int* height, int* components)
{
    SJpegState& state = *mState;
    const bool hasHeader = ReadHeader(state, mKeepProfile);
    CountWarnings();
    if (!hasHeader)
        return false;
    jpeg_decompress_struct& decompressor = state.mDecompressor;
    const bool ok = Guarded(state, [this, &state, &decompressor] {
        if (!CanHold(state, mReadOffset))
            ERREXIT(&decompressor, JERR_INPUT_EOF);
        ChooseScale(decompressor, mLeastSide);
        jpeg_start_decompress(&decompressor);
        LimitScan(state);
        const JDIMENSION rowBytes =
            decompressor.output_width * static_cast<JDIMENSION>(decompressor.output_components);
        state.mDecodedRowBytes = static_cast<int>(rowBytes);
    });
    if (!ok) {
        EndRead();
        return false;
    }
    CountWarnings();
    *width = static_cast<int>(decompressor.output_width);
    *height = static_cast<int>(decompressor.output_height);
    *components = decompressor.output_components;
    mComponents = decompressor.output_components;
    return true;
}

/// Keeps the profile of the picture that was opened. One that describes grey or four channels is of
/// no use, since what is written is red, green, blue.
void CGraphicsJpeg::TakeProfile()
{
    if (mState->mDecompressor.num_components != kProfiledComponents)
        return;
    try {
        mProfile = JoinProfile(mState->mProfile);
    } catch (const std::bad_alloc&) {
        EndRead();
        throw;
    }
}

bool CGraphicsJpeg::OpenJpegRead(const char* fileName, int* width, int* height, int* components)
{
    Abandon();
    *mState = SJpegState{};
    mWarnings = 0;
    if (mKeepProfile)
        mProfile.clear();
    mState->mInput = OpenJpegFile(fileName);
    if (!mState->mInput) {
        *width = 0;
        *height = 0;
        return false;
    }
    if (!InitJpegRead(width, height, components))
        return false;
    if (mKeepProfile)
        TakeProfile();
    return true;
}

bool CGraphicsJpeg::LinesRemain() const
{
    return mState->mInput &&
           mState->mDecompressor.output_scanline < mState->mDecompressor.output_height;
}

/// Decodes the next row to `row`; ends the read when that fails.
bool CGraphicsJpeg::DecodeLine(unsigned char* row)
{
    SJpegState& state = *mState;
    const bool ok = Guarded(
        state, [&state, &row] { jpeg_read_scanlines(&state.mDecompressor, &row, kOneRow); });
    CountWarnings();
    if (!ok)
        EndRead();
    return ok;
}

/// Steps over the row that was decoded straight into the picture. A copy out of a row buffer, cold
/// memory being written, would cost a tenth of the decoding.
void CGraphicsJpeg::put_scanline()
{
    mState->mWriteCursor += mState->mDecodedRowBytes;
}

bool CGraphicsJpeg::ReadJpegLine()
{
    if (!DecodeLine(mState->mWriteCursor))
        return false;
    put_scanline();
    return true;
}

bool CGraphicsJpeg::ReadJpegLine(void* line)
{
    return LinesRemain() && DecodeLine(static_cast<unsigned char*>(line));
}

/// Ends a read in any state. An error while finishing is no loss: all rows are delivered then. A
/// read ended before its last row isn't finished, which libjpeg would take for an error.
void CGraphicsJpeg::CloseJpeg()
{
    SJpegState& state = *mState;
    if (!state.mInput)
        return;
    if (!LinesRemain())
        Guarded(state, [&state] { jpeg_finish_decompress(&state.mDecompressor); });
    EndRead();
}

void CGraphicsJpeg::Abandon()
{
    CloseJpeg();
    AbandonWrite();
}

void CGraphicsJpeg::CloseJpegLines()
{
    CloseJpeg();
}

unsigned char* CGraphicsJpeg::ReadJpeg(const char* fileName, int* width, int* height,
                                       int* components)
{
    if (!OpenJpegRead(fileName, width, height, components))
        return nullptr;
    // Whatever happens from here on, a failed allocation included, the read is ended.
    struct Closer
    {
        CGraphicsJpeg* mJpeg;
        ~Closer() { mJpeg->CloseJpeg(); }
    } const closer{this};

    mState->mTargetRowBytes = *width * *components;
    auto pixels = NewArray<unsigned char>(*width, *components, *height);
    mState->mImageData = pixels.get();
    mState->mWriteCursor = pixels.get();
    while (LinesRemain()) {
        if (!ReadJpegLine())
            return nullptr;
    }
    return pixels.release();
}

unsigned char* CGraphicsJpeg::ReadJpeg(const char* fileName, short* width, short* height,
                                       int /*unused*/)
{
    int fullWidth = 0;
    int fullHeight = 0;
    unsigned char* pixels = ReadJpeg(fileName, &fullWidth, &fullHeight, &mComponents);
    *width = static_cast<short>(fullWidth);
    *height = static_cast<short>(fullHeight);
    return pixels;
}

bool CGraphicsJpeg::GetJpegSize(const char* fileName, short* width, short* height, int* components)
{
    *width = 0;
    *height = 0;
    SJpegState state{};
    state.mInput = OpenJpegFile(fileName);
    if (!state.mInput || !ReadHeader(state, false))
        return false;
    const JDIMENSION fullWidth = state.mDecompressor.image_width;
    const JDIMENSION fullHeight = state.mDecompressor.image_height;
    const int count = state.mDecompressor.num_components;
    ReleaseRead(state);
    if (fullWidth > SHRT_MAX || fullHeight > SHRT_MAX)
        return false;
    *width = static_cast<short>(fullWidth);
    *height = static_cast<short>(fullHeight);
    if (components)
        *components = count;
    return true;
}
