// The orientation: whatever a file holds, it is one of the eight, and turning a picture by it keeps
// all pixels.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/Fuzz.h"
#include "jpeg/CGraflibJpeg.h"
#include "tree/Orientation.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const ScratchFile file(AsText(data, size));
    const int orientation = ReadOrientation(file.Path().c_str());
    Require(orientation >= 1 && orientation <= 8, "there are eight orientations");
    CGraflibJpeg image;
    const CPixelOwner owner(&image);
    image.mWidth = 3;
    image.mHeight = 2;
    image.mBits = 8;
    image.mData = new unsigned char[]{1, 2, 3, 4, 5, 6};
    TurnUpright(image, orientation);
    std::sort(image.mData, image.mData + image.Bytes());
    Require(std::string(image.mData, image.mData + image.Bytes()) == "\1\2\3\4\5\6",
            "turning keeps all pixels");
    return 0;
}
