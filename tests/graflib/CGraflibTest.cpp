#include "graflib/CGraflib.h"

#include "tests/support/TestSupport.h"

TEST(CGraflib, ShowWritesALineOnTheRecord)
{
    TestImage empty;
    TestImage image({2, 1, 24}, Bytes(6));
    EXPECT_EQ(OutputOf([&] { empty.Show(""); }), " Width=0 Height=0 mBits=0 Data = NULL\n");
    EXPECT_EQ(OutputOf([&] { image.Show(nullptr); }), "Width=2 Height=1 mBits=24 Data != NULL\n");
}
