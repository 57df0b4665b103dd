#ifndef TESSEL_TESTS_SUPPORT_TESTSUPPORT_H
#define TESSEL_TESTS_SUPPORT_TESTSUPPORT_H

// What the tests share: temporary folders, images with contents, encoded pictures, program runs.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "jpeg/CGraflibJpeg.h"
#include "tests/support/EncodeJpeg.h"

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;
using Names = std::vector<std::string>;
using Shape = std::tuple<int, int, int>;  ///< width, height and bits of an image
using Sizes = std::array<int, 4>;         ///< width and height before and after scaling

// --- Contents ------------------------------------------------------------------------------------

/// Whether two contents, too long to be printed, are the same; where they differ, if not.
template <typename Tfound, typename Texpected>
testing::AssertionResult AreSame(const Tfound& found, const Texpected& expected)
{
    if (found.size() != expected.size())
        return testing::AssertionFailure()
               << found.size() << " bytes, expected " << expected.size();
    const auto [at, wanted] = std::mismatch(found.begin(), found.end(), expected.begin());
    if (at == found.end())
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << "byte " << at - found.begin() << " is " << int{*at} << ", expected " << int{*wanted};
}

inline std::string ReadAll(const std::string& path)
{
    std::ostringstream content;
    content << std::ifstream(path, std::ios::binary).rdbuf();
    return content.str();
}

inline void WriteAll(const std::string& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

/// Bytes of any value, the same in every run.
inline Bytes Noise(int count)
{
    std::mt19937 random;
    Bytes bytes(static_cast<std::size_t>(count));
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<unsigned char>(random()); });
    return bytes;
}

/// 16-bit samples in the machine's byte order.
inline Bytes Shorts(const std::vector<short>& samples)
{
    Bytes bytes(samples.size() * sizeof(short));
    std::memcpy(bytes.data(), samples.data(), bytes.size());
    return bytes;
}

// --- Pictures ------------------------------------------------------------------------------------

/// An image that owns its pixels. Without any, its buffer is null.
struct TestImage : CGraflibJpeg
{
    TestImage(const Shape& shape = {}, const ::Bytes& pixels = {})
    {
        std::tie(mWidth, mHeight, mBits) = shape;
        mData = pixels.empty() ? nullptr : new unsigned char[pixels.size()];
        std::copy(pixels.begin(), pixels.end(), mData);
    }
    ~TestImage() { delete[] mData; }

    Shape GetShape() const { return {mWidth, mHeight, mBits}; }
    ::Bytes Pixels() const { return {mData, mData + (mData ? Bytes() : 0)}; }
};

/// The sizes given, and 300 random ones.
inline std::vector<Sizes> WithRandomSizes(std::vector<Sizes> sizes)
{
    const Bytes noise = Noise(1200);
    for (auto side = noise.begin(); side != noise.end(); side += 4)
        sizes.push_back({side[0] % 90 + 1, side[1] % 90 + 1, side[2] % 60 + 1, side[3] % 9 + 1});
    return sizes;
}

/// A picture of noise as a JPEG file.
inline std::string SampleJpeg(int width, int height, int components = 3)
{
    return EncodeJpeg(width, height, components, Noise(width * height * components), 80,
                      components > 4 ? Progressive : nullptr);
}

// --- Calls and programs --------------------------------------------------------------------------

/// What a call writes to standard output and, after the word "Errors: ", to standard error. When
/// the call throws CGraflibException, the text of its code follows on standard output, and code and
/// info on standard error.
template <typename Call>
std::string OutputOf(Call call)
{
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    try {
        call();
    } catch (CGraflibException& e) {
        TestImage().ShowGlibError(e);
        std::cerr << e.mCode << ' ' << e.mInfo;
    }
    const std::string errors = testing::internal::GetCapturedStderr();
    const std::string output = testing::internal::GetCapturedStdout();
    return errors.empty() ? output : output + "Errors: " + errors;
}

/// Each test gets a new folder, which is removed with all it holds, and the name of a file in it.
struct FolderTest : testing::Test
{
    ~FolderTest() override { fs::remove_all(mFolder); }

    /// What a program writes, run by a shell in the folder with nothing in its environment. A
    /// program that fails adds the line "failed".
    std::string Run(const std::string& command) const
    {
        const std::string words = "cd " + mFolder.string() + " && env -i " + command;
        int status = -1;
        const std::string output =
            OutputOf([&] { status = std::system((words + " || echo failed").c_str()); });
        EXPECT_EQ(status, 0) << words;
        return output;
    }

    const fs::path mFolder = mkdtemp((fs::temp_directory_path() / "tessel-XXXXXX").string().data());
    const std::string mFile = mFolder / "x.jpg";
    const char* const mPath = mFile.c_str();
};

#endif
