#ifndef TESSEL_JPEG_CGRAPHICSJPEG_H
#define TESSEL_JPEG_CGRAPHICSJPEG_H

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

struct SJpegState;

/// Reads and writes JPEG files through libjpeg, whole or line by line, without image records
/// (CGraflibJpeg adds those).
///
/// Pixels are packed rows, the top row first: one byte a pixel from greyscale files, red, green
/// and blue from colour files, four channels as libjpeg delivers them from four-channel files.
/// What is written is always red, green, blue. libjpeg's messages go to standard error.
///
/// An object runs one read or one write at a time, and is used by one thread at a time; separate
/// objects share nothing. Close what was opened before the object goes away: the destructor
/// neither closes streams nor releases what libjpeg holds for them. The line functions do nothing
/// (false, 0) while nothing is open, or something for the other direction; opening anything ends
/// what is still open.
class CGraphicsJpeg
{
public:
    static constexpr int kMaxSide = 65500;  ///< what libjpeg encodes at most, in pixels

    // Files that go beyond these limits count as damaged once they are to be decoded.

    /// Up to this size a header is believed. At most 268 MB are at stake: a progressive picture of
    /// four channels takes eight bytes a pixel.
    static constexpr std::uint64_t kMaxBelievedPixels = 1 << 25;
    /// Above, a file must be long enough for its picture. Huffman coding spends a bit or more on a
    /// block of 64 pixels, so it can't hold more than 512 pixels a byte: a header that claims twice
    /// that asks for memory and time that no picture will need. (A blank picture in arithmetic
    /// coding could. The limit doesn't apply to pipes.)
    static constexpr std::uint64_t kMaxPixelsPerByte = 1024;
    /// As much of a file is read; it counts as cut short there. libjpeg looks for the next marker
    /// to the end of a file, which may be a hole of any size: a gigabyte of one takes a second or
    /// two.
    static constexpr std::uint64_t kMaxFileBytes = std::uint64_t{1} << 32;
    /// Every scan costs a pass over the picture, at worst 2 ns a pixel. Encoders make about ten,
    /// and rarely a hundred. One scan is always read.
    static constexpr std::uint64_t kMaxScannedPixels = 2'500'000'000;
    static constexpr std::uint64_t kMaxScans = 500;  ///< whatever the picture's size
    /// In arithmetic coding, a few hundred bytes can keep the decoder busy with all pixels that the
    /// header claims. Size and scans of a picture may take it this long at worst. Encoders'
    /// pictures of 27 megapixels in one scan, and of 19 in ten, are within that, if the colours
    /// have half the columns and rows.
    static constexpr int kMaxArithmeticSeconds = 5;
    /// The memory that libjpeg may take. The environment can set another limit (JPEGMEM, where
    /// libjpeg looks for it). A picture in several scans takes two bytes a sample, so that 150
    /// megapixels fit if the colours have half the columns and rows, and 89 if they have all.
    static constexpr long kMaxDecoderBytes = 512L << 20;

    /// Profiles of cameras, screens and printers have a few hundred bytes to a few megabytes. A
    /// file could hold 16 megabytes, and its thumbnail would get them.
    static constexpr std::size_t kMaxProfileBytes = std::size_t{4} << 20;

    CGraphicsJpeg();
    CGraphicsJpeg(const CGraphicsJpeg&) = delete;
    CGraphicsJpeg& operator=(const CGraphicsJpeg&) = delete;
    ~CGraphicsJpeg();

    int mComponents = 0;   ///< bytes per pixel of the JPEG last opened for reading
    bool mAppend = false;  ///< writes go behind what the file holds instead of replacing it
    SJpegState* mState;    ///< owned: what libjpeg needs between calls
    int mReadOffset = 0;   ///< where in the file the JPEG to read begins, in bytes

