#include "jpeg/CGraflibJpeg.h"

#include <climits>
#include <cstddef>
#include <utility>
#include <vector>

#include "graflib/PixelTypes.h"
#include "jpeg/CGraphicsJpeg.h"

namespace {

constexpr int kBitsPerComponent = 8;

/// The depths that can be encoded.
bool IsEncodable(int bits)
{
    return bits == 8 || bits == 24 || bits == 32;
}

bool IsSide(int side, int longest)
{
    return side >= 1 && side <= longest;
}

bool IsProfile(const std::vector<unsigned char>& profile)
{
    return profile.size() <= CGraphicsJpeg::kMaxProfileBytes;
}

CRgb Flatten(const CRgba& pixel)
{
    const auto scale = [&pixel](int colour) {
        return static_cast<unsigned char>((colour * pixel.mAlpha + UCHAR_MAX / 2) / UCHAR_MAX);
    };
    return {scale(pixel.mRed), scale(pixel.mGreen), scale(pixel.mBlue)};
}

/// Fills `rgb` with the pixels of one row, of 8 or 32 bits.
void ToRgb(const unsigned char* row, int bits, std::vector<CRgb>& rgb)
{
    const auto* wide = reinterpret_cast<const CRgba*>(row);
    for (std::size_t x = 0; x < rgb.size(); ++x)
        rgb[x] = bits == 8 ? CRgb{row[x], row[x], row[x]} : Flatten(wide[x]);
}

}  // namespace

CGraflibJpeg::CGraflibJpeg() = default;

CGraflibJpeg::~CGraflibJpeg()
{
    ReleaseLineJpeg();
}

bool CGraflibJpeg::Read(const char* fileName, SFileReadInfo* info)
{
    static_cast<CDataRect&>(*this) = CDataRect{};
    mWarnings = 0;
    CGraphicsJpeg jpeg;
    SetUpRead(jpeg);
    if (info)
        jpeg.mReadOffset = info->mOffset;
    int width = 0;
    int height = 0;
    int components = 0;
    mData = jpeg.ReadJpeg(fileName, &width, &height, &components);
    mWarnings = jpeg.mWarnings;
    TakeProfile(jpeg);
    if (!mData)
        throw CGraflibException(GLIB_ERR_READ, fileName);
    mWidth = width;
    mHeight = height;
    mBits = components * kBitsPerComponent;
    return true;
}

void CGraflibJpeg::SetUpRead(CGraphicsJpeg& jpeg) const
{
    jpeg.mLeastSide = mLeastSide;
    jpeg.mKeepProfile = mKeepProfile;
}

void CGraflibJpeg::TakeProfile(CGraphicsJpeg& jpeg)
{
    if (mKeepProfile)
        mProfile = std::move(jpeg.mProfile);
}

bool CGraflibJpeg::Write(const char* fileName, bool /*unused*/, CFileIO* /*unused*/)
{
    return WriteTo(nullptr, fileName);
}

bool CGraflibJpeg::Write(std::FILE* stream)
{
    return WriteTo(stream, "");
}

/// Writes to the stream or, without one, to the file.
bool CGraflibJpeg::WriteTo(std::FILE* stream, const char* fileName)
{
    if (!CanWrite())
        throw CGraflibException(GLIB_ERR_WRITE, fileName);
    std::vector<CRgb> rgb(mBits == 24 ? 0 : static_cast<std::size_t>(mWidth));
    CGraphicsJpeg jpeg;
    jpeg.mProfile = mProfile;
    if (stream)
        jpeg.OpenJpegWrite(stream, mWidth, mHeight, mQuality);
    else if (!jpeg.OpenJpegWrite(fileName, mWidth, mHeight, mQuality))
        throw CGraflibException(GLIB_ERR_WRITE, fileName);
    const unsigned char* row = mData;
    for (int y = 0; y < mHeight; ++y, row += RowBytes()) {
        ToRgb(row, mBits, rgb);
        jpeg.WriteJpegLine(rgb.empty() ? static_cast<const void*>(row) : rgb.data());
    }
    if (!jpeg.CloseJpegWrite())
        throw CGraflibException(GLIB_ERR_WRITE, fileName);
    return true;
}

bool CGraflibJpeg::CanWrite() const
{
    return mData && IsEncodable(mBits) && IsSide(mWidth, SHRT_MAX) && IsSide(mHeight, SHRT_MAX) &&
           IsProfile(mProfile);
}

bool CGraflibJpeg::OpenReadLine(const char* fileName)
{
    ReleaseLineJpeg();
    SetUpRead(LineJpeg());
    int components = 0;
    const bool ok = LineJpeg().OpenJpegRead(fileName, &mWidth, &mHeight, &components);
    mWarnings = LineJpeg().mWarnings;
    TakeProfile(LineJpeg());
    mBits = components * kBitsPerComponent;
    if (!ok) {
        mWidth = mHeight = mBits = 0;
        throw CGraflibException(GLIB_ERR_READ, fileName);
    }
    mOpened = *this;
    return true;
}

bool CGraflibJpeg::ReadLine(void* line)
{
    const bool ok = LineJpeg().ReadJpegLine(line);
    mWarnings = LineJpeg().mWarnings;
    return ok;
}

void CGraflibJpeg::CloseReadLine()
{
    if (!mLineJpeg)
        return;
    mLineJpeg->CloseJpegLines();
    mWarnings = mLineJpeg->mWarnings;
}

unsigned char* CGraflibJpeg::ScaleWhileReading(const char* name, int width, int height)
{
    return CGraflib::ScaleWhileReading(mOpened, name, width, height);
}

bool CGraflibJpeg::OpenWriteLine(const char* fileName)
{
    if (!IsSide(mWidth, CGraphicsJpeg::kMaxSide) || !IsSide(mHeight, CGraphicsJpeg::kMaxSide) ||
        !IsProfile(mProfile))
        throw CGraflibException(GLIB_ERR_WRITE, fileName);
    LineJpeg().mProfile = mProfile;
    if (!LineJpeg().OpenJpegWrite(fileName, mWidth, mHeight, mQuality))
        throw CGraflibException(GLIB_ERR_WRITE, fileName);
    return true;
}

int CGraflibJpeg::WriteLine(void* line)
{
    return LineJpeg().WriteJpegLine(line);
}

void CGraflibJpeg::CloseWriteLine()
{
    if (!LineJpeg().CloseJpegWrite())
        throw CGraflibException(GLIB_ERR_WRITE, LineJpeg().mOutputName);
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

void CGraflibJpeg::ReleaseLineJpeg()
{
    if (mLineJpeg)
        mLineJpeg->Abandon();
    delete mLineJpeg;
    mLineJpeg = nullptr;
}

CGraphicsJpeg& CGraflibJpeg::LineJpeg()
{
    if (!mLineJpeg)
        mLineJpeg = new CGraphicsJpeg;
    return *mLineJpeg;
}
