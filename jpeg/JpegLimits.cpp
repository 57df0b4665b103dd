// What pictures may cost before they count as damaged.
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>

#include "jpeg/CGraphicsJpeg.h"
#include "jpeg/SJpegState.h"
// libjpeg's error codes, which need its types.
#include <jerror.h>

namespace {

// Our own message beside libjpeg's, whose codes end well below.
constexpr int kTooManyScans = 1000;
constexpr const char* kOwnMessages[] = {"More than %d scans"};

std::uint64_t PixelCount(const jpeg_decompress_struct& decompressor)
{
    return std::uint64_t{decompressor.image_width} * decompressor.image_height;
}

/// libjpeg calls this again and again while it reads the scans of a progressive file.
void LimitScans(j_common_ptr codec)
{
    const auto& decompressor = *reinterpret_cast<j_decompress_ptr>(codec);
    const auto most = static_cast<int>(std::clamp<std::uint64_t>(
        CGraphicsJpeg::kMaxScannedPixels / PixelCount(decompressor), 1, CGraphicsJpeg::kMaxScans));
    if (decompressor.input_scan_number > most)
        ERREXIT1(codec, kTooManyScans, most);
}

}  // namespace

void SetLimits(SJpegState& state)
{
    jpeg_error_mgr& errors = state.mReadErrors.mManager;
    errors.addon_message_table = kOwnMessages;
    errors.first_addon_message = kTooManyScans;
    errors.last_addon_message = kTooManyScans;
    state.mProgress.progress_monitor = LimitScans;
    state.mDecompressor.progress = &state.mProgress;
}

bool CanHold(const SJpegState& state, int offset)
{
    const std::uint64_t pixels = PixelCount(state.mDecompressor);
    struct stat status = {};
    if (pixels <= CGraphicsJpeg::kMaxBelievedPixels || fstat(fileno(state.mInput), &status) != 0 ||
        !S_ISREG(status.st_mode))
        return true;
    const auto bytes = static_cast<std::uint64_t>(std::max<off_t>(status.st_size - offset, 0));
    return pixels <= CGraphicsJpeg::kMaxPixelsPerByte * bytes;
}