    /// How many warnings libjpeg has given about the picture last opened for reading, up to now: at
    /// least 1 when a picture that was cut short is closed, 0 for one without damage.
    long mWarnings = 0;
    /// Pictures are read reduced to a half, a quarter or an eighth: the smallest that leaves the
    /// longer side at least this many pixels. 0: they are read whole.
    int mLeastSide = 0;
    bool mKeepProfile = false;  ///< opening a read leaves the picture's colour profile in mProfile
    /// An ICC profile of at most kMaxProfileBytes, which every picture that is written gets unless
    /// it is empty. Opening a read sets it if mKeepProfile is true. It is empty then when the
    /// picture has no profile, a damaged or a larger one, or not three components.
    std::vector<unsigned char> mProfile;
    std::string mOutputName;  ///< the file last opened for lines to be written; empty for a stream

    /// Ends whatever is open, without a word. A file being written is left cut short.
    void Abandon();

    // --- Reading ---------------------------------------------------------------------------------

    /// Reads a whole picture into a new array, which belongs to the caller. Null when the file
    /// can't be opened (without a message, width and height set to 0), goes beyond the limits above
    /// or isn't a JPEG that libjpeg decodes to its last row. Damage that libjpeg
    /// only warns about doesn't count. Throws `std::bad_alloc` when there is no room for the
    /// pixels.
    unsigned char* ReadJpeg(const char* fileName, int* width, int* height, int* components);
    /// The same with the components left in mComponents; the last argument isn't used.
    unsigned char* ReadJpeg(const char* fileName, short* width, short* height, int);
    /// The size of a picture, from its header alone. `components`, the number in the file, may be
    /// null. False, with width and height 0, when the file can't be opened, its header is damaged
    /// or a side is above 32767. Leaves alone what is open.
    bool GetJpegSize(const char* fileName, short* width, short* height, int* components);

    /// Opens a picture for ReadJpegLine; false as ReadJpeg's null.
    bool OpenJpegRead(const char* fileName, int* width, int* height, int* components);
    /// Stores the next row, width * components bytes, at `line`. False behind the last row, and
    /// when the row can't be decoded, which closes the read.
    bool ReadJpegLine(void* line);
    /// Ends the read, at the last row or before.
    void CloseJpegLines();

    // --- Writing ---------------------------------------------------------------------------------
    // An error while encoding (an empty picture, a full disk, a writer closed before its last row)
    // ends the process with libjpeg's message and exit status 1. `quality` is libjpeg's, 0 to 100.

    // Some systems tell only when a file is closed that it could not be stored. The close then
    // fails, and a file that was new or replaced is removed. One that was appended to stays, and so
    // do devices and links.

    /// Writes a whole picture of width * height * 3 bytes; false when the file can't be opened or
    /// closed.
    bool WriteJpeg(const char* fileName, short width, short height, const unsigned char* pixels,
                   int quality);
    /// Writes a picture at the stream's position and leaves the stream open behind it. Returns the
    /// number of bytes written.
    int WriteJpeg(std::FILE* stream, short width, short height, const unsigned char* pixels,
                  int quality);

    /// Opens a file for exactly `height` calls of WriteJpegLine; false when it can't be opened.
    bool OpenJpegWrite(const char* fileName, int width, int height, int quality);
    /// The same at the stream's position. CloseJpegWrite leaves the stream open.
    void OpenJpegWrite(std::FILE* stream, int width, int height, int quality);
    /// Writes the next row, width * 3 bytes. Returns the number of rows accepted, which is 1.
    int WriteJpegLine(const void* line);
    /// Ends the write; false when the file can't be closed. Before the last row, libjpeg ends the
    /// process ("Application transferred too few scanlines", exit status 1).
    bool CloseJpegWrite();

    /// Writes the picture that the last stream write described (whose pixels must still exist) to
    /// a stream.
    void write_JPEG_file(std::FILE* stream, int quality);
    /// The same to a file. One that can't be opened or closed ends the process with exit status 1.
    void write_JPEG_file(const char* fileName, int quality);

private:
    std::FILE* OpenJpegFile(const char* fileName) const;
    bool InitJpegRead(int* width, int* height, int* components);
    void TakeProfile();
    void CountWarnings();
    void EndRead();
    bool LinesRemain() const;
    bool DecodeLine(unsigned char* row);
    bool ReadJpegLine();
    void put_scanline();
    void CloseJpeg();
    void BeginWrite(std::FILE* stream, int width, int height, int quality);
    bool AbandonWrite();
};

#endif
