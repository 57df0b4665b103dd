// Writing. Errors end the process, as is the way of libjpeg's own error manager; but for those that
// the system only tells when a file is closed.
#include <sys/stat.h>

#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include "jpeg/CGraphicsJpeg.h"
#include "jpeg/SJpegState.h"

namespace {

constexpr int kRgbComponents = 3;
static_assert(CGraphicsJpeg::kMaxSide == JPEG_MAX_DIMENSION);

void StartCompress(jpeg_compress_struct& compressor, std::FILE* stream, int width, int height,
                   int quality, const std::vector<unsigned char>& profile)
{
    jpeg_stdio_dest(&compressor, stream);
    compressor.image_width = static_cast<JDIMENSION>(width);
    compressor.image_height = static_cast<JDIMENSION>(height);
    compressor.input_components = kRgbComponents;
    compressor.in_color_space = JCS_RGB;
    jpeg_set_defaults(&compressor);  // depends on the colour space
    jpeg_set_quality(&compressor, quality, TRUE);
    jpeg_start_compress(&compressor, TRUE);
    WriteProfile(compressor, profile);
}

int WriteRow(jpeg_compress_struct& compressor, const void* row)
{
    // libjpeg's interface takes rows as writable; it only reads them.
    auto* samples = static_cast<JSAMPROW>(const_cast<void*>(row));
    return static_cast<int>(jpeg_write_scanlines(&compressor, &samples, kOneRow));
}

const unsigned char* RgbRow(const unsigned char* pixels, int width, std::size_t row)
{
    return pixels + row * static_cast<std::size_t>(width) * kRgbComponents;
}

/// Removes the file that was written, unless the name has come to stand for something else or is
/// that of a link.
void RemoveFile(const std::string& fileName, const struct stat& written)
{
    struct stat found = {};
    if (S_ISREG(written.st_mode) && lstat(fileName.c_str(), &found) == 0 &&
        found.st_dev == written.st_dev && found.st_ino == written.st_ino)
        std::remove(fileName.c_str());
}

[[noreturn]] void EndProcess(const char* message, const char* fileName)
{
    std::fprintf(stderr, message, fileName);
    std::exit(EXIT_FAILURE);
}

}  // namespace

bool CGraphicsJpeg::OpenJpegWrite(const char* fileName, int width, int height, int quality)
{
    Abandon();
    std::FILE* stream = std::fopen(fileName, mAppend ? "ab+" : "wb");
    if (!stream)
        return false;
    BeginWrite(stream, width, height, quality);
    mState->mOutputKind = mAppend ? EOutput::kAppended : EOutput::kNewFile;
    mOutputName = fileName;
    return true;
}

void CGraphicsJpeg::OpenJpegWrite(std::FILE* stream, int width, int height, int quality)
{
    Abandon();
    BeginWrite(stream, width, height, quality);
    mState->mOutputKind = EOutput::kStream;
    mOutputName.clear();
}

void CGraphicsJpeg::BeginWrite(std::FILE* stream, int width, int height, int quality)
{
    SJpegState& state = *mState;
    state.mWidth = width;
    state.mHeight = height;
    state.mOutput = stream;
    state.mCompressor.err = jpeg_std_error(&state.mWriteErrors);
    jpeg_create_compress(&state.mCompressor);
    StartCompress(state.mCompressor, stream, width, height, quality, mProfile);
}

int CGraphicsJpeg::WriteJpegLine(const void* line)
{
    return mState->mOutput ? WriteRow(mState->mCompressor, line) : 0;
}

bool CGraphicsJpeg::CloseJpegWrite()
{
    SJpegState& state = *mState;
    if (!state.mOutput)
        return true;
    jpeg_finish_compress(&state.mCompressor);
    struct stat written = {};
    const bool isOurs =
        state.mOutputKind == EOutput::kNewFile && fstat(fileno(state.mOutput), &written) == 0;
    const bool ok = AbandonWrite();
    if (!ok && isOurs)
        RemoveFile(mOutputName, written);
    return ok;
}

/// Releases all that an open write holds, whether it is finished or not. False when closing the
/// file fails.
bool CGraphicsJpeg::AbandonWrite()
{
    SJpegState& state = *mState;
    if (!state.mOutput)
        return true;
    const bool ok = state.mOutputKind == EOutput::kStream || std::fclose(state.mOutput) == 0;
    state.mOutput = nullptr;
    jpeg_destroy_compress(&state.mCompressor);
    return ok;
}

bool CGraphicsJpeg::WriteJpeg(const char* fileName, short width, short height,
                              const unsigned char* pixels, int quality)
{
    if (!OpenJpegWrite(fileName, width, height, quality))
        return false;
    for (int row = 0; row < height; ++row)
        WriteJpegLine(RgbRow(pixels, width, static_cast<std::size_t>(row)));
    return CloseJpegWrite();
}

int CGraphicsJpeg::WriteJpeg(std::FILE* stream, short width, short height,
                             const unsigned char* pixels, int quality)
{
    mState->mWidth = width;
    mState->mHeight = height;
    mState->mImageData = const_cast<unsigned char*>(pixels);  // write_JPEG_file only reads them
    const long start = std::ftell(stream);
    write_JPEG_file(stream, quality);
    return static_cast<int>(std::ftell(stream) - start);
}

void CGraphicsJpeg::write_JPEG_file(std::FILE* stream, int quality)
{
    jpeg_compress_struct compressor{};
    jpeg_error_mgr errors{};
    compressor.err = jpeg_std_error(&errors);
    jpeg_create_compress(&compressor);
    StartCompress(compressor, stream, mState->mWidth, mState->mHeight, quality, mProfile);
    while (compressor.next_scanline < compressor.image_height)
        WriteRow(compressor, RgbRow(mState->mImageData, mState->mWidth, compressor.next_scanline));
    jpeg_finish_compress(&compressor);
    jpeg_destroy_compress(&compressor);
}

void CGraphicsJpeg::write_JPEG_file(const char* fileName, int quality)
{
    std::FILE* stream = std::fopen(fileName, "wb");
    if (!stream)
        EndProcess("can't open %s\n", fileName);
    write_JPEG_file(stream, quality);
    if (std::fclose(stream) != 0)
        EndProcess("can't write %s\n", fileName);
}
