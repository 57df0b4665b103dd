#ifndef TESSEL_BENCH_PICTURESET_H
#define TESSEL_BENCH_PICTURESET_H

#include <cstddef>
#include <deque>
#include <vector>

#include "jpeg/CGraflibJpeg.h"

/// An image that owns its pixels.
struct CBenchImage final : CGraflibJpeg
{
    CBenchImage() = default;
    ~CBenchImage() { delete[] mData; }
};

/// What an operation works on: its picture, a second one that it reads or makes, a third that it
/// makes, and planes. All of it is released untimed.
struct SWork
{
    CBenchImage mImage;
    CBenchImage mSecond;
    CBenchImage mThird;
    char* mPlanes[3] = {};

    SWork() = default;
    SWork(const SWork&) = delete;
    SWork& operator=(const SWork&) = delete;
    ~SWork()
    {
        for (char* plane : mPlanes)
            delete[] plane;
    }
};

/// Large pictures of 24 bits, together larger than caches.
class CPictureSet
{
public:
    /// Decodes the large colour pictures of a folder, up to about a gigabyte. With a null folder,
    /// draws noise.
    explicit CPictureSet(const char* folder);
    CPictureSet(const CPictureSet&) = delete;
    CPictureSet& operator=(const CPictureSet&) = delete;

    std::size_t Count() const { return mPictures.size(); }
    std::size_t Pixels(std::size_t count) const;
    std::size_t LargestPixels() const;

    /// Copies of the first `count` pictures, made into pictures of `bits` and `secondBits` bits out
    /// of the same bytes. No second pictures where `secondBits` is 0.
    std::deque<SWork> Copy(std::size_t count, int bits, int secondBits) const;

private:
    void Decode(const char* folder);
    void DrawNoise();

    std::deque<CBenchImage> mPictures;
};

#endif
