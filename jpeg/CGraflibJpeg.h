#ifndef TESSEL_JPEG_CGRAFLIBJPEG_H
#define TESSEL_JPEG_CGRAFLIBJPEG_H

#include <cstdio>
#include <vector>

#include "graflib/CGraflib.h"

class CGraphicsJpeg;

/// Where in a file CGraflibJpeg::Read finds its JPEG.
struct SFileReadInfo
{
    int mFormat = 0;  ///< not used
    int mOffset = 0;  ///< the byte at which the JPEG begins
    int mLength = 0;  ///< not used
};

/// The image that reads and writes JPEG files, whole or line by line.
///
/// A greyscale file gives 8 bits, a colour file 24, a four-channel file 32. What is written is
/// always a colour file. Write brings every depth to that: 8-bit pixels are expanded to red = green
/// = blue, and of 32-bit pixels each colour is multiplied by the fourth channel, which flattens
/// red, green, blue, alpha over black and turns inverted CMYK, the kind that exists in files, into
/// red, green, blue.
///
/// As with every CGraflib, the buffer belongs to the caller: release what the record holds before
/// reading into it again, and in the end. An encoding error of libjpeg ends the process
/// (CGraphicsJpeg).
class CGraflibJpeg : public CGraflib
{
public:
    CGraflibJpeg();
    ~CGraflibJpeg();

    int mQuality = 80;                   ///< of the files written, 0 to 100
    CGraphicsJpeg* mLineJpeg = nullptr;  ///< owned: the line-wise operations', null until needed

    /// How many warnings libjpeg has given about the picture last read: at least 1 for one that was
    /// cut short, 0 for one without damage. Each read counts anew. A read by lines is complete, and
    /// so is its number, when it is closed. (On standard error libjpeg shows only the first.)
    long mWarnings = 0;
    /// Read and OpenReadLine let libjpeg reduce a picture to a half, a quarter or an eighth while
    /// it decodes: the smallest that leaves the longer side at least this many pixels. The record
    /// then has the reduced size. 0: pictures are never reduced. Reducing is much faster than
    /// decoding the whole picture.
    int mLeastSide = 0;
    bool mKeepProfile = false;  ///< Read and OpenReadLine leave the picture's profile in mProfile
    /// A colour profile (ICC), which says what red, green and blue mean. All that is written gets
    /// it, unless it is empty. With mKeepProfile it is that of the picture last opened: empty when
    /// the picture has none, a damaged one, or one above CGraphicsJpeg::kMaxProfileBytes; and when
    /// the picture isn't of three components, because its profile then doesn't fit red, green,
    /// blue.
    std::vector<unsigned char> mProfile;

    /// Reads a file into a new buffer. True; throws CGraflibException (GLIB_ERR_READ) when that
    /// fails, and std::bad_alloc when there is no room, the record then being empty. `info` may be
    /// null: the JPEG begins at the start of the file.
    bool Read(const char* fileName, SFileReadInfo* info) override;
    /// Writes the record as a new file, replacing an old one whatever the append mode. True;
    /// throws GLIB_ERR_WRITE when the file can't be opened, when it can't be closed, which removes
    /// it, and, without touching it, for what CanWrite refuses. The last two arguments aren't used.
    bool Write(const char* fileName, bool, CFileIO*) override;
    /// Writes the same bytes at the stream's position and leaves the stream open behind them. True;
    /// throws GLIB_ERR_WRITE before anything is written for what CanWrite refuses.
    bool Write(std::FILE* stream);

    /// True when Write takes the record: it has a buffer, a depth of 8, 24 or 32, sides from 1 to
    /// 32767, and a profile of at most CGraphicsJpeg::kMaxProfileBytes.
    bool CanWrite() const;

    /// Opens a file for ReadLine and sets size and depth, leaving the buffer alone. True; throws
    /// GLIB_ERR_READ when that fails, with size and depth 0. Ends a line-wise read or write that is
    /// still open, as the destructor does; a file being written is then left cut short.
    bool OpenReadLine(const char* fileName) override;
    /// Stores the next row, mWidth * mBits / 8 bytes, at `line`: true mHeight times, then false.
    /// A row that can't be decoded closes the read: false from then on. A picture that was cut
    /// short gives all its rows, those that are missing in grey: mWarnings tells.
    bool ReadLine(void* line) override;
    /// Ends the read, at the last row or before.
    void CloseReadLine() override;
    /// Makes the picture that OpenReadLine has opened `width` x `height` while it is read: the same
    /// pixels as Read and DownScaleFix2 give, for the memory of a few rows, in place of the buffer
    /// that the record holds. Writes what Read, Show(name) and DownScaleFix2 write, and closes the
    /// file. Returns the new buffer, or null where DownScaleFix2 does. Throws GLIB_ERR_READ with
    /// `name` when a row can't be read, leaving the record as it was.
    unsigned char* ScaleWhileReading(const char* name, int width, int height);

    /// Opens a file for mHeight calls of WriteLine, of rows of mWidth pixels. True; throws
    /// GLIB_ERR_WRITE when the file can't be opened, and, without touching it, for sides outside 1
    /// to 65500 and a profile above 4 MiB.
    bool OpenWriteLine(const char* fileName) override;
    /// Writes the next row: red, green, blue for each pixel, whatever mBits says. Returns the
    /// number of rows accepted, which is 1; 0 when no write is open.
    int WriteLine(void* line) override;
    /// Ends the write. Before the last of mHeight rows, libjpeg ends the process ("Application
    /// transferred too few scanlines", exit status 1): write them all, whatever they hold. Throws
    /// GLIB_ERR_WRITE when the file can't be closed, which removes it unless it was appended to.
    void CloseWriteLine() override;
    /// Whether OpenWriteLine appends to files or replaces them. Holds until OpenReadLine is called.
    void SetAppendMode(bool append) override;

    /// Sets size and depth from a file's header, the JPEG beginning at the byte `offset`; the
    /// last argument isn't used. False, with all three 0, when it can't be read or a side is above
    /// 32767.
    bool GetSize(const char* fileName, int offset, int);

private:
    void SetUpRead(CGraphicsJpeg& jpeg) const;
    void TakeProfile(CGraphicsJpeg& jpeg);
    bool WriteTo(std::FILE* stream, const char* fileName);
    CGraphicsJpeg& LineJpeg();
    void ReleaseLineJpeg();

    CDataRect mOpened;  // size and depth of the picture that is read
};

#endif
