#include "tests/support/TestSupport.h"

namespace {

/// One pixel of `size` different bytes for each letter.
Bytes LettersAsPixels(const std::string& letters, int size)
{
    Bytes bytes;
    for (const char letter : letters) {
        for (int i = 0; i < size; ++i)
            bytes.push_back(static_cast<unsigned char>(letter + i * 26));
    }
    return bytes;
}

}  // namespace

TEST(CGraflibOrientation, WholePixelsChangePlaces)
{
    // Letters are pixels here: abcd efgh ijkl mnop qrst.
    using Change = void (CGraflib::*)();
    const std::tuple<const char*, Change, int, int, const char*> rows[] = {
        {"Yflip", &CGraflib::Yflip, 4, 5, "qrstmnopijklefghabcd"},
        {"Xflip", &CGraflib::Xflip, 4, 5, "dcbahgfelkjiponmtsrq"},
        {"Transpose", &CGraflib::Transpose, 5, 4, "aeimqbfjnrcgkosdhlpt"}};
    for (const auto& [name, change, width, height, pixels] : rows) {
        for (const int size : {1, 2, 3, 4, 6}) {
            SCOPED_TRACE(std::string(name) + " with bytes per pixel: " + std::to_string(size));
            TestImage image({4, 5, size * 8}, LettersAsPixels("abcdefghijklmnopqrst", size));
            (image.*change)();
            EXPECT_EQ(image.Pixels(), LettersAsPixels(pixels, size));
            EXPECT_EQ(image.GetShape(), Shape(width, height, size * 8));
        }
    }
}
