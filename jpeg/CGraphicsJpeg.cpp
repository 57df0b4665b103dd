// Reading, and what becomes of errors meanwhile.
#include "jpeg/CGraphicsJpeg.h"

#include <sys/stat.h>

#include <algorithm>
#include <climits>
#include <csetjmp>
#include <memory>

#include "jpeg/SJpegState.h"
#include "util/SizeProduct.h"
// libjpeg's error codes, which need its types.
#include <jerror.h>

namespace {

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
void EndRead(SJpegState& state)
{
    jpeg_destroy_decompress(&state.mDecompressor);
    std::fclose(state.mInput);
    state.mInput = nullptr;
}

// Our own message beside libjpeg's, whose codes end well below.
constexpr int kTooManyScans = 1000;
constexpr const char* kOwnMessages[] = {"More than %d scans"};

std::uint64_t PixelsOf(const jpeg_decompress_struct& decompressor)
{
    return std::uint64_t{decompressor.image_width} * decompressor.image_height;
}

/// libjpeg calls this again and again while it reads the scans of a progressive file.
void LimitScans(j_common_ptr codec)
{
    const auto& decompressor = *reinterpret_cast<j_decompress_ptr>(codec);
    const auto most = static_cast<int>(std::clamp<std::uint64_t>(
        CGraphicsJpeg::kMaxScannedPixels / PixelsOf(decompressor), 1, CGraphicsJpeg::kMaxScans));
    if (decompressor.input_scan_number > most)
        ERREXIT1(codec, kTooManyScans, most);
}

/// Whether a file from its byte `offset` on can hold the pixels that its header claims. Files that
/// have no length, such as pipes, are believed.
bool CanHold(std::FILE* file, int offset, std::uint64_t pixels)
{
    struct stat status = {};
    if (pixels <= CGraphicsJpeg::kMaxBelievedPixels || fstat(fileno(file), &status) != 0 ||
        !S_ISREG(status.st_mode))
        return true;
    const auto bytes = static_cast<std::uint64_t>(std::max<off_t>(status.st_size - offset, 0));
    return pixels <= CGraphicsJpeg::kMaxPixelsPerByte * bytes;
}

void InitErrors(SJpegState& state)
{
    jpeg_error_mgr& errors = state.mReadErrors.mManager;
    state.mDecompressor.err = jpeg_std_error(&errors);
    errors.error_exit = JumpOut;
    errors.addon_message_table = kOwnMessages;
    errors.first_addon_message = kTooManyScans;
    errors.last_addon_message = kTooManyScans;
}

/// Sets up the decompressor on state.mInput and reads the header. When that fails the read is
/// ended.
bool ReadHeader(SJpegState& state)
{
    InitErrors(state);
    const bool ok = Guarded(state, [&state] {
        jpeg_create_decompress(&state.mDecompressor);
        state.mProgress.progress_monitor = LimitScans;
        state.mDecompressor.progress = &state.mProgress;
        SetInput(state);
        jpeg_read_header(&state.mDecompressor, TRUE);
    });
    if (!ok)
        EndRead(state);
    return ok;
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

bool CGraphicsJpeg::InitJpegRead(int* width, int* height, int* components)
{
    SJpegState& state = *mState;
    if (!ReadHeader(state))
        return false;
    jpeg_decompress_struct& decompressor = state.mDecompressor;
    const bool ok = Guarded(state, [this, &state, &decompressor] {
        if (!CanHold(state.mInput, mReadOffset, PixelsOf(decompressor)))
            ERREXIT(&decompressor, JERR_INPUT_EOF);
        jpeg_start_decompress(&decompressor);
        const JDIMENSION rowBytes =
            decompressor.output_width * static_cast<JDIMENSION>(decompressor.output_components);
        state.mDecodedRowBytes = static_cast<int>(rowBytes);
    });
    if (!ok) {
        EndRead(state);
        return false;
    }
    *width = static_cast<int>(decompressor.image_width);
    *height = static_cast<int>(decompressor.image_height);
    *components = decompressor.output_components;
    mComponents = decompressor.output_components;
    return true;
}

bool CGraphicsJpeg::OpenJpegRead(const char* fileName, int* width, int* height, int* components)
{
    Abandon();
    *mState = SJpegState{};
    mState->mInput = OpenJpegFile(fileName);
    if (!mState->mInput) {
        *width = 0;
        *height = 0;
        return false;
    }
    return InitJpegRead(width, height, components);
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
    if (!ok)
        EndRead(state);
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
    EndRead(state);
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
    if (!state.mInput || !ReadHeader(state))
        return false;
    const JDIMENSION fullWidth = state.mDecompressor.image_width;
    const JDIMENSION fullHeight = state.mDecompressor.image_height;
    const int count = state.mDecompressor.num_components;
    EndRead(state);
    if (fullWidth > SHRT_MAX || fullHeight > SHRT_MAX)
        return false;
    *width = static_cast<short>(fullWidth);
    *height = static_cast<short>(fullHeight);
    if (components)
        *components = count;
    return true;
}
