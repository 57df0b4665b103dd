// Draws a folder of pictures to try tessel with: wide and tall ones, a panorama, a greyscale one,
// one that is smaller than its thumbnail, and one of twelve megapixels.
#include <exception>
#include <iostream>
#include <string>

#include "Pictures.h"
#include "graflib/PixelTypes.h"
#include "jpeg/CGraflibJpeg.h"
#include "util/CFileIO.h"

namespace {

constexpr int kQuality = 88;

struct SPicture
{
    const char* mName;
    int mWidth;
    int mHeight;
    int mBits;  // 24, or 8 for a picture in greys
    SColour (*mColourAt)(SPlace at);
};

constexpr SPicture kPictures[] = {
    {"01_misty_ridges.jpg", 4000, 3000, 24, MistyRidges},
    {"02_sunset_panorama.jpg", 3600, 600, 24, Sunset},
    {"03_night_sky.jpg", 1200, 1600, 24, NightSky},
    {"04_julia_set.jpg", 1600, 1200, 24, JuliaSet},
    {"05_balloons.jpg", 1200, 1500, 24, Balloons},
    {"06_spheres.jpg", 1600, 1200, 24, Spheres},
    {"07_tartan.jpg", 1500, 1000, 24, Tartan},
    {"08_sunflower.jpg", 1400, 1400, 24, Sunflower},
    {"09_ripples_greyscale.jpg", 1600, 1067, 8, Ripples},
    {"10_small_boat.jpg", 96, 64, 24, SailingBoat},
};

unsigned char ToByte(float part)
{
    return static_cast<unsigned char>(Clamp(part) * 255 + 0.5f);
}

void SetPixel(CRgb* pixel, SColour colour)
{
    pixel->mRed = ToByte(colour.mRed);
    pixel->mGreen = ToByte(colour.mGreen);
    pixel->mBlue = ToByte(colour.mBlue);
}

void SetPixel(SPixel1i<unsigned char>* pixel, SColour colour)
{
    pixel->mSamples[0] =
        ToByte(0.299f * colour.mRed + 0.587f * colour.mGreen + 0.114f * colour.mBlue);
}

template <typename Tpixel>
void Draw(const SPicture& picture, Tpixel* pixel)
{
    const float unit = 1 / static_cast<float>(picture.mHeight);
    const float aspect = static_cast<float>(picture.mWidth) * unit;
    for (int row = 0; row < picture.mHeight; ++row) {
        const float y = (static_cast<float>(row) + 0.5f) * unit;
        for (int column = 0; column < picture.mWidth; ++column) {
            const float x = (static_cast<float>(column) + 0.5f) * unit;
            SetPixel(pixel++, picture.mColourAt({x, y, aspect}));
        }
    }
}

void DrawFile(const SPicture& picture, const std::string& fileName)
{
    CGraflibJpeg image;
    const CPixelOwner owner(&image);
    image.mQuality = kQuality;
    image.mWidth = picture.mWidth;
    image.mHeight = picture.mHeight;
    image.mBits = picture.mBits;
    image.mData = new unsigned char[image.Bytes()];
    if (picture.mBits == 8)
        Draw(picture, reinterpret_cast<SPixel1i<unsigned char>*>(image.mData));
    else
        Draw(picture, reinterpret_cast<CRgb*>(image.mData));
    image.Write(fileName.c_str(), false, nullptr);
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "Usage: draw_pictures FOLDER" << std::endl;
        return 2;
    }
    const std::string folder = argv[1];
    CFileIO::CreateDir(folder.c_str());
    try {
        for (const SPicture& picture : kPictures) {
            std::cout << "Drawing " << picture.mName << std::endl;
            DrawFile(picture, folder + "/" + picture.mName);
        }
    } catch (const std::exception& error) {
        std::cerr << "draw_pictures: " << error.what() << std::endl;
        return 1;
    }
    return 0;
}
