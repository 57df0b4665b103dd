// Runs a fuzz target on files, and on all files of folders; those that don't exist are left out.
#include <filesystem>
#include <fstream>
#include <iterator>

#include "fuzz/Fuzz.h"

namespace fs = std::filesystem;

namespace {

int Replay(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    return 1;
}

}  // namespace

int main(int argc, char** argv)
{
    int count = 0;
    for (int i = 1; i < argc; ++i) {
        if (fs::is_regular_file(argv[i]))
            count += Replay(argv[i]);
        if (!fs::is_directory(argv[i]))
            continue;
        for (const auto& entry : fs::directory_iterator(argv[i]))
            count += Replay(entry.path());
    }
    std::cerr << count << " inputs replayed" << std::endl;
    return count > 0 ? 0 : 1;
}
