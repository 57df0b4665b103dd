#include "graflib/CGraflib.h"

#include "tests/support/TestSupport.h"

TEST(CGraflib, ShowWritesALineOnTheRecord)
{
    TestImage empty;
    TestImage image({2, 1, 24}, Bytes(6));
    EXPECT_EQ(OutputOf([&] { empty.Show(""); }), " Width=0 Height=0 mBits=0 Data = NULL\n");
    EXPECT_EQ(OutputOf([&] { image.Show(nullptr); }), "Width=2 Height=1 mBits=24 Data != NULL\n");
}

TEST(CGraflibException, SaysWhatIsWrongWithWhat)
{
    const std::pair<int, const char*> rows[] = {
        {GLIB_ERR_READ, "x: can't be read"},
        {GLIB_ERR_WRITE, "x: can't be written"},
        {GLIB_ERR_SIZE, "x: the pictures differ in size"},
        {GLIB_ERR_NOT32BIT, "x: the other picture must have 32 bits"},
        {GLIB_ERR_NOT24BIT, "x: this picture must have 24 bits"},
        {3, "x: failed"}};
    for (const auto& [code, text] : rows)
        EXPECT_STREQ(CGraflibException(code, "x").what(), text) << "code " << code;
}
