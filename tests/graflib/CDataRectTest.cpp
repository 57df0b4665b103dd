#include "graflib/CDataRect.h"

#include <climits>
#include <new>

#include "tests/support/TestSupport.h"

TEST(CDataRect, RefusesSizesThatNoBufferCanHave)
{
    const CDataRect record{nullptr, INT_MAX, INT_MAX, 32};
    EXPECT_THROW(record.Bytes(), std::bad_alloc);
}

TEST(CPixelOwner, ReleasesTheBufferThatTheRecordHoldsInTheEnd)
{
    CDataRect record{new unsigned char[1], 1, 1, 8};
    {
        const CPixelOwner owner(&record);
        delete[] record.mData;
        record.mData = new unsigned char[2];
    }
    EXPECT_EQ(record.mData, nullptr);
}
