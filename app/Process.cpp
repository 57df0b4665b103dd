#include "app/Process.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstddef>
#include <cstdio>
#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace {

int OpenNothing()
{
    const int file = open("/dev/null", O_RDWR);
    return file < 0 ? open("/", O_RDONLY) : file;  // which nobody can write to
}

/// Opens the standard descriptors that the caller left closed: the first files to be opened would
/// get their numbers, and what is printed would end up in the page.
void OpenStandardDescriptors()
{
    int file = OpenNothing();
    while (file >= 0 && file <= STDERR_FILENO)
        file = OpenNothing();
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

void PrepareProcess()
{
    OpenStandardDescriptors();
    BufferWholeLines();
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    KeepMemory();
}
