#include "graflib/CDataRect.h"

#include "tests/support/TestSupport.h"

TEST(CPixelOwner, LeavesNoPointerToWhatItReleases)
{
    CDataRect image;
    image.mData = new unsigned char[1];
    {
        const CPixelOwner owner(&image);
    }
    EXPECT_EQ(image.mData, nullptr);
}
