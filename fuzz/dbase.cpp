// The database: whatever is read, what is then written is read back the same.
#include <algorithm>

#include "app/CTessel.h"
#include "fuzz/Fuzz.h"

namespace {

/// A folder of this process, for the writer's file and its draft.
std::string ScratchPath()
{
    static const std::string folder = [] {
        std::string path = "/tmp/tessel-dbase-XXXXXX";
        Require(mkdtemp(path.data()) != nullptr, "a folder can be made");
        return path;
    }();
    return folder + "/base";
}

bool IsSame(const SFileInfo& a, const SFileInfo& b)
{
    return a.mName == b.mName && a.mTime == b.mTime;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const MemoryFile file(AsText(data, size));
    CTessel first;
    first.ReadDbase(file.Path().c_str());
    const std::string path = ScratchPath();
    first.WriteDbase(path.c_str());
    CTessel second;
    second.ReadDbase(path.c_str());
    Require(std::equal(first.mFileInfoSet.begin(), first.mFileInfoSet.end(),
                       second.mFileInfoSet.begin(), second.mFileInfoSet.end(), IsSame),
            "records survive writing and reading");
    return 0;
}
