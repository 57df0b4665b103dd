// Writing. Errors end the process, as is the way of libjpeg's own error manager.
#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include "jpeg/CGraphicsJpeg.h"
#include "jpeg/SJpegState.h"

namespace {

constexpr int kRgbComponents = 3;
static_assert(CGraphicsJpeg::kMaxSide == JPEG_MAX_DIMENSION);

void StartCompress(jpeg_compress_struct& compressor, std::FILE* stream, int width, int height,
                   int quality)
{
    jpeg_stdio_dest(&compressor, stream);
    compressor.image_width = static_cast<JDIMENSION>(width);
    compressor.image_height = static_cast<JDIMENSION>(height);
    compressor.input_components = kRgbComponents;
    compressor.in_color_space = JCS_RGB;
    jpeg_set_defaults(&compressor);  // depends on the colour space
    jpeg_set_quality(&compressor, quality, TRUE);
    jpeg_start_compress(&compressor, TRUE);
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

}  // namespace

bool CGraphicsJpeg::OpenJpegWrite(const char* fileName, int width, int height, int quality)
{
    Abandon();
    SJpegState& state = *mState;
    state.mWidth = width;
    state.mHeight = height;
    state.mCompressor.err = jpeg_std_error(&state.mWriteErrors);
    jpeg_create_compress(&state.mCompressor);
    state.mOutput = std::fopen(fileName, mAppend ? "ab+" : "wb");
    if (!state.mOutput) {
        jpeg_destroy_compress(&state.mCompressor);
        return false;
    }
    StartCompress(state.mCompressor, state.mOutput, width, height, quality);
    return true;
}

int CGraphicsJpeg::WriteJpegLine(const void* line)
{
    return mState->mOutput ? WriteRow(mState->mCompressor, line) : 0;
}

void CGraphicsJpeg::CloseJpegWrite()
{
    SJpegState& state = *mState;
    if (!state.mOutput)
        return;
    jpeg_finish_compress(&state.mCompressor);
    AbandonWrite();
}

/// Releases all that an open write holds, whether it is finished or not.
void CGraphicsJpeg::AbandonWrite()
{
    SJpegState& state = *mState;
    if (!state.mOutput)
        return;
    std::fclose(state.mOutput);
    state.mOutput = nullptr;
    jpeg_destroy_compress(&state.mCompressor);
}

bool CGraphicsJpeg::WriteJpeg(const char* fileName, short width, short height,
                              const unsigned char* pixels, int quality)
{
    if (!OpenJpegWrite(fileName, width, height, quality))
        return false;
    for (int row = 0; row < height; ++row)
        WriteJpegLine(RgbRow(pixels, width, static_cast<std::size_t>(row)));
    CloseJpegWrite();
    return true;
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
    StartCompress(compressor, stream, mState->mWidth, mState->mHeight, quality);
    while (compressor.next_scanline < compressor.image_height)
        WriteRow(compressor, RgbRow(mState->mImageData, mState->mWidth, compressor.next_scanline));
    jpeg_finish_compress(&compressor);
    jpeg_destroy_compress(&compressor);
}

void CGraphicsJpeg::write_JPEG_file(const char* fileName, int quality)
{
    std::FILE* stream = std::fopen(fileName, "wb");
    if (!stream) {
        std::fprintf(stderr, "can't open %s\n", fileName);
        std::exit(EXIT_FAILURE);
    }
    write_JPEG_file(stream, quality);
    std::fclose(stream);
}
