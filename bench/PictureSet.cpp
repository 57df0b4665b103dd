#include "bench/PictureSet.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "util/CFileIO.h"

namespace {

constexpr std::size_t kFewestPixels = 5'000'000;
constexpr std::size_t kMostBytes = 1'200'000'000;

constexpr int kNoiseCount = 12;
constexpr int kNoiseHeight = 2828;  // 4242 x 2828 pixels: 12 megapixels
constexpr int kNoiseStep = 76;      // rows more from one to the next, up to 20 megapixels

void FillWithNoise(CDataRect& image, std::uint64_t seed)
{
    std::uint64_t state = seed;
    for (std::size_t i = 0; i < image.Bytes(); ++i) {
        state = state * 6364136223846793005u + 1442695040888963407u;
        image.mData[i] = static_cast<unsigned char>(state >> 56);
    }
}

void SetSize(CBenchImage& image, int width, int height, int bits)
{
    static_cast<CDataRect&>(image) = {nullptr, width, height, bits};
    image.mData = new unsigned char[image.Bytes()];
}

/// Gives `copy` the size of `picture` at a depth of `bits`, and its bytes, from the beginning once
/// more where they don't suffice.
void CopyBytes(const CDataRect& picture, int bits, CBenchImage& copy)
{
    SetSize(copy, picture.mWidth, picture.mHeight, bits);
    const std::size_t once = std::min(copy.Bytes(), picture.Bytes());
    std::memcpy(copy.mData, picture.mData, once);
    std::memcpy(copy.mData + once, picture.mData, copy.Bytes() - once);
}

}  // namespace

CPictureSet::CPictureSet(const char* folder)
{
    if (folder)
        Decode(folder);
    else
        DrawNoise();
}

void CPictureSet::Decode(const char* folder)
{
    std::vector<std::string> names;
    CFileIO().ResolveWildCard(folder, "*.jpg", &names);
    std::sort(names.begin(), names.end());
    std::size_t bytes = 0;
    for (const std::string& name : names) {
        const std::string path = std::string(folder) + "/" + name;
        CBenchImage& image = mPictures.emplace_back();
        image.GetSize(path.c_str(), 0, 0);
        if (image.mBits != 24 || image.PixelCount() < kFewestPixels ||
            bytes + image.Bytes() > kMostBytes) {
            mPictures.pop_back();
            continue;
        }
        image.Read(path.c_str(), nullptr);
        bytes += image.Bytes();
    }
}

void CPictureSet::DrawNoise()
{
    for (int i = 0; i < kNoiseCount; ++i) {
        const int height = kNoiseHeight + i * kNoiseStep;
        CBenchImage& image = mPictures.emplace_back();
        SetSize(image, height * 3 / 2, height, 24);
        FillWithNoise(image, static_cast<std::uint64_t>(i));
    }
}

std::size_t CPictureSet::Pixels(std::size_t count) const
{
    std::size_t pixels = 0;
    for (std::size_t i = 0; i < count; ++i)
        pixels += mPictures[i].PixelCount();
    return pixels;
}

std::size_t CPictureSet::LargestPixels() const
{
    std::size_t largest = 0;
    for (const CBenchImage& picture : mPictures)
        largest = std::max(largest, picture.PixelCount());
    return largest;
}

std::deque<SWork> CPictureSet::Copy(std::size_t count, int bits, int secondBits) const
{
    std::deque<SWork> works;
    for (std::size_t i = 0; i < count; ++i) {
        SWork& work = works.emplace_back();
        CopyBytes(mPictures[i], bits, work.mImage);
        if (secondBits != 0)
            CopyBytes(mPictures[i], secondBits, work.mSecond);
    }
    return works;
}
