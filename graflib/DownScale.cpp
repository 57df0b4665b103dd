// The float box filter, applied to an image.
#include <cstring>
#include <memory>
#include <utility>

#include "graflib/CFilterBilinearFloat.h"
#include "graflib/CGraflib.h"
#include "util/SizeProduct.h"

template <typename Tsample>
unsigned char* CGraflib::DownScaleFloat(int width, int height)
{
    if (!mData)
        return nullptr;
    CFilterBilinearFloat<Tsample, float> filter;
    const int components = mBits / (8 * static_cast<int>(sizeof(Tsample)));
    const std::unique_ptr<Tsample[]> samples(filter.DownScale(reinterpret_cast<Tsample*>(mData),
                                                              mWidth, mHeight, width, height,
                                                              components, mWidth, nullptr));
    if (!samples)
        return nullptr;
    // The filter's array is larger than a record's buffer, and not one of bytes.
    const CDataRect result{nullptr, width, height, mBits};
    auto pixels = NewArray<unsigned char>(result.Bytes());
    std::memcpy(pixels.get(), samples.get(), result.Bytes());
    return ReplaceBuffer(std::move(pixels), width, height, mBits);
}

unsigned char* CGraflib::DownScale(int width, int height)
{
    switch (mBits) {
        case 8:
        case 24:
            return DownScaleFloat<unsigned char>(width, height);
        case 16:
            return DownScaleFloat<short>(width, height);
        default:
            return nullptr;
    }
}
