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
    const struct
    {
        const char* mName;
        void (CGraflib::*mChange)();
        int mWidth;
        int mHeight;
        const char* mPixels;
    } rows[] = {{"Yflip", &CGraflib::Yflip, 4, 5, "qrstmnopijklefghabcd"},
                {"Xflip", &CGraflib::Xflip, 4, 5, "dcbahgfelkjiponmtsrq"},
                {"Transpose", &CGraflib::Transpose, 5, 4, "aeimqbfjnrcgkosdhlpt"}};
    for (const auto& row : rows) {
        for (const int size : {1, 2, 3, 4, 6}) {
            SCOPED_TRACE(std::string(row.mName) + " with bytes per pixel: " + std::to_string(size));
            TestImage image({4, 5, size * 8}, LettersAsPixels("abcdefghijklmnopqrst", size));
            (image.*row.mChange)();
            EXPECT_EQ(image.Pixels(), LettersAsPixels(row.mPixels, size));
            EXPECT_EQ(image.GetShape(), Shape(row.mWidth, row.mHeight, size * 8));
        }
    }
}
