#ifndef TESSEL_GRAFLIB_CGRAFLIB_H
#define TESSEL_GRAFLIB_CGRAFLIB_H

#include <memory>

#include "graflib/CDataRect.h"
#include "graflib/CGraflibException.h"
#include "graflib/PixelTypes.h"

class CFileIO;
struct SFileReadInfo;
template <int SHIFT, typename Tpixel>
struct SScaleParams;

/// The abstract image: a record and the operations on it. CDataRect tells the record's layout and
/// who owns its buffer. The virtual functions read and write files; a class for one file format,
/// such as CGraflibJpeg, defines them.
///
/// An operation that replaces the buffer fills the new one before it releases the old one. So a
/// failed allocation (`std::bad_alloc`) leaves the image as it was. One image is used by one thread
/// at a time; different images share nothing.
class CGraflib : public CDataRect
{
public:
    CGraflib() = default;
    CGraflib(const CGraflib&) = delete;
    CGraflib& operator=(const CGraflib&) = delete;

    /// What SetAppendMode stores, for a class whose files can grow. Nothing in this library reads
    /// it.
    bool mAppendMode = false;

    // --- Files: the class of a file format says more ---------------------------------------------

    /// Reads a file into a new buffer. True, or an exception (GLIB_ERR_READ).
    virtual bool Read(const char* fileName, SFileReadInfo* info) = 0;
    /// Writes the picture as a file. True, or an exception (GLIB_ERR_WRITE).
    virtual bool Write(const char* fileName, bool, CFileIO*) = 0;
    /// Opens a file to read row by row and sets size and depth. True, or an exception.
    virtual bool OpenReadLine(const char* fileName) = 0;
    /// Stores the next row at `line`; false when there is none.
    virtual bool ReadLine(void* line) = 0;
    /// Ends what OpenReadLine began, at the last row or before.
    virtual void CloseReadLine() = 0;
    /// Opens a file to write row by row. True, or an exception.
    virtual bool OpenWriteLine(const char* fileName) = 0;
    /// Writes the next row; returns the number of rows accepted.
    virtual int WriteLine(void* line) = 0;
    /// Ends what OpenWriteLine began, once all rows are written.
    virtual void CloseWriteLine() = 0;
    /// Stores `append` in mAppendMode. CGraflibJpeg overrides this and leaves mAppendMode alone.
    virtual void SetAppendMode(bool append);

    // --- Diagnostics, on standard output --------------------------------------------------------

    /// Writes one line: `name` and a blank (unless `name` is null), width, height, depth, and
    /// whether there is a buffer.
    void Show(const char* name);
    /// Writes a line that explains the exception's code, for the codes 4 to 6. Writes nothing for
    /// other codes.
    void ShowGlibError(CGraflibException& e);

    // --- Scaling --------------------------------------------------------------------------------

    /// Resizes the image to `width` x `height` by area averaging in fixed point: every source
    /// pixel counts by the part of it that lies under the destination pixel. Takes depths of 8,
    /// 16, 24 and 32 bits. The more source pixels a destination pixel covers, and the longer a
    /// side, the fewer fraction bits are used. With 16 and more source pixels to a destination
    /// pixel, or a side above 32767, this may darken the result slightly.
    ///
    /// Returns the new buffer, which is then mData. Returns null and leaves the image as it was for
    /// another depth (after a line beginning "***** "), an empty image, a target side below 1, and
    /// a source side of 2^29 or more. Writes a line with "ScaleFakt=" and the area ratio (for 24
    /// bits only), and one with "sizeof(Tpixel)=" and the bytes of a pixel.
    unsigned char* DownScaleFix2(int width, int height);

    /// Fills `dest`, row by row, with the `width` x `height` pixels that GetScaledPicturePixel
    /// makes of this image one by one. The image must have the depth of Tpixel and sides from 1 to
    /// 2^(31 - SHIFT) - 1; it isn't changed. Writes the line "sizeof(Tpixel)=". A `width` or
    /// `height` below 1 fills nothing.
    template <int SHIFT, typename Tfix, typename Tpixel>
    void DownScalePicture(Tpixel* dest, int width, int height);

    /// Works out destination pixel (x, y) from this image and stores it at `params->mDest`; the
    /// pointer stays the same. Pixels can be made in any order. This is the definition of the
    /// scaler, and slow. MakeScaleParams in graflib/FixedPointTypes.h makes the record. Both
    /// templates exist for SHIFT 16, 8, 4 and 2, with CPixel1fixT for 8 and 16 bits, CPixel3fixT
    /// for 24 bits and CPixel4fixT for 32 bits.
    template <int SHIFT, typename Tfix, typename Tpixel>
    void GetScaledPicturePixel(SScaleParams<SHIFT, Tpixel>* params, int x, int y);

    /// Resizes the image to `width` x `height` by area averaging in floating point. Takes depths
    /// of 8, 16 and 24 bits. See CFilterBilinearFloat, which cuts results where DownScaleFix2
    /// rounds them.
    ///
    /// Returns the new buffer, which is then mData. Returns null and leaves the image as it was for
    /// another depth, an empty image and a target side below 1, and, after the filter's lines
    /// beginning "***** ", when the filter runs out of memory. Throws `std::bad_alloc` when memory
    /// runs out only after that.
    unsigned char* DownScale(int width, int height);

