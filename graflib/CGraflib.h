#ifndef TESSEL_GRAFLIB_CGRAFLIB_H
#define TESSEL_GRAFLIB_CGRAFLIB_H

#include <memory>

#include "graflib/CDataRect.h"
#include "graflib/CGraflibException.h"

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

    // --- Files; see the class of the file format ------------------------------------------------

    virtual bool Read(const char* fileName, SFileReadInfo* info) = 0;
    virtual bool Write(const char* fileName, bool, CFileIO*) = 0;
    virtual bool OpenReadLine(const char* fileName) = 0;
    virtual bool ReadLine(void* line) = 0;
    virtual void CloseReadLine() = 0;
    virtual bool OpenWriteLine(const char* fileName) = 0;
    virtual int WriteLine(void* line) = 0;
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
    /// pixels made from this image, which must have the depth of Tpixel and isn't changed.
    /// Writes the line "sizeof(Tpixel)=". A `width` or `height` below 1 fills nothing.
    template <int SHIFT, typename Tfix, typename Tpixel>
    void DownScalePicture(Tpixel* dest, int width, int height);

    /// Works out destination pixel (x, y) and writes it to `params->mDest`, which it leaves there.
    /// Right for any pixel in any order, fast for a whole row after the other. See
    /// graflib/FixedPointTypes.h for the record; both templates exist for SHIFT 16, 8, 4 and 2 with
    /// CPixel1fixT for 8 and 16 bits, CPixel3fixT for 24 and CPixel4fixT for 32 bits.
    template <int SHIFT, typename Tfix, typename Tpixel>
    void GetScaledPicturePixel(SScaleParams<SHIFT, Tpixel>* params, int x, int y);

protected:
    // Not virtual: images are never destroyed through a CGraflib.
    ~CGraflib() = default;

    /// Puts `pixels` in the place of the buffer, which is released. Returns the new buffer.
    unsigned char* ReplaceBuffer(std::unique_ptr<unsigned char[]> pixels, int width, int height,
                                 int bits);

private:
    template <template <int> class Tfix, typename Tpixel>
    unsigned char* DownScaleDepth(int width, int height);
};

#endif
