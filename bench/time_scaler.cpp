// Times the scaler, and what it is compared with, over the large colour pictures among its
// arguments. Prints a line of JSON: seconds of processor for one pass over all of them. It times
// itself, as scaling is a small part of a process that decodes them, too.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <deque>
#include <iostream>

#include "jpeg/CGraflibJpeg.h"
#include "tests/support/PixelByPixel.h"
#ifdef TESSEL_BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

constexpr std::size_t kFewestPixels = 5'000'000;
constexpr std::size_t kMostBytes = 1'200'000'000;  // of all pictures together
constexpr std::size_t kMostEnlarged = 4;           // as the definition is slow

struct CImage final : CGraflibJpeg
{
    CImage() = default;
    ~CImage() { delete[] mData; }
};
using Images = std::deque<CImage>;

// Ways to go through a picture. `dest` is another one, of the size wanted and without pixels.

/// Reads every byte, in 64-bit words.
void Read(CGraflib& image, CDataRect& /*dest*/)
{
    const auto* words = reinterpret_cast<const std::uint64_t*>(image.mData);
    const std::size_t count = image.Bytes() / sizeof(std::uint64_t);
    std::uint64_t sum = 0;
    for (std::size_t i = 0; i < count; ++i)
        sum += words[i];
    asm volatile("" : : "r"(sum));  // somebody wants it
}

void Scale(CGraflib& image, CDataRect& dest)
{
    image.DownScaleFix2(dest.mWidth, dest.mHeight);
}

/// Every pixel by itself, as it is defined.
void ScaleByDefinition(CGraflib& image, CDataRect& dest)
{
    dest.mData = new unsigned char[dest.Bytes()];
    ScalePixelByPixel(image, dest.mWidth, dest.mHeight, dest.mData);
}

#ifdef TESSEL_BENCH_OPENCV
void ScaleByOpenCv(CGraflib& image, CDataRect& dest)
{
    dest.mData = new unsigned char[dest.Bytes()];
    const cv::Mat from(image.mHeight, image.mWidth, CV_8UC3, image.mData);
    cv::Mat to(dest.mHeight, dest.mWidth, CV_8UC3, dest.mData);
    cv::setNumThreads(1);
    cv::resize(from, to, to.size(), 0, 0, cv::INTER_AREA);
}
#endif

struct STimed
{
    const char* mName;
    void (*mRun)(CGraflib& image, CDataRect& dest);
    int mLonger;  // the longer side of the result; 0: half as long again as it is
};

constexpr STimed kTimed[] = {
    {"reading", Read, 192},
    {"scaler to 192", Scale, 192},
    {"scaler to 1024", Scale, 1024},
    {"scaler enlarging", Scale, 0},
    {"definition enlarging", ScaleByDefinition, 0},
#ifdef TESSEL_BENCH_OPENCV
    {"OpenCV to 192", ScaleByOpenCv, 192},
    {"OpenCV to 1024", ScaleByOpenCv, 1024},
#endif
};

Images Decode(char** names, char** end)
{
    Images pictures;
    std::size_t left = kMostBytes;
    for (; names != end; ++names) {
        CGraflibJpeg size;
        size.GetSize(*names, 0, 0);
        if (size.mBits != 24 || size.PixelCount() < kFewestPixels || size.Bytes() > left)
            continue;
        pictures.emplace_back().Read(*names, nullptr);
        left -= size.Bytes();
    }
    return pictures;
}

/// One pass over copies, as the scaler releases what it works on. They are all made before it: none
/// is in a cache any more.
double Time(const STimed& timed, const Images& pictures)
{
    const std::size_t most = timed.mLonger == 0 ? kMostEnlarged : pictures.size();
    const std::size_t count = std::min(most, pictures.size());
    Images copies(count);
    Images results(count);
    for (std::size_t i = 0; i < count; ++i) {
        static_cast<CDataRect&>(copies[i]) = pictures[i];
        copies[i].mData = new unsigned char[pictures[i].Bytes()];
        std::copy_n(pictures[i].mData, pictures[i].Bytes(), copies[i].mData);
        const int longer = std::max(pictures[i].mWidth, pictures[i].mHeight);
        const int wanted = timed.mLonger == 0 ? longer * 3 / 2 : timed.mLonger;
        results[i].mWidth = pictures[i].mWidth * wanted / longer;
        results[i].mHeight = pictures[i].mHeight * wanted / longer;
        results[i].mBits = pictures[i].mBits;
    }
    const std::clock_t start = std::clock();
    for (std::size_t i = 0; i < count; ++i)
        timed.mRun(copies[i], results[i]);
    return static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
}

}  // namespace

int main(int argc, char** argv)
{
#ifdef __GLIBC__
    // The allocator keeps its memory, as the program's does: fresh pages would be timed as well.
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, -1);
#endif
    std::cout.rdbuf(nullptr);  // the scaler writes lines there
    const Images pictures = Decode(argv + 1, argv + argc);
    if (pictures.empty()) {
        std::cerr << "time_scaler: no colour pictures of 5 megapixels and more" << std::endl;
        return 1;
    }
    const char* before = "{";
    for (const STimed& timed : kTimed) {
        std::printf("%s\"%s\": %.6f", before, timed.mName, Time(timed, pictures));
        before = ", ";
    }
    std::puts("}");
    return 0;
}
