#include "util/CFileIO.h"

#include <cstddef>
#include <cstring>
#include <iterator>
#include <memory>

namespace {

constexpr std::ios_base::seekdir kSeekDirections[] = {std::ios_base::beg, std::ios_base::cur,
                                                      std::ios_base::end};

std::ios_base::openmode ToOpenMode(int bits)
{
    constexpr struct
    {
        int mBit;
        std::ios_base::openmode mMode;
    } kModes[] = {
        {CFileIO::kAppend, std::ios_base::app},    {CFileIO::kAtEnd, std::ios_base::ate},
        {CFileIO::kBinary, std::ios_base::binary}, {CFileIO::kRead, std::ios_base::in},
        {CFileIO::kWrite, std::ios_base::out},     {CFileIO::kTruncate, std::ios_base::trunc},
    };
    std::ios_base::openmode mode{};
    for (const auto& row : kModes) {
        if ((bits & row.mBit) != 0)
            mode |= row.mMode;
    }
    return mode;
}

}  // namespace

void CFileIO::Release()
{
    delete mStream;
    mStream = nullptr;
}

bool CFileIO::Open(const char* name, int mode)
{
    // Close the old file first: the new one may be the same.
    Release();
    mStream = new std::fstream(name, ToOpenMode(mode));
    return mStream->good();
}

bool CFileIO::OpenFileRead(const char* name, int mode)
{
    mReadOk = Open(name, mode | kRead);
    return mReadOk;
}

bool CFileIO::OpenFileWrite(const char* name, int mode)
{
    mWriteOk = Open(name, mode | kWrite);
    return mWriteOk;
}

bool CFileIO::OpenFileAppend(const char* name, int mode)
{
    return OpenFileWrite(name, mode | kAppend);
}

bool CFileIO::OpenFileChange(const char* name, int position)
{
    // A stream that may only write would empty the file.
    if (!OpenFileWrite(name, kBinary | kRead))
        return false;
    SetReadPos(position);
    SetWritePos(static_cast<unsigned int>(position));
    return true;
}

void CFileIO::CloseFile()
{
    if (!mWriteOk && !mReadOk)
        return;
    Release();
    mWriteOk = false;
    mReadOk = false;
}

bool CFileIO::ReadBytes(void* buffer, int count)
{
    if (mReadOk && count > 0)
        mStream->read(static_cast<char*>(buffer), count);
    return mReadOk;
}

char* CFileIO::ReadBytes(int count)
{
    if (!mReadOk || count < 0)
        return nullptr;
    auto bytes = std::make_unique<char[]>(static_cast<std::size_t>(count));
    ReadBytes(bytes.get(), count);
    return bytes.release();
}

unsigned char CFileIO::GetChar()
{
    char byte = 0;
    if (mStream)
        mStream->get(byte);
    return static_cast<unsigned char>(byte);
}

bool CFileIO::IsEof() const
{
    return !mStream || mStream->eof();
}

void CFileIO::Clear()
{
    if (mStream)
        mStream->clear();
}

void CFileIO::SkipBytes(int count)
{
    if (mStream)
        mStream->seekg(count, std::ios_base::cur);
}

bool CFileIO::ReadLine(std::string* line)
{
    line->clear();
    if (!mStream)
        return false;
    std::getline(*mStream, *line);
    std::erase(*line, '\r');
    // Text that no line feed ends isn't a line: the read has failed.
    if (mStream->eof())
        mStream->setstate(std::ios_base::failbit);
    return mStream->good();
}

bool CFileIO::ReadLine(std::vector<char>* line)
{
    std::string text;
    const bool whole = ReadLine(&text);
    line->assign(text.begin(), text.end());
    return whole;
}

char* CFileIO::ReadFile(const char* name, int* size)
{
    *size = GetFileSize(name);
    if (!OpenFileRead(name, kBinary) || *size < 0) {
        CloseFile();
        return nullptr;
    }
    auto bytes = std::make_unique<char[]>(static_cast<std::size_t>(*size) + 1);
    ReadBytes(bytes.get(), *size);
    CloseFile();
    return bytes.release();
}

bool CFileIO::WriteBytes(const void* buffer, int count)
{
    if (mWriteOk && count > 0)
        mStream->write(static_cast<const char*>(buffer), count);
    return mWriteOk;
}

bool CFileIO::WriteString(const char* text)
{
    return WriteBytes(text, static_cast<int>(std::strlen(text)));
}

bool CFileIO::WriteFile(const char* name, const void* buffer, int count)
{
    if (count <= 0 || !OpenFileWrite(name, kBinary))
        return false;
    WriteBytes(buffer, count);
    CloseFile();
    return true;
}

bool CFileIO::SetReadPos(int position)
{
    return SetReadPos2(position, 0);
}

bool CFileIO::SetReadPos2(int offset, unsigned char direction)
{
    if (!mStream || direction >= std::size(kSeekDirections))
        return false;
    mStream->seekg(offset, kSeekDirections[direction]);
    return mStream->tellg() == std::streampos(offset);
}

int CFileIO::GetReadPos()
{
    return mStream ? static_cast<int>(mStream->tellg()) : -1;
}

int CFileIO::GetWritePos()
{
    return mStream ? static_cast<int>(mStream->tellp()) : -1;
}

void CFileIO::SetWritePos(unsigned int position)
{
    if (mStream)
        mStream->seekp(position);
}

void CFileIO::SetWritePosEnd()
{
    if (mStream)
        mStream->seekp(0, std::ios_base::end);
}
