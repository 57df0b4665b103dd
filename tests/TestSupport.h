#ifndef TESSEL_TESTS_TESTSUPPORT_H
#define TESSEL_TESTS_TESTSUPPORT_H

// What the tests share: temporary folders, images with contents, encoded pictures, program runs.
#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "jpeg/CGraflibJpeg.h"

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;

/// A new folder under the system's temporary one, removed with all it holds.
struct TempFolder
{
    TempFolder();
    ~TempFolder() { fs::remove_all(mPath); }
    std::string operator/(const std::string& name) const { return mPath + "/" + name; }
    std::string mPath;
};

std::string ReadAll(const std::string& path);
void WriteAll(const std::string& path, const std::string& content);
/// Every file below a folder, by relative path, with its content.
std::map<std::string, std::string> Tree(const std::string& folder);

/// An image that owns its pixels.
struct TestImage : CGraflibJpeg
{
    TestImage() = default;
    template <typename Tsample>
    TestImage(int width, int height, int bits, const std::vector<Tsample>& samples)
    {
        const auto* bytes = reinterpret_cast<const unsigned char*>(samples.data());
        mData = new unsigned char[samples.size() * sizeof(Tsample)];
        std::copy(bytes, bytes + samples.size() * sizeof(Tsample), mData);
        mWidth = width;
        mHeight = height;
        mBits = bits;
    }
    ~TestImage() { delete[] mData; }

    template <typename Tsample = unsigned char>
    std::vector<Tsample> Samples() const
    {
        const auto* samples = reinterpret_cast<const Tsample*>(mData);
        return {samples,
                samples + RowBytes() * static_cast<std::size_t>(mHeight) / sizeof(Tsample)};
    }
};

/// `count` samples that look like a picture's: neighbours alike, with noise. Fixed by the seed.
Bytes NoisyBytes(int count, unsigned seed = 1);

/// Encodes pixels of 1 (grey), 3 (RGB) or 4 (CMYK) components with libjpeg's defaults.
std::string EncodeJpeg(int width, int height, int components, const Bytes& pixels, int quality = 80,
                       bool progressive = false);
/// A noisy picture.
std::string SampleJpeg(int width, int height, int components = 3, bool progressive = false);
/// The pixels of a picture, decoded with libjpeg's defaults.
Bytes DecodeJpeg(const std::string& jpeg);

struct SRun
{
    int mStatus;
    std::string mOut;
    std::string mErr;
};
/// Runs a program with a shell's words in a folder, with nothing in its environment.
SRun RunProgram(const std::string& program, const std::string& arguments,
                const std::string& folder = "/");
inline SRun RunTessel(const std::string& arguments, const std::string& folder = "/")
{
    return RunProgram(TESSEL_PROGRAM, arguments, folder);
}

/// What a call writes to standard output.
template <typename Call>
std::string OutputOf(Call call)
{
    testing::internal::CaptureStdout();
    call();
    return testing::internal::GetCapturedStdout();
}

#endif
