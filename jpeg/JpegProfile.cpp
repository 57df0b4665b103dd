// Colour profiles. A file holds one in parts, each in a marker of its own. Newer versions of
// libjpeg collect them, but without a limit, and walk to the end of the list of markers for each:
// over 512 kB of empty ones, that takes 24 seconds.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <vector>

#include "jpeg/CGraphicsJpeg.h"
#include "jpeg/SJpegState.h"

namespace {

constexpr int kMarker = JPEG_APP0 + 2;
constexpr char kSignature[] = "ICC_PROFILE";       // with the zero behind it
constexpr int kHeadBytes = sizeof kSignature + 2;  // the part's number and how many there are
constexpr int kLengthBytes = 2;                    // of a marker, which count as its own
constexpr std::size_t kMostPartBytes = 65535 - kLengthBytes - kHeadBytes;
static_assert(CGraphicsJpeg::kMaxProfileBytes <= kMostPartBytes * SProfileParts::kMost);

int ReadByte(j_decompress_ptr decompressor)
{
    jpeg_source_mgr& source = *decompressor->src;
    if (source.bytes_in_buffer == 0)
        source.fill_input_buffer(decompressor);  // which always delivers
    --source.bytes_in_buffer;
    return *source.next_input_byte++;
}

void ReadBytes(j_decompress_ptr decompressor, JOCTET* bytes, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        bytes[i] = static_cast<JOCTET>(ReadByte(decompressor));
}

/// Reads the part that begins with `head`, if it is one that fits; true then.
bool ReadPart(j_decompress_ptr decompressor, const JOCTET* head, std::size_t size)
{
    SProfileParts& profile = static_cast<SJpegState*>(decompressor->client_data)->mProfile;
    const int number = head[sizeof kSignature];
    const int count = head[sizeof kSignature + 1];
    if (profile.mCount == 0)
        profile.mCount = count;
    profile.mSize += size;
    if (profile.mSize > CGraphicsJpeg::kMaxProfileBytes || count != profile.mCount || number < 1 ||
        number > count || profile.mParts[number - 1].mBytes)
        profile.mDamaged = true;
    if (profile.mDamaged)
        return false;
    SProfilePart& part = profile.mParts[number - 1];
    part.mSize = size;
    part.mBytes = static_cast<JOCTET*>(decompressor->mem->alloc_large(
        reinterpret_cast<j_common_ptr>(decompressor), JPOOL_IMAGE, std::max<std::size_t>(size, 1)));
    ReadBytes(decompressor, part.mBytes, size);
    return true;
}

/// libjpeg calls this with each marker of the kind that holds profiles, among other things.
boolean ReadMarker(j_decompress_ptr decompressor)
{
    int rest = ReadByte(decompressor) << 8;
    rest += ReadByte(decompressor) - kLengthBytes;
    if (rest >= kHeadBytes) {
        JOCTET head[kHeadBytes];
        ReadBytes(decompressor, head, kHeadBytes);
        rest -= kHeadBytes;
        if (std::memcmp(head, kSignature, sizeof kSignature) == 0 &&
            ReadPart(decompressor, head, static_cast<std::size_t>(rest)))
            rest = 0;
    }
    if (rest > 0)
        decompressor->src->skip_input_data(decompressor, rest);
    return TRUE;
}

void WriteBytes(jpeg_compress_struct& compressor, const unsigned char* bytes, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        jpeg_write_m_byte(&compressor, bytes[i]);
}

}  // namespace

void CollectProfile(SJpegState& state)
{
    jpeg_set_marker_processor(&state.mDecompressor, kMarker, ReadMarker);
}

std::vector<unsigned char> JoinProfile(const SProfileParts& profile)
{
    std::vector<unsigned char> joined;
    if (profile.mDamaged)
        return joined;
    joined.reserve(profile.mSize);
    for (int i = 0; i < profile.mCount; ++i) {
        const SProfilePart& part = profile.mParts[i];
        if (!part.mBytes)
            return {};
        joined.insert(joined.end(), part.mBytes, part.mBytes + part.mSize);
    }
    return joined;
}

void WriteProfile(jpeg_compress_struct& compressor, const std::vector<unsigned char>& profile)
{
    const std::size_t parts = (profile.size() + kMostPartBytes - 1) / kMostPartBytes;
    for (std::size_t part = 0; part < parts; ++part) {
        const std::size_t begin = part * kMostPartBytes;
        const std::size_t size = std::min(profile.size() - begin, kMostPartBytes);
        jpeg_write_m_header(&compressor, kMarker, static_cast<unsigned>(kHeadBytes + size));
        WriteBytes(compressor, reinterpret_cast<const unsigned char*>(kSignature),
                   sizeof kSignature);
        jpeg_write_m_byte(&compressor, static_cast<int>(part + 1));
        jpeg_write_m_byte(&compressor, static_cast<int>(parts));
        WriteBytes(compressor, profile.data() + begin, size);
    }
}
