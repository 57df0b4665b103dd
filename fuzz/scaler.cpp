// The fixed-point scaler against its definition: the first bytes give sizes and depth, the rest the
// contents.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "fuzz/Fuzz.h"
#include "graflib/CGraflib.h"
#include "tests/graflib/SlowScaler.h"

namespace {

struct Image : CGraflib
{
    bool Read(const char*, SFileReadInfo*) override { return false; }
    bool Write(const char*, bool, CFileIO*) override { return false; }
    bool OpenReadLine(const char*) override { return false; }
    bool ReadLine(void*) override { return false; }
    void CloseReadLine() override {}
    bool OpenWriteLine(const char*) override { return false; }
    int WriteLine(void*) override { return 0; }
    void CloseWriteLine() override {}
};

constexpr std::size_t kHeader = 7;

template <typename Sample>
void Check(const std::uint8_t* data, std::size_t size, int components)
{
    // Some pictures are long, so that more rows are summed than fit in a partial sum.
    const int length = data[6] % 3 * 300;
    const int width = data[1] % 64 + 1 + (data[6] % 2 == 0 ? length : 0);
    const int height = data[2] % 64 + 1 + (data[6] % 2 == 0 ? 0 : length);
    const int newWidth = data[3] % 80 + 1;
    const int newHeight = data[4] % 80 + 1;
    const auto count = static_cast<std::size_t>(width * height * components);
    std::vector<Sample> samples(count, static_cast<Sample>(data[5] * 257));
    const std::size_t bytes = std::min(size - kHeader, count * sizeof(Sample));
    std::copy_n(data + kHeader, bytes, reinterpret_cast<std::uint8_t*>(samples.data()));

    Image image;
    const CPixelOwner owner(&image);
    image.mWidth = width;
    image.mHeight = height;
    image.mBits = components * 8 * static_cast<int>(sizeof(Sample));
    image.mData = new unsigned char[image.Bytes()];
    std::copy_n(reinterpret_cast<std::uint8_t*>(samples.data()), image.Bytes(), image.mData);
    Require(image.DownScaleFix2(newWidth, newHeight) != nullptr, "every size can be scaled");
    const auto expected = SlowScale(samples, width, height, components, newWidth, newHeight,
                                    SlowShift(width, height, newWidth, newHeight));
    Require(
        std::equal(expected.begin(), expected.end(), reinterpret_cast<const Sample*>(image.mData)),
        "the scaler equals its definition");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    SilenceOutput();
    if (size < kHeader)
        return 0;
    switch (data[0] % 4) {
        case 0:
            Check<unsigned char>(data, size, 1);
            break;
        case 1:
            Check<unsigned char>(data, size, 3);
            break;
        case 2:
            Check<unsigned char>(data, size, 4);
            break;
        default:
            Check<short>(data, size, 1);
            break;
    }
    return 0;
}
