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

/// The abstract image: a record (see CDataRect for its layout and who owns its buffer), the
/// operations on it, and the slots for reading and writing files that a class for one file format
/// fills, such as CGraflibJpeg.
///
/// An operation that replaces the buffer allocates and fills the new one first and releases the
/// old one only then: a failed allocation (`std::bad_alloc`) leaves the image as it was. One image
/// is used by one thread at a time; different images share nothing.
class CGraflib : public CDataRect
{
public:
    CGraflib() = default;
    CGraflib(const CGraflib&) = delete;
    CGraflib& operator=(const CGraflib&) = delete;

    bool mAppendMode = false;  ///< append to files instead of replacing them

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
    /// Stores `append` in mAppendMode.
    virtual void SetAppendMode(bool append);

    // --- Diagnostics, on standard output --------------------------------------------------------

    /// Writes one line: `name` and a blank (unless null), width, height, depth, and whether there
    /// is a buffer.
    void Show(const char* name);
    /// Writes the text of the exception's code: a line for the codes 4 to 6, nothing for others.
    void ShowGlibError(CGraflibException& e);

    // --- Scaling --------------------------------------------------------------------------------

    /// Resizes the image to `width` x `height` by area averaging in fixed point: every source
    /// pixel counts by the part of it that lies under the destination pixel. Takes depths of 8,
    /// 16, 24 and 32 bits. The more source pixels a destination pixel covers, the fewer fraction
    /// bits are used; from sixteen on, this may darken the result slightly.
    ///
    /// Returns the new buffer, which is then mData. Returns null and leaves the image as it was
    /// for another depth (after a line beginning "***** "), an empty image, a target side below 1
    /// and a source side above 2^29. Writes "ScaleFakt=", the area ratio (24 bits only), and
    /// "sizeof(Tpixel)=", the bytes of a pixel, a line each.
    unsigned char* DownScaleFix2(int width, int height);

    /// The walk over the destination pixels, in row order: fills `dest` with `width` x `height`
    /// pixels made from this image, which must have the depth of Tpixel and isn't changed: those
    /// that GetScaledPicturePixel makes one by one. Writes the line "sizeof(Tpixel)=". A `width` or
    /// `height` below 1 fills nothing.
    template <int SHIFT, typename Tfix, typename Tpixel>
    void DownScalePicture(Tpixel* dest, int width, int height);

    /// Works out destination pixel (x, y) from this image and writes it to `params->mDest`, which
    /// it leaves there. Right for any pixel in any order, and slow. See graflib/FixedPointTypes.h
    /// for the record; both templates exist for SHIFT 16, 8, 4 and 2 with CPixel1fixT for 8 and 16
    /// bits, CPixel3fixT for 24 and CPixel4fixT for 32 bits.
    template <int SHIFT, typename Tfix, typename Tpixel>
    void GetScaledPicturePixel(SScaleParams<SHIFT, Tpixel>* params, int x, int y);

    /// Resizes the image to `width` x `height` by area averaging in floating point (see
    /// CFilterBilinearFloat, which cuts where DownScaleFix2 rounds). Takes depths of 8, 16 and 24
    /// bits. Returns the new buffer, which is then mData; null, leaving the image as it was, for
    /// another depth, an empty image, a target side below 1, and, after a line beginning "***** ",
    /// when the filter runs out of memory (std::bad_alloc, if only its result can't be taken over).
    unsigned char* DownScale(int width, int height);

    /// Makes one line of half the width out of two lines of this image's depth (8, 16, 24 or 32)
    /// and mWidth: every sample is the mean of a 2 x 2 block, cut; 16-bit samples count as
    /// unsigned. `source` is the first line; the second begins `offset` samples (bytes, or 16-bit
    /// samples) behind it. An odd width's last pixel is dropped. The image itself isn't touched.
    /// `dest` takes mWidth / 2 pixels and may be `source`: each sample is stored where only samples
    /// already used stood. Another depth writes nothing but a line beginning "***** ".
    void DownScaleLine2(void* source, void* dest, int offset);
    /// The same for one component, 0 based, of lines of `width` pixels: the other components of
    /// `dest` are left alone. The component plays no role at 8 and 16 bits. Another depth does
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

    /// Exchanges the first and third byte of every pixel, in place. Takes 24 and 32 bits; another
    /// depth changes nothing and writes a line beginning "***** ".
    void SwapRedBlue();
    /// Expands an 8-bit picture into 24 bits: each byte is an index into `palette`, 256 colours.
    /// The depth isn't tested: the first mWidth * mHeight bytes are taken for indices.
    void ConvertPalToRGB(const CRgb* palette);
    /// The same into 32 bits, the fourth byte being the index's entry in `alpha`, 256 bytes.
    void ConvertPalToRGBA(const CRgb* palette, const unsigned char* alpha);

    // --- Alpha and planes -----------------------------------------------------------------------

    /// Makes an 8-bit picture of the same size the alpha channel of this one, which has 24 bits
    /// (and gets 32) or 32. False, changing nothing, for other depths and sizes.
    bool InterleaveAlpha(CGraflib* alpha);
    /// Splits this 32-bit picture, which stays as it is, into a 24-bit picture and an 8-bit one of
    /// its alphas, and writes a line on each (`Show`). Either target may be null. A target's new
    /// buffer belongs to the caller, and so does the one it held before. False, after a line
    /// beginning "***** ", for another depth.
    bool SeparateAlpha(CGraflib* color, CGraflib* alpha);
    /// Blends a 32-bit picture over this 24-bit picture of the same size, in place, by its alpha
    /// (see CPixel24T::MixPixel). Throws CGraflibException before anything is changed:
    /// GLIB_ERR_NOT24BIT for this picture, GLIB_ERR_NOT32BIT for the overlay, then GLIB_ERR_SIZE.
    void CombineWithAlpha(const CDataRect* overlay);
    /// Splits a 24-bit picture into new arrays of its red, green and blue bytes, mWidth * mHeight
    /// each, which belong to the caller (`delete[]`). Another depth does nothing: the pointers
    /// aren't written.
    void SplitBitplanes(char** plane0, char** plane1, char** plane2);
    /// Gives a 24-bit picture a new buffer made of three such planes, which stay with the caller.
    /// Another depth does nothing.
    void JoinBitplanes(const char* plane0, const char* plane1, const char* plane2);

protected:
    // Not virtual: images are never destroyed through a CGraflib.
    ~CGraflib() = default;

    /// Puts `pixels` in the place of the buffer, which is released. Returns the new buffer.
    unsigned char* ReplaceBuffer(std::unique_ptr<unsigned char[]> pixels, int width, int height,
                                 int bits);

    /// Makes the picture that OpenReadLine has opened `width` x `height` while it is read: the same
    /// result as Read, Show(name) and DownScaleFix2 give, and the same words, written once all rows
    /// are read; but in the memory of a few rows. `opened` has the picture's size and depth. Closes
    /// the file. Throws GLIB_ERR_READ with `name` when a row can't be read, leaving the record as
    /// it was.
    unsigned char* ScaleWhileReading(const CDataRect& opened, const char* name, int width,
                                     int height);

private:
    template <typename Tsample>
    unsigned char* DownScaleFloat(int width, int height);
};

#endif
