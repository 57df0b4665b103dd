// The least that a run over unchanged pictures must do: lists a folder and those below it, without
// thumbnails, and opens each picture for its time. Prints the sum of the times.
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>

/// The sum of a folder whose path ends with a slash.
static long SumOfTimes(std::string path)
{
    DIR* const folder = opendir(path.c_str());
    if (!folder)
        return 0;
    const std::size_t prefix = path.size();
    long sum = 0;
    while (const dirent* entry = readdir(folder)) {
        const std::string_view name = entry->d_name;
        path.replace(prefix, std::string::npos, name);
        if (name.ends_with(".jpg")) {
            struct stat status = {};
            const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
            fstat(file, &status);
            close(file);
            sum += status.st_mtime;
        } else if (entry->d_type == DT_DIR && !name.starts_with(".") && name != "tessel") {
            sum += SumOfTimes(path + "/");
        }
    }
    closedir(folder);
    return sum;
}

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    std::printf("%ld\n", SumOfTimes(std::string(argv[1]) + "/"));
    return 0;
}
