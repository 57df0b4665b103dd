// Runs a fuzz target on files, and on all files of folders; those that don't exist are left out.
// Behind "--damage" they are also cut at every length, and changed at every byte.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "fuzz/Fuzz.h"

namespace fs = std::filesystem;

namespace {

int Run(const std::string& bytes)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return 1;
}

int Replay(const fs::path& path, bool damage)
{
    std::ifstream file(path, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(file), {}};
    int count = Run(bytes);
    for (std::size_t at = 0; damage && at < bytes.size(); ++at) {
        count += Run(bytes.substr(0, at));
        const char byte = bytes[at];
        bytes[at] = static_cast<char>(byte ^ (1 << at % 8));
        count += Run(bytes);
        bytes[at] = byte;
    }
    return count;
}

}  // namespace

int main(int argc, char** argv)
{
    int count = 0;
    bool damage = false;
    for (int i = 1; i < argc; ++i) {
        if (argv[i] == std::string("--damage"))
            damage = true;
        if (fs::is_regular_file(argv[i]))
            count += Replay(argv[i], damage);
        if (!fs::is_directory(argv[i]))
            continue;
        for (const auto& entry : fs::directory_iterator(argv[i]))
            count += Replay(entry.path(), damage);
    }
    std::cerr << count << " inputs replayed" << std::endl;
    return count > 0 ? 0 : 1;
}
