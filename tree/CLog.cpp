#include "tree/CLog.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <ctime>
#include <filesystem>
#include <system_error>

#include "app/GalleryLayout.h"
#include "app/OutputFile.h"

namespace {

std::string TimeLine()
{
    const std::time_t now = std::time(nullptr);
    std::tm local = {};
    char text[64];
    localtime_r(&now, &local);
    const std::size_t length = std::strftime(text, sizeof text, "tessel-tree %F %T %z", &local);
    return std::string(text, length) + "\n";
}

}  // namespace

CLog::~CLog()
{
    Close();
}

bool CLog::Open(const std::string& path)
{
    // A link may lead to a picture, which no log may be appended to.
    std::error_code error;
    if (IsPictureName(std::filesystem::canonical(path, error).filename().string()))
        return false;
    // Without waiting for a reader, should it be a FIFO.
    const int file =
        open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_CLOEXEC, kNewFileMode);
    mStream = file < 0 ? nullptr : fdopen(file, "ab");
    if (!mStream) {
        if (file >= 0)
            close(file);
        return false;
    }
    Add(TimeLine());
    return std::fflush(mStream) == 0;
}

void CLog::Add(const std::string& printed)
{
    if (mStream)
        std::fwrite(printed.data(), 1, printed.size(), mStream);
}

bool CLog::Close()
{
    std::FILE* const stream = mStream;
    mStream = nullptr;
    return !stream || CloseOutput(stream);
}
