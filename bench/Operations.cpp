#include "bench/Operations.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "tests/support/PixelByPixel.h"

namespace {

// --- The scaler ----------------------------------------------------------------------------------

constexpr int kEnlarge = 0;  // stands for a target 1.5 times as wide and high

struct SSize
{
    int mWidth;
    int mHeight;
};

/// The target in the picture's proportions, `longer` pixels its longer side.
SSize TargetOf(const CDataRect& image, int longer)
{
    if (longer == kEnlarge)
        return {image.mWidth * 3 / 2, image.mHeight * 3 / 2};
    const int side = std::max(image.mWidth, image.mHeight);
    return {longer * image.mWidth / side, longer * image.mHeight / side};
}

template <int LONGER>
void Scale(SWork& work, unsigned char* /*buffer*/)
{
    const SSize size = TargetOf(work.mImage, LONGER);
    work.mImage.DownScaleFix2(size.mWidth, size.mHeight);
}

using Scaler = void (*)(CGraflib& source, int width, int height, unsigned char* dest);

/// Every pixel by itself, as it is defined.
void ScaleByDefinition(CGraflib& source, int width, int height, unsigned char* dest)
{
    ScalePixelByPixel(source, width, height, dest);
}

template <Scaler SCALER, int LONGER>
void ScaleInto(SWork& work, unsigned char* buffer)
{
    const SSize size = TargetOf(work.mImage, LONGER);
    SCALER(work.mImage, size.mWidth, size.mHeight, buffer);
}

/// Reads every byte of the picture once.
void ReadAll(SWork& work, unsigned char* /*buffer*/)
{
    const auto* words = reinterpret_cast<const std::uint64_t*>(work.mImage.mData);
    const std::size_t count = work.mImage.Bytes() / sizeof(std::uint64_t);
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < count; ++i)
        sum += words[i];
    benchmark::DoNotOptimize(sum);
}

constexpr SOperation kScalerOperations[] = {
    {"read", 24, 0, ReadAll},
    {"scaler/192", 24, 0, Scale<192>},
    {"definition/192", 24, 0, ScaleInto<ScaleByDefinition, 192>},
    {"scaler/1024", 24, 0, Scale<1024>},
    {"definition/1024", 24, 0, ScaleInto<ScaleByDefinition, 1024>},
    {"scaler/enlarge", 24, 0, Scale<kEnlarge>},
    {"definition/enlarge", 24, 0, ScaleInto<ScaleByDefinition, kEnlarge>},
#ifdef TESSEL_BENCH_OPENCV
    {"opencv/192", 24, 0, ScaleInto<ScaleByOpenCv, 192>},
    {"opencv/1024", 24, 0, ScaleInto<ScaleByOpenCv, 1024>},
#endif
};

template <int LONGER>
bool Agree(const CPictureSet& pictures, unsigned char* buffer)
{
    auto works = pictures.Copy(1, 24, 0);
    SWork& work = works.front();
    ScaleInto<ScaleByDefinition, LONGER>(work, buffer);
    Scale<LONGER>(work, buffer);
    return std::memcmp(work.mImage.mData, buffer, work.mImage.Bytes()) == 0;
}

// --- The other operations ------------------------------------------------------------------------

/// A palette, and 256 alphas, that are anything but in order.
struct SPalette
{
    SPalette()
    {
        for (int i = 0; i < 256; ++i) {
            const auto byte = [i](int factor) { return static_cast<unsigned char>(i * factor); };
            mColours[i] = CRgb{byte(37), byte(101), byte(211)};
            mAlphas[i] = byte(59);
        }
    }

    CRgb mColours[256];
    unsigned char mAlphas[256];
};

const SPalette kPalette;

void HalveLines(SWork& work, unsigned char* buffer)
{
    CBenchImage& image = work.mImage;
    const auto offset = static_cast<int>(image.RowBytes());
    unsigned char* row = image.mData;
    for (int y = 0; y + 1 < image.mHeight; y += 2, row += 2 * offset, buffer += offset / 2)
        image.DownScaleLine2(row, buffer, offset);
}

void Join(SWork& work, unsigned char* /*buffer*/)
{
    CBenchImage& image = work.mImage;
    const auto* planes = reinterpret_cast<const char*>(image.mData);
    const std::size_t count = image.PixelCount();
    image.JoinBitplanes(planes, planes + count, planes + 2 * count);
}

constexpr SOperation kOperations[] = {
    {"DownScale to 192", 24, 0,
     [](SWork& work, unsigned char*) {
         const SSize size = TargetOf(work.mImage, 192);
         work.mImage.DownScale(size.mWidth, size.mHeight);
     }},
    {"DownScaleLine2", 24, 0, HalveLines},
    {"Yflip", 24, 0, [](SWork& work, unsigned char*) { work.mImage.Yflip(); }},
    {"SwapRedBlue", 24, 0, [](SWork& work, unsigned char*) { work.mImage.SwapRedBlue(); }},
    {"SwapRedBlue, 32 bits", 32, 0, [](SWork& work, unsigned char*) { work.mImage.SwapRedBlue(); }},
    {"ConvertPalToRGB", 8, 0,
     [](SWork& work, unsigned char*) { work.mImage.ConvertPalToRGB(kPalette.mColours); }},
    {"ConvertPalToRGBA", 8, 0,
     [](SWork& work, unsigned char*) {
         work.mImage.ConvertPalToRGBA(kPalette.mColours, kPalette.mAlphas);
     }},
    {"InterleaveAlpha", 24, 8,
     [](SWork& work, unsigned char*) { work.mImage.InterleaveAlpha(&work.mSecond); }},
    {"InterleaveAlpha, 32 bits", 32, 8,
     [](SWork& work, unsigned char*) { work.mImage.InterleaveAlpha(&work.mSecond); }},
    {"SeparateAlpha", 32, 0,
     [](SWork& work, unsigned char*) { work.mImage.SeparateAlpha(&work.mSecond, &work.mThird); }},
    {"CombineWithAlpha", 24, 32,
     [](SWork& work, unsigned char*) { work.mImage.CombineWithAlpha(&work.mSecond); }},
    {"SplitBitplanes", 24, 0,
     [](SWork& work, unsigned char*) {
         work.mImage.SplitBitplanes(&work.mPlanes[0], &work.mPlanes[1], &work.mPlanes[2]);
     }},
    {"JoinBitplanes", 24, 0, Join},
};

}  // namespace

std::span<const SOperation> Operations()
{
    return kOperations;
}

std::span<const SOperation> ScalerOperations()
{
    return kScalerOperations;
}

void CopySources(SWork& work, unsigned char* buffer)
{
    std::memcpy(buffer, work.mImage.mData, work.mImage.Bytes());
    if (work.mSecond.mData)
        std::memcpy(buffer + work.mImage.Bytes(), work.mSecond.mData, work.mSecond.Bytes());
    benchmark::ClobberMemory();
}

bool ScalersAgree(const CPictureSet& pictures, unsigned char* buffer)
{
    return Agree<192>(pictures, buffer) && Agree<1024>(pictures, buffer) &&
           Agree<kEnlarge>(pictures, buffer);
}
