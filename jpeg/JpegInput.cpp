// What libjpeg reads from.
#include <cstddef>
#include <cstdio>

#include "jpeg/CGraphicsJpeg.h"
#include "jpeg/SJpegState.h"
// libjpeg's error codes, which need its types.
#include <jerror.h>

namespace {

/// libjpeg decodes a block on its fast path only while 512 bytes for each block of its group are
/// in the buffer: of the 4 kB that its own stdio source delivers at a time, it rarely is.
constexpr std::size_t kInputBytes = 1 << 16;

/// Reads on as libjpeg's stdio source does: an empty file is an error, and a file that ends too
/// early gets an end marker.
boolean FillInput(j_decompress_ptr decompressor)
{
    SJpegState& state = *static_cast<SJpegState*>(decompressor->client_data);
    std::size_t count = 0;
    if (state.mInputBytes < CGraphicsJpeg::kMaxFileBytes)
        count = std::fread(state.mInputBuffer, 1, kInputBytes, state.mInput);
    if (count == 0) {
        if (state.mInputBytes == 0)
            ERREXIT(decompressor, JERR_INPUT_EMPTY);
        WARNMS(decompressor, JWRN_JPEG_EOF);
        state.mInputBuffer[count++] = 0xff;
        state.mInputBuffer[count++] = JPEG_EOI;
    }
    state.mInputBytes += count;
    decompressor->src->next_input_byte = state.mInputBuffer;
    decompressor->src->bytes_in_buffer = count;
    return TRUE;
}

}  // namespace

void SetInput(SJpegState& state)
{
    jpeg_decompress_struct& decompressor = state.mDecompressor;
    jpeg_stdio_src(&decompressor, state.mInput);
    state.mInputBuffer = static_cast<JOCTET*>(decompressor.mem->alloc_large(
        reinterpret_cast<j_common_ptr>(&decompressor), JPOOL_PERMANENT, kInputBytes));
    decompressor.client_data = &state;
    decompressor.src->fill_input_buffer = FillInput;
}
