#ifndef TESSEL_FUZZ_FUZZ_H
#define TESSEL_FUZZ_FUZZ_H

// What the fuzz targets share.
#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
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

/// A file in memory, with a path to open it by.
class MemoryFile
{
public:
    explicit MemoryFile(std::string_view content) : mFile(memfd_create("input", 0))
    {
        Require(
            write(mFile, content.data(), content.size()) == static_cast<ssize_t>(content.size()),
            "a file in memory takes all bytes");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { close(mFile); }

    std::string Path() const { return "/proc/self/fd/" + std::to_string(mFile); }

private:
    int mFile;
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
