// The fixed-point scaler against its definition, whole and while it is read: the first bytes give
// sizes and depth, the rest the contents.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "fuzz/Fuzz.h"
#include "tests/support/PixelByPixel.h"
#include "graflib/CGraflib.h"

namespace {

/// Reads its lines out of another picture's buffer.
struct Image : CGraflib
{
    bool Read(const char*, SFileReadInfo*) override { return false; }
    bool Write(const char*, bool, CFileIO*) override { return false; }
    bool OpenReadLine(const char*) override { return false; }
    bool ReadLine(void* line) override
    {
        std::copy_n(mLines, mLineBytes, static_cast<unsigned char*>(line));
        mLines += mLineBytes;
        return true;
    }
    void CloseReadLine() override {}
    bool OpenWriteLine(const char*) override { return false; }
    int WriteLine(void*) override { return 0; }
    void CloseWriteLine() override {}
    using CGraflib::ScaleWhileReading;

    const unsigned char* mLines = nullptr;
    std::size_t mLineBytes = 0;
};

constexpr std::size_t kHeader = 7;

void Check(const std::uint8_t* data, std::size_t size)
{
    constexpr int kDepths[] = {8, 24, 32, 16};
    // Some pictures are long, so that more rows are summed than a block has.
    const int length = data[6] % 3 * 300;
    const int newWidth = data[3] % 80 + 1;
    const int newHeight = data[4] % 80 + 1;
    Image image;
    const CPixelOwner owner(&image);
    image.mWidth = data[1] % 64 + 1 + (data[6] % 2 == 0 ? length : 0);
    image.mHeight = data[2] % 64 + 1 + (data[6] % 2 == 0 ? 0 : length);
    image.mBits = kDepths[data[0] % 4];
    image.mData = new unsigned char[image.Bytes()];
    const std::size_t given = std::min(size - kHeader, image.Bytes());
    std::copy_n(data + kHeader, given, image.mData);
    std::fill(image.mData + given, image.mData + image.Bytes(), data[5]);

    const CDataRect source = image;
    Image lines;
    const CPixelOwner linesOwner(&lines);
    lines.mLines = source.mData;
    lines.mLineBytes = source.RowBytes();
    Require(lines.ScaleWhileReading(source, "", newWidth, newHeight), "lines can be scaled");
    Require(lines.mLines == source.mData + source.Bytes(), "every line is read once");

    std::vector<unsigned char> expected(lines.Bytes());
    ScalePixelByPixel(image, newWidth, newHeight, expected.data());
    Require(image.DownScaleFix2(newWidth, newHeight), "every size can be scaled");
    for (const unsigned char* pixels : {image.mData, lines.mData})
        Require(std::equal(expected.begin(), expected.end(), pixels),
                "the scaler equals its definition");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    SilenceOutput();
    if (size >= kHeader)
        Check(data, size);
    return 0;
}