    /// Makes one line of half the width out of two lines of mWidth pixels. Every sample is the mean
    /// of a 2 x 2 block, cut. The lines have this image's depth, which is 8, 16, 24 or 32 bits; at
    /// 16 bits, samples are taken as unsigned. Another depth only writes a line beginning "***** ".
    /// The image itself isn't changed.
    ///
    /// `source` is the first line. The second begins `offset` samples (of 8 or 16 bits) after the
    /// start of the first. The last pixel of an odd width is dropped. `dest` has room for
    /// mWidth / 2 pixels and may be `source`.
    void DownScaleLine2(void* source, void* dest, int offset);
    /// The same for one component, counted from 0, of lines of `width` pixels. The other components
    /// of `dest` stay as they are. `component` isn't used at 8 and 16 bits. Another depth does
    /// nothing.
    void DownScaleLine2(void* source, void* dest, int width, int offset, int component);

    // --- Orientation, at any depth of whole bytes -----------------------------------------------
    //
    // A half turn is Xflip and Yflip; a quarter turn clockwise is Transpose, then Xflip; one
    // counterclockwise is Transpose, then Yflip.

    /// Mirrors the picture top to bottom, in place: the last row becomes the first.
    void Yflip();
    /// Mirrors the picture left to right, in place: the last column becomes the first.
    void Xflip();
    /// Makes the picture's columns its rows, in a new buffer; width and height change places. The
    /// top left pixel stays where it is.
    void Transpose();

    // --- Colours --------------------------------------------------------------------------------

    /// Exchanges the first and third byte of every pixel, in place. Takes 24 and 32 bits. Another
    /// depth changes nothing and writes a line beginning "***** ".
    void SwapRedBlue();
    /// Expands an 8-bit picture into 24 bits. Each byte is an index into `palette`, which has 256
    /// colours. The depth isn't tested: the first mWidth * mHeight bytes are the indices.
    void ConvertPalToRGB(const CRgb* palette);
    /// The same into 32 bits. Each byte is an index into `alpha`, too, which has 256 bytes.
    void ConvertPalToRGBA(const CRgb* palette, const unsigned char* alpha);

    // --- Alpha and planes -----------------------------------------------------------------------

    /// Takes the bytes of `alpha`, an 8-bit picture of the same size, as the alpha channel of this
    /// picture. This picture has 24 bits, and gets a new buffer of 32, or has 32. Returns false and
    /// changes nothing for other depths and sizes.
    bool InterleaveAlpha(CGraflib* alpha);
    /// Copies the colours of this 32-bit picture into the 24-bit picture `color` and its alphas
    /// into the 8-bit picture `alpha`, and writes a line on each (`Show`). Either may be null. Each
    /// gets a new buffer, which belongs to the caller; the buffer it held before isn't released and
    /// stays the caller's, too. For another depth, writes a line beginning "***** " and returns
    /// false.
    bool SeparateAlpha(CGraflib* color, CGraflib* alpha);
    /// Blends a 32-bit picture over this 24-bit picture of the same size, in place, by its alpha
    /// (see CPixel24T::MixPixel). Throws CGraflibException and changes nothing when one condition
    /// isn't met. They are tested in this order: GLIB_ERR_NOT24BIT for this picture,
    /// GLIB_ERR_NOT32BIT for the overlay, GLIB_ERR_SIZE.
    void CombineWithAlpha(const CDataRect* overlay);
    /// Copies the red, green and blue bytes of a 24-bit picture into three new arrays of
    /// mWidth * mHeight bytes, which belong to the caller (`delete[]`). Another depth does nothing:
    /// the pointers aren't set.
    void SplitBitplanes(char** plane0, char** plane1, char** plane2);
    /// Makes a new buffer for this 24-bit picture out of three such planes, which stay with the
    /// caller. Another depth does nothing.
    void JoinBitplanes(const char* plane0, const char* plane1, const char* plane2);

protected:
    // Not virtual: images are never destroyed through a CGraflib.
    ~CGraflib() = default;

    /// Releases the buffer and takes `pixels` in its place, with size and depth. Returns the new
    /// buffer.
    unsigned char* ReplaceBuffer(std::unique_ptr<unsigned char[]> pixels, int width, int height,
                                 int bits);

    /// Scales the picture that OpenReadLine has opened to `width` x `height` while it is read. The
    /// result and the lines written are those of Read, Show(name) and DownScaleFix2, but only a few
    /// rows are in memory. `opened` has the picture's size and depth. The lines are written and the
    /// file is closed when all rows are read, also when null is returned. When a row can't be read,
    /// throws GLIB_ERR_READ with `name` and leaves the record as it was.
    unsigned char* ScaleWhileReading(const CDataRect& opened, const char* name, int width,
                                     int height);

private:
    template <typename Tsample>
    unsigned char* DownScaleFloat(int width, int height);
};

#endif
