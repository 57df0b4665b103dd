#include "app/OutputFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

bool MakeWay(const char* path)
{
    if (unlink(path) == 0 || errno == ENOENT)
        return true;
    // In a folder that can't be changed, an old file of its own can still be rewritten.
    struct stat status = {};
    return lstat(path, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink == 1;
}

void RemoveLink(const char* path)
{
    struct stat status = {};
    if (lstat(path, &status) == 0 && S_ISLNK(status.st_mode))
        unlink(path);
}

bool IsReadable(const char* path)
{
    struct stat status = {};
    return stat(path, &status) == 0 && S_ISREG(status.st_mode);
}
