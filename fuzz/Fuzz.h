#ifndef TESSEL_FUZZ_FUZZ_H
#define TESSEL_FUZZ_FUZZ_H

// What the fuzz targets share.
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string>
#include <string_view>

/// What libFuzzer, or replay.cpp in its place, calls with every input. Returns 0.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

/// Ends the process where something that must hold doesn't.
inline void Require(bool holds, const char* claim)
{
    if (holds)
        return;
    std::cerr << "doesn't hold: " << claim << std::endl;
    std::abort();
}

/// A file that lasts as long as the object.
class ScratchFile
{
public:
    explicit ScratchFile(std::string_view content)
    {
        const int file = mkstemp(mPath.data());
        const auto size = static_cast<ssize_t>(content.size());
        Require(file >= 0 && write(file, content.data(), content.size()) == size,
                "a file takes all bytes");
        close(file);
    }
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;
    ~ScratchFile() { unlink(mPath.c_str()); }

    const std::string& Path() const { return mPath; }

private:
    std::string mPath = std::filesystem::temp_directory_path() / "tessel-fuzz-XXXXXX";
};

inline std::string_view AsText(const std::uint8_t* data, std::size_t size)
{
    return {reinterpret_cast<const char*>(data), size};
}

/// Keeps the library's lines away from the terminal, for the life of the process.
inline void SilenceOutput()
{
    std::cout.setstate(std::ios_base::failbit);
}

#endif
