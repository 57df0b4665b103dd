#include "graflib/CGraflib.h"

#include "tests/support/TestSupport.h"

TEST(CGraflib, ShowWritesALineOnTheRecord)
{
    TestImage empty;
    TestImage image({2, 1, 24}, Bytes(6));
    EXPECT_EQ(OutputOf([&] { empty.Show(""); }), " Width=0 Height=0 mBits=0 Data = NULL\n");
    EXPECT_EQ(OutputOf([&] { image.Show(nullptr); }), "Width=2 Height=1 mBits=24 Data != NULL\n");
}

TEST(CGraflibException, ExplainsItsCodeAndShowGlibErrorDoesFrom4To6)
{
    const struct
    {
        int mCode;
        const char* mWhat;
        const char* mShown;
    } rows[] = {
        {GLIB_ERR_READ, "x: can't be read", ""},
        {GLIB_ERR_WRITE, "x: can't be written", ""},
        {3, "x: failed", ""},
        {GLIB_ERR_SIZE, "x: the pictures differ in size",
         "GLIB error: Groesse der Bitmaps verschieden\n"},
        {GLIB_ERR_NOT32BIT, "x: the other picture must have 32 bits",
         "GLIB error: Datei muss 32 bit sein\n"},
        {GLIB_ERR_NOT24BIT, "x: this picture must have 24 bits",
         "GLIB error: Datei muss 24 bit sein\n"},
    };
    for (const auto& row : rows) {
        CGraflibException exception(row.mCode, "x");
        const std::string shown = OutputOf([&] { TestImage().ShowGlibError(exception); });
        EXPECT_STREQ(exception.what(), row.mWhat) << row.mCode;
        EXPECT_EQ(shown, row.mShown) << row.mCode;
    }
}
