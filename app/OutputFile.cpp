#include "app/OutputFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

bool CanReplace(const char* path)
{
    struct stat status = {};
    if (lstat(path, &status) != 0)
        return errno == ENOENT;
    return S_ISREG(status.st_mode) || S_ISLNK(status.st_mode) || S_ISFIFO(status.st_mode) ||
           S_ISSOCK(status.st_mode);
}

bool MakeWay(const char* path)
{
    if (!CanReplace(path))
        return false;
    if (unlink(path) == 0 || errno == ENOENT)
        return true;
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
