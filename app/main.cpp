#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <iostream>
#ifdef __GLIBC__
#include <malloc.h>
#endif

#include "app/CTessel.h"
#include "util/CStringTool.h"

namespace {

constexpr const char* kSizeOption = "-tsize";

void ShowUsage()
{
    std::cout << "tessel <options> <foldername>" << std::endl;
    std::cout << "       options: -tsize <thumbsize>" << std::endl;
    std::cout << "       Version " TESSEL_VERSION << std::endl;
}

/// Opens the standard descriptors that the caller left closed: the first files to be opened would
/// get their numbers, and what is printed would end up in the page.
void OpenStandardDescriptors()
{
    int file = open("/dev/null", O_RDWR);
    while (file >= 0 && file <= STDERR_FILENO)
        file = open("/dev/null", O_RDWR);
    if (file > STDERR_FILENO)
        close(file);
}

/// Gives standard output a buffer longer than any line, which holds a path and some words. As every
/// line is flushed, it is written in one piece then, and runs that share an output mix whole lines
/// only. The default buffer is as short as 1024 bytes and writes what stands before a line feed in
/// a name by itself, depending on what the output is.
void BufferWholeLines()
{
    constexpr std::size_t kLongestPath = 4096;
    static char buffer[2 * kLongestPath];
    std::setvbuf(stdout, buffer, _IOFBF, sizeof buffer);
}

/// Lets the allocator keep what libjpeg takes for one progressive picture for the next. By default
/// it would give it back to the system and get it again, page by page and cleared, which costs a
/// twentieth of a run. Only GNU's allocator can be asked.
void KeepMemory()
{
#ifdef __GLIBC__
    constexpr int kLargestBlock = 1 << 30;
    mallopt(M_MMAP_THRESHOLD, kLargestBlock);
    mallopt(M_TRIM_THRESHOLD, kLargestBlock);
#endif
}

}  // namespace

int main(int argc, char** argv)
{
    OpenStandardDescriptors();
    BufferWholeLines();
    // Whoever reads what is printed may leave; the gallery is made all the same.
    std::signal(SIGPIPE, SIG_IGN);
    if (argc < 2) {
        ShowUsage();
        return 0;
    }
    KeepMemory();
    CTessel tessel;
    CStringTool text;
    // The last argument is the folder and has no value behind it.
    for (int i = 1; i < argc - 1; ++i) {
        if (std::strcmp(argv[i], kSizeOption) == 0)
            tessel.mThumbSize = text.StringTo<int>(argv[i + 1]);
    }
    tessel.CreateThumbs(argv[argc - 1]);
    return 0;
}
