#include "jpeg/CGraflibJpeg.h"

#include <algorithm>
#include <climits>

#include "graflib/PixelTypes.h"
#include "jpeg/CGraphicsJpeg.h"

namespace {

constexpr int kBitsPerComponent = 8;

/// The depths that can be encoded. A depth of 0, a record that was never read, stands for lines of
/// red, green, blue.
bool IsLineDepth(int bits)
{
    return bits == 0 || bits == 8 || bits == 24 || bits == 32;
}

bool IsSide(int side, int longest)
{
    return side >= 1 && side <= longest;
}

CRgb Flatten(const CRgba& pixel)
{
    const auto scale = [&pixel](int colour) {
        return static_cast<unsigned char>((colour * pixel.mAlpha + UCHAR_MAX / 2) / UCHAR_MAX);
    };
    return {scale(pixel.mRed), scale(pixel.mGreen), scale(pixel.mBlue)};
}

/// One row of a record as red, green, blue: the row itself, or `buffer` filled from it.
const void* RgbRow(const CDataRect& image, const void* row, std::vector<unsigned char>& buffer)
{
    if (image.mBits != 8 && image.mBits != 32)
        return row;
    const auto width = static_cast<std::size_t>(image.mWidth);
    auto* rgb = reinterpret_cast<CRgb*>(buffer.data());
    const auto* grey = static_cast<const unsigned char*>(row);
    const auto* wide = static_cast<const CRgba*>(row);
    for (std::size_t x = 0; x < width; ++x)
        rgb[x] = image.mBits == 8 ? CRgb{grey[x], grey[x], grey[x]} : Flatten(wide[x]);
    return buffer.data();
}

}  // namespace

CGraflibJpeg::CGraflibJpeg() = default;

CGraflibJpeg::~CGraflibJpeg()
{
    CGraflibJpeg::CloseReadLine();
}

bool CGraflibJpeg::Read(const char* fileName, SFileReadInfo* info)
{
    static_cast<CDataRect&>(*this) = CDataRect{};
    CGraphicsJpeg jpeg;
    if (info)
        jpeg.mReadOffset = info->mOffset;
    int width = 0;
    int height = 0;
    int components = 0;
    mData = jpeg.ReadJpeg(fileName, &width, &height, &components);
    if (!mData)
        throw CGraflibException(GLIB_ERR_READ, fileName);
    mWidth = width;
    mHeight = height;
    mBits = components * kBitsPerComponent;
    return true;
}

bool CGraflibJpeg::Write(const char* fileName, bool /*unused*/, CFileIO* /*unused*/)
{
    CGraphicsJpeg jpeg;
    MakeRgbRow();
    if (!CanWrite() || !jpeg.OpenJpegWrite(fileName, mWidth, mHeight, mQuality))
        throw CGraflibException(GLIB_ERR_WRITE, fileName);
    const unsigned char* row = mData;
    for (int y = 0; y < mHeight; ++y, row += RowBytes())
        jpeg.WriteJpegLine(RgbRow(*this, row, mRgbRow));
    jpeg.CloseJpegWrite();
    return true;
}

bool CGraflibJpeg::CanWrite() const
{
    return mData && mBits != 0 && IsLineDepth(mBits) && IsSide(mWidth, SHRT_MAX) &&
           IsSide(mHeight, SHRT_MAX);
}

bool CGraflibJpeg::OpenReadLine(const char* fileName)
{
    CloseReadLine();
    mLineJpeg = std::make_unique<CGraphicsJpeg>();
    int components = 0;
    const bool ok = mLineJpeg->OpenJpegRead(fileName, &mWidth, &mHeight, &components);
    mBits = components * kBitsPerComponent;
    if (!ok) {
        mWidth = mHeight = mBits = 0;
        throw CGraflibException(GLIB_ERR_READ, fileName);
    }
    return true;
}

bool CGraflibJpeg::ReadLine(void* line)
{
    return LineJpeg().ReadJpegLine(line);
}

void CGraflibJpeg::CloseReadLine()
{
    if (mLineJpeg)
        mLineJpeg->CloseJpegLines();
}

bool CGraflibJpeg::OpenWriteLine(const char* fileName)
{
    if (!IsLineDepth(mBits) || !IsSide(mWidth, CGraphicsJpeg::kMaxSide) ||
        !IsSide(mHeight, CGraphicsJpeg::kMaxSide))
        throw CGraflibException(GLIB_ERR_WRITE, fileName);
    MakeRgbRow();
    if (!LineJpeg().OpenJpegWrite(fileName, mWidth, mHeight, mQuality))
        throw CGraflibException(GLIB_ERR_WRITE, fileName);
    return true;
}

int CGraflibJpeg::WriteLine(void* line)
{
    return LineJpeg().WriteJpegLine(RgbRow(*this, line, mRgbRow));
}

void CGraflibJpeg::CloseWriteLine()
{
    LineJpeg().CloseJpegWrite();
}

void CGraflibJpeg::SetAppendMode(bool append)
{
    LineJpeg().mAppend = append;
}

bool CGraflibJpeg::GetSize(const char* fileName, int offset, int /*unused*/)
{
    CGraphicsJpeg jpeg;
    jpeg.mReadOffset = offset;
    short width = 0;
    short height = 0;
    int components = 0;
    const bool ok = jpeg.GetJpegSize(fileName, &width, &height, &components);
    mWidth = width;
    mHeight = height;
    mBits = components * kBitsPerComponent;
    return ok;
}

/// Before a file is opened, so that nothing is open when there is no room for the row.
void CGraflibJpeg::MakeRgbRow()
{
    if (mBits == 8 || mBits == 32)
        mRgbRow.resize(static_cast<std::size_t>(std::max(mWidth, 0)) * sizeof(CRgb));
}

CGraphicsJpeg& CGraflibJpeg::LineJpeg()
{
    if (!mLineJpeg)
        mLineJpeg = std::make_unique<CGraphicsJpeg>();
    return *mLineJpeg;
}
