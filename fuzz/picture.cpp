// The reader: whole, at an offset, line by line; the scaler on what was read and while it is read;
// the writer.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/Fuzz.h"
#include "jpeg/CGraflibJpeg.h"

namespace {

constexpr int kMostPixels = 1 << 20;  // so that an input takes milliseconds, not seconds
constexpr int kThumbSize = 24;

bool IsSmall(const char* path, int offset)
{
    CGraflibJpeg image;
    return image.GetSize(path, offset, 0) && image.mWidth < kMostPixels / image.mHeight;
}

/// Scaled while it is read, a picture that can be read whole becomes the same.
void RequireSameByLines(const char* path, const CGraflibJpeg& whole)
{
    CGraflibJpeg lines;
    const CPixelOwner owner(&lines);
    lines.OpenReadLine(path);
    if (!lines.ScaleWhileReading("", kThumbSize, kThumbSize / 2))
        return;
    Require(lines.mBits == whole.mBits, "rows have the picture's depth");
    Require(std::memcmp(lines.mData, whole.mData, lines.Bytes()) == 0,
            "rows make the same thumbnail as the picture");
    Require(lines.mWarnings == whole.mWarnings, "rows have the picture's warnings");
}

/// A picture that can be read whole can also be read reduced, and keeps the pixels asked for.
void RequireReduced(const char* path, int longerSide)
{
    CGraflibJpeg reduced;
    const CPixelOwner owner(&reduced);
    reduced.mLeastSide = kThumbSize / 4;
    reduced.Read(path, nullptr);
    Require(std::max(reduced.mWidth, reduced.mHeight) >= std::min(longerSide, reduced.mLeastSide),
            "a picture is reduced no further than asked for");
}

void ReadWhole(const char* path, int offset)
{
    CGraflibJpeg image;
    const CPixelOwner owner(&image);
    SFileReadInfo info;
    info.mOffset = offset;
    image.mKeepProfile = true;
    image.Read(path, &info);
    Require(image.mData && image.mWidth > 0 && image.mHeight > 0, "a picture has pixels");
    const int longerSide = std::max(image.mWidth, image.mHeight);
    image.DownScaleFix2(kThumbSize, kThumbSize / 2);
    if (offset == 0) {
        RequireSameByLines(path, image);
        RequireReduced(path, longerSide);
    }
    const ScratchFile target("");
    image.Write(target.Path().c_str(), true, nullptr);
    CGraflibJpeg written;
    written.mKeepProfile = true;
    written.OpenReadLine(target.Path().c_str());
    Require(written.mProfile == image.mProfile, "what is written has the profile");
}

void ReadByLine(const char* path)
{
    CGraflibJpeg image;
    image.OpenReadLine(path);
    std::vector<unsigned char> line(image.RowBytes());
    int lines = 0;
    while (image.ReadLine(line.data()))
        ++lines;
    Require(lines <= image.mHeight, "there are no more lines than rows");
    image.CloseReadLine();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    SilenceOutput();
    const ScratchFile file(AsText(data, size));
    const std::string path = file.Path();
    const int offsets[] = {0, size == 0 ? 0 : data[size - 1]};
    for (const int offset : offsets) {
        try {
            if (!IsSmall(path.c_str(), offset))
                continue;
            ReadWhole(path.c_str(), offset);
            if (offset == 0)
                ReadByLine(path.c_str());
        } catch (const CGraflibException&) {
            // A damaged picture, or one of a depth that isn't written.
        } catch (const std::bad_alloc&) {
        }
    }
    return 0;
}
