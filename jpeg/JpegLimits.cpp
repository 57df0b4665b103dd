// What pictures may cost before they count as damaged.
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>

#include "jpeg/CGraphicsJpeg.h"
#include "jpeg/SJpegState.h"
// libjpeg's error codes, which need its types.
#include <jerror.h>

namespace {

// Our own messages beside libjpeg's, whose codes end well below.
constexpr int kTooManyScans = 1000;
constexpr int kTooMuchArithmetic = 1001;
constexpr const char* kOwnMessages[] = {"More than %d scans",
                                        "Arithmetic coding that may take more than %d s"};

// What a coefficient costs in arithmetic coding when the data have ended and libjpeg goes on with
// zeros, in nanoseconds: as measured, in files whose first bytes teach the decoder to expect the
// largest values. In a first scan, it is read in up to thirty steps, in a later one, which refines
// it, in up to three.
constexpr std::uint64_t kFirstScanCost = 120;
constexpr std::uint64_t kRefiningCost = 30;
constexpr std::uint64_t kNanoseconds = 1'000'000'000;

std::uint64_t PixelCount(const jpeg_decompress_struct& decompressor)
{
    return std::uint64_t{decompressor.image_width} * decompressor.image_height;
}

void LimitScans(jpeg_decompress_struct& decompressor)
{
    const auto most = static_cast<int>(std::clamp<std::uint64_t>(
        CGraphicsJpeg::kMaxScannedPixels / PixelCount(decompressor), 1, CGraphicsJpeg::kMaxScans));
    if (decompressor.input_scan_number > most)
        ERREXIT1(&decompressor, kTooManyScans, most);
}

/// The longest that the scan which has just begun can take, in nanoseconds.
std::uint64_t ArithmeticCost(const jpeg_decompress_struct& decompressor)
{
    const std::uint64_t blocks = std::uint64_t{decompressor.MCUs_per_row} *
                                 decompressor.MCU_rows_in_scan *
                                 static_cast<unsigned>(decompressor.blocks_in_MCU);
    // Outside of progressive files, libjpeg reads whole blocks whatever the scan says.
    if (!decompressor.progressive_mode)
        return blocks * DCTSIZE2 * kFirstScanCost;
    const auto coefficients = static_cast<unsigned>(decompressor.Se - decompressor.Ss + 1);
    return blocks * coefficients * (decompressor.Ah == 0 ? kFirstScanCost : kRefiningCost);
}

/// Adds up what the scans can take, each when it begins.
void LimitArithmetic(SJpegState& state)
{
    jpeg_decompress_struct& decompressor = state.mDecompressor;
    if (!decompressor.arith_code || decompressor.input_scan_number == state.mLastScan)
        return;
    state.mLastScan = decompressor.input_scan_number;
    state.mArithmeticCost += ArithmeticCost(decompressor);
    if (state.mArithmeticCost > CGraphicsJpeg::kMaxArithmeticSeconds * kNanoseconds)
        ERREXIT1(&decompressor, kTooMuchArithmetic, CGraphicsJpeg::kMaxArithmeticSeconds);
}

/// libjpeg calls this again and again while it reads the scans of a progressive file, also when one
/// has just begun.
void Watch(j_common_ptr codec)
{
    LimitScan(*static_cast<SJpegState*>(codec->client_data));
}

}  // namespace

void SetLimits(SJpegState& state)
{
    jpeg_error_mgr& errors = state.mReadErrors.mManager;
    errors.addon_message_table = kOwnMessages;
    errors.first_addon_message = kTooManyScans;
    errors.last_addon_message = kTooMuchArithmetic;
    state.mProgress.progress_monitor = Watch;
    state.mDecompressor.progress = &state.mProgress;
    long& memory = state.mDecompressor.mem->max_memory_to_use;
    if (memory == 0)  // otherwise it comes from the environment: JPEGMEM
        memory = CGraphicsJpeg::kMaxDecoderBytes;
}

void LimitScan(SJpegState& state)
{
    LimitScans(state.mDecompressor);
    LimitArithmetic(state);
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
