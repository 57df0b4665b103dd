#include <cstdlib>
#include <cstring>
#include <iostream>
#include <new>

#include "app/CTessel.h"
#include "app/Process.h"
#include "util/CStringTool.h"

namespace {

constexpr const char* kSizeOption = "-tsize";

void ShowUsage()
{
    std::cout << "tessel <options> <foldername>" << std::endl;
    std::cout << "       options: -tsize <thumbsize>" << std::endl;
    std::cout << "       Version " TESSEL_VERSION << std::endl;
}

void MakeGallery(int argc, char** argv)
{
    CTessel tessel;
    // The last argument is the folder and has no value behind it.
    for (int i = 1; i < argc - 1; ++i) {
        if (std::strcmp(argv[i], kSizeOption) == 0)
            tessel.mThumbSize = CStringTool::StringTo<int>(argv[i + 1]);
    }
    tessel.CreateThumbs(argv[argc - 1]);
}

}  // namespace

int main(int argc, char** argv)
{
    PrepareProcess();
    if (argc < 2) {
        ShowUsage();
        return EXIT_SUCCESS;
    }
    try {
        MakeGallery(argc, argv);
    } catch (const std::bad_alloc&) {
        std::cerr << "tessel: out of memory" << std::endl;
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
