// Draws JPEG pictures that are as hard to decode as photographs: soft gradients under fine noise.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "jpeg/CGraflibJpeg.h"
#include "util/CFileIO.h"

namespace {

constexpr int kQuality = 91;

/// Noise from -1 to 1, denser around 0.
class CNoise
{
public:
    float Next()
    {
        mState = mState * 6364136223846793005u + 1442695040888963407u;
        const auto part = [this](int shift) {
            return static_cast<float>(mState >> shift & 0xffff) / 0xffff;
        };
        return part(48) - part(32);
    }

private:
    std::uint64_t mState = 1;
};

unsigned char ToByte(float value)
{
    return static_cast<unsigned char>(std::lround(std::fmin(std::fmax(value, 0), 255)));
}

/// Fills one row. Noise gets stronger and weaker over the picture, as grass and sky would have it,
/// and is mostly one of brightness.
void DrawRow(std::vector<CRgb>& row, float y, CNoise& noise)
{
    const auto width = static_cast<float>(row.size());
    for (std::size_t column = 0; column < row.size(); ++column) {
        const float x = static_cast<float>(column) / width;
        const float wave = std::sin(7 * x + 3 * y);
        const float strength = 14 + 12 * std::sin(5 * y + 2 * wave);
        const float light = 120 + 60 * wave + strength * noise.Next();
        const float colour = 3 * noise.Next();
        row[column] = CRgb{ToByte(light + 40 * x + colour), ToByte(light),
                           ToByte(light + 50 * (y - x) - colour)};
    }
}

void Draw(const std::string& fileName, double pixels, CNoise& noise)
{
    CGraflibJpeg image;
    image.mHeight = static_cast<int>(std::sqrt(pixels * 2 / 3));
    image.mWidth = image.mHeight * 3 / 2;
    image.mBits = 24;
    image.mQuality = kQuality;
    image.OpenWriteLine(fileName.c_str());
    std::vector<CRgb> row(static_cast<std::size_t>(image.mWidth));
    for (int y = 0; y < image.mHeight; ++y) {
        DrawRow(row, static_cast<float>(y) / static_cast<float>(image.mHeight), noise);
        image.WriteLine(row.data());
    }
    image.CloseWriteLine();
}

}  // namespace

int main(int argc, char** argv)
{
    if (argc != 5) {
        std::cerr << "Usage: draw_noisy FOLDER COUNT FEWEST_PIXELS MOST_PIXELS" << std::endl;
        return 2;
    }
    const std::string folder = argv[1];
    const int count = std::atoi(argv[2]);
    const double fewest = std::atof(argv[3]);
    const double more = std::atof(argv[4]) - fewest;
    CFileIO::CreateDir(folder.c_str());
    CNoise noise;
    try {
        for (int i = 0; i < count; ++i)
            Draw(folder + "/noisy" + std::to_string(i) + ".jpg", fewest + more * i / count, noise);
    } catch (const CGraflibException& error) {
        std::cerr << "draw_noisy: " << error.what() << std::endl;
        return 1;
    }
    return 0;
}
