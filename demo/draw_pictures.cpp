// Draws a folder of pictures to try tessel with; kPictures says what each of them shows.
#include <algorithm>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>

#include "Pictures.h"
#include "jpeg/CGraflibJpeg.h"
#include "util/CFileIO.h"

namespace {

constexpr int kQuality = 88;

enum class EKind {
    Colour,
    Grey,
    Lying  ///< stored with its top at the left, and with a tag that says so
};

struct SPicture
{
    const char* mName;
    int mWidth;  // as it is looked at
    int mHeight;
    EKind mKind;
    SColour (*mColourAt)(SPlace at);
};

constexpr SPicture kPictures[] = {
    {"01_misty_ridges.jpg", 4000, 3000, EKind::Colour, MistyRidges},  // twelve megapixels
    {"02_sunset_panorama.jpg", 3600, 600, EKind::Colour, Sunset},
    {"05_balloons.jpg", 1200, 1500, EKind::Colour, Balloons},   // higher than wide
    {"07_fine_lines.jpg", 960, 640, EKind::Colour, FineLines},  // stripes where decoders shrink
    {"09_ripples_greyscale.jpg", 1600, 1067, EKind::Grey, Ripples},
    {"10_small_boat.jpg", 96, 64, EKind::Lying, SailingBoat},  // smaller than its thumbnail
};

/// An Exif segment with the orientation alone.
constexpr unsigned char kLyingTag[] = {
    0xff, 0xe1, 0, 34, 'E', 'x', 'i', 'f', 0, 0,  // the marker, the length, the kind
    'M',  'M',  0, 42, 0,   0,   0,   8,          // big endian, entries from byte 8
    0,    1,                                      // one entry
    1,    0x12, 0, 3,  0,   0,   0,   1,   0, 6,  // orientation, one number: turn it right
    0,    0,    0, 0,  0,   0};                   // no more entries

SPlace PlaceOf(const SPicture& picture, int column, int row)
{
    const bool lying = picture.mKind == EKind::Lying;
    const int x = lying ? picture.mWidth - 1 - row : column;
    const int y = lying ? column : row;
    const float unit = 1 / static_cast<float>(picture.mHeight);
    return {(static_cast<float>(x) + 0.5f) * unit, (static_cast<float>(y) + 0.5f) * unit,
            static_cast<float>(picture.mWidth) * unit};
}

unsigned char ToByte(float part)
{
    return static_cast<unsigned char>(std::clamp(part, 0.0f, 1.0f) * 255 + 0.5f);
}

/// Draws into an image that has its size and its pixels. Of a grey picture the parts of a colour
/// are the same.
void Draw(const SPicture& picture, const CDataRect& image)
{
    unsigned char* samples = image.mData;
    for (int row = 0; row < image.mHeight; ++row) {
        for (int column = 0; column < image.mWidth; ++column) {
            const SColour colour = picture.mColourAt(PlaceOf(picture, column, row));
            const float parts[] = {colour.mRed, colour.mGreen, colour.mBlue};
            samples = std::transform(parts, parts + image.mBits / 8, samples, ToByte);
        }
    }
}

/// Puts the tag behind the file's first marker.
void AddLyingTag(const std::string& fileName)
{
    std::ifstream in(fileName, std::ios::binary);
    std::string bytes{std::istreambuf_iterator<char>(in), {}};
    bytes.insert(bytes.begin() + 2, std::begin(kLyingTag), std::end(kLyingTag));
    std::ofstream out;
    out.exceptions(std::ios::failbit | std::ios::badbit);
    out.open(fileName, std::ios::binary);
    out << bytes << std::flush;
}

void DrawFile(const SPicture& picture, const std::string& fileName)
{
    const bool lying = picture.mKind == EKind::Lying;
    CGraflibJpeg image;
    const CPixelOwner owner(&image);
    image.mQuality = kQuality;
    image.mWidth = lying ? picture.mHeight : picture.mWidth;
    image.mHeight = lying ? picture.mWidth : picture.mHeight;
    image.mBits = picture.mKind == EKind::Grey ? 8 : 24;
    image.mData = new unsigned char[image.Bytes()];
    Draw(picture, image);
    image.Write(fileName.c_str(), false, nullptr);
    if (lying)
        AddLyingTag(fileName);
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
