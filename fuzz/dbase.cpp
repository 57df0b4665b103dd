// The database: whatever is read, what is then written is read back the same.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <set>
#include <string>

#include "app/CTessel.h"
#include "fuzz/Fuzz.h"

namespace {

/// A folder of this process, for the writer's file and its draft; removed in the end.
struct ScratchFolder
{
    ScratchFolder() { Require(mkdtemp(mPath.data()) != nullptr, "a folder can be made"); }
    ~ScratchFolder() { std::filesystem::remove_all(mPath); }

    std::string mPath = std::filesystem::temp_directory_path() / "tessel-dbase-XXXXXX";
};

bool IsSame(const SFileInfo& a, const SFileInfo& b)
{
    return a.mName == b.mName && a.mTime == b.mTime;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ScratchFile file(AsText(data, size));
    CTessel first;
    first.ReadDbase(file.Path().c_str());
    static const ScratchFolder scratch;
    const std::string path = scratch.mPath + "/base";
    first.WriteDbase(path.c_str());
    CTessel second;
    second.ReadDbase(path.c_str());
    Require(std::equal(first.mFileInfoSet.begin(), first.mFileInfoSet.end(),
                       second.mFileInfoSet.begin(), second.mFileInfoSet.end(), IsSame),
            "records survive writing and reading");
    return 0;
}
