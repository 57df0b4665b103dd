#include "tests/support/TestSupport.h"

using testing::ElementsAreArray;

namespace {

/// What becomes of a picture of 4 x 5 pixels, each a letter here: abcd efgh ijkl mnop qrst.
struct SOrientation
{
    const char* mName;
    void (*mChange)(CGraflib& image);
    int mWidth;
    int mHeight;
    const char* mPixels;
};

const char* const kPixels = "abcdefghijklmnopqrst";

const SOrientation kOrientations[] = {
    {"Yflip", [](CGraflib& image) { image.Yflip(); }, 4, 5, "qrstmnopijklefghabcd"},
    {"Xflip", [](CGraflib& image) { image.Xflip(); }, 4, 5, "dcbahgfelkjiponmtsrq"},
    {"Transpose", [](CGraflib& image) { image.Transpose(); }, 5, 4, "aeimqbfjnrcgkosdhlpt"},
};

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
    for (const SOrientation& row : kOrientations) {
        for (const int size : {1, 2, 3, 4, 6}) {
            SCOPED_TRACE(std::string(row.mName) + " with bytes per pixel: " + std::to_string(size));
            TestImage image({4, 5, size * 8}, LettersAsPixels(kPixels, size));
            row.mChange(image);
            EXPECT_THAT(image.Pixels(), ElementsAreArray(LettersAsPixels(row.mPixels, size)));
            EXPECT_EQ(image.GetShape(), Shape(row.mWidth, row.mHeight, size * 8));
        }
    }
}

TEST(CGraflibOrientation, SinglePixelsAndEmptyPicturesStayTheSame)
{
    const Shape shapes[] = {{1, 1, 24}, {0, 4, 8}, {4, 0, 8}, {0, 0, 0}};
    for (const SOrientation& row : kOrientations) {
        for (const Shape& shape : shapes) {
            SCOPED_TRACE(row.mName + testing::PrintToString(shape));
            TestImage image(shape, {1, 2, 3});
            const Bytes before = image.Pixels();
            row.mChange(image);
            EXPECT_EQ(image.Pixels(), before);
        }
    }
}
