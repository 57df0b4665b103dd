#include "graflib/CGraflibException.h"

#include "tests/support/TestSupport.h"

TEST(CGraflibException, SaysWhatIsWrongWithWhat)
{
    EXPECT_STREQ(CGraflibException(GLIB_ERR_READ, "x").what(), "x: can't be read");
    EXPECT_STREQ(CGraflibException(GLIB_ERR_WRITE, "x").what(), "x: can't be written");
    EXPECT_STREQ(CGraflibException(GLIB_ERR_SIZE, "x").what(), "x: the pictures differ in size");
    EXPECT_STREQ(CGraflibException(GLIB_ERR_NOT32BIT, "x").what(),
                 "x: the other picture must have 32 bits");
    EXPECT_STREQ(CGraflibException(GLIB_ERR_NOT24BIT, "x").what(),
                 "x: this picture must have 24 bits");
    EXPECT_STREQ(CGraflibException(3, "x").what(), "x: failed");
}
