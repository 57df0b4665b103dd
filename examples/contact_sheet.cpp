// Makes a contact sheet: one JPEG of all pictures in a folder, small, five to a row.
#include <algorithm>
#include <cstddef>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "Helpers.h"
#include "jpeg/CGraflibJpeg.h"
#include "util/CFileIO.h"

namespace {

constexpr int kPerRow = 5;
constexpr int kThumb = 192;
constexpr int kCell = kThumb + 8;

/// Shrinks a picture until it fits a square. False when the scaler doesn't take it.
bool ShrinkTo(CGraflib* image, int size)
{
    const int longer = std::max(image->mWidth, image->mHeight);
    if (longer <= size)
        return true;
    // In 64 bits, and at least 1: neither side may wrap or vanish.
    const auto side = [=](long long pixels) {
        return static_cast<int>(std::max(1LL, pixels * size / longer));
    };
    return image->DownScaleFix2(side(image->mWidth), side(image->mHeight)) != nullptr;
}

/// Puts a small picture into a 24-bit one, in which it must have room.
void Paste(const CDataRect& small, CDataRect* large, int left, int top)
{
    const unsigned char* samples = small.mData;
    unsigned char* line = large->mData + static_cast<std::size_t>(top) * large->RowBytes();
    for (int y = 0; y < small.mHeight; ++y, line += large->RowBytes()) {
        auto* row = reinterpret_cast<CRgb*>(line) + left;
        for (int x = 0; x < small.mWidth; ++x, samples += small.mBits / 8)
            row[x] = ColourOf(samples, small.mBits);
    }
}

/// A picture that can't be read, or for which there is no memory, leaves its cell white.
void PasteFile(const std::string& path, CDataRect* sheet, int left, int top)
{
    CGraflibJpeg image;
    const CPixelOwner owner(&image);
    try {
        image.Read(path.c_str(), nullptr);
        if (ShrinkTo(&image, kThumb))
            Paste(image, sheet, left + (kCell - image.mWidth) / 2,
                  top + (kCell - image.mHeight) / 2);
    } catch (const std::exception& error) {
        std::cerr << "contact_sheet: left out: " << path << ": " << error.what() << std::endl;
    }
}

}  // namespace

int main(int argc, char** argv)
{
    std::vector<std::string> names;
    if (argc != 3 || !CFileIO::ResolveWildCard(argv[1], "*.jpg", &names) || names.empty()) {
        std::cerr << "Usage: contact_sheet FOLDER TARGET, a folder of *.jpg" << std::endl;
        return 2;
    }
    std::sort(names.begin(), names.end());
    CGraflibJpeg sheet;
    const CPixelOwner owner(&sheet);
    sheet.mWidth = kPerRow * kCell;
    sheet.mHeight = (static_cast<int>(names.size()) + kPerRow - 1) / kPerRow * kCell;
    sheet.mBits = 24;
    try {
        sheet.mData = new unsigned char[sheet.Bytes()];
        std::fill_n(sheet.mData, sheet.Bytes(), static_cast<unsigned char>(255));
        int cell = 0;
        for (const std::string& name : names) {
            PasteFile(std::string(argv[1]) + "/" + name, &sheet, cell % kPerRow * kCell,
                      cell / kPerRow * kCell);
            ++cell;
        }
        sheet.Write(argv[2], false, nullptr);
    } catch (const std::exception& error) {  // CGraflibException, or std::bad_alloc
        std::cerr << "contact_sheet: " << error.what() << std::endl;
        return 1;
    }
    return 0;
}
