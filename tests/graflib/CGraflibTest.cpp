#include "graflib/CGraflib.h"

#include "tests/support/TestSupport.h"

namespace {

std::string ShownError(int code)
{
    CGraflibException exception(code, "x");
    return OutputOf([&] { TestImage().ShowGlibError(exception); });
}

}  // namespace

TEST(CGraflib, ShowWritesALineOnTheRecord)
{
    TestImage empty;
    TestImage image({2, 1, 24}, Bytes(6));
    EXPECT_EQ(OutputOf([&] { empty.Show(nullptr); }), "Width=0 Height=0 mBits=0 Data = NULL\n");
    EXPECT_EQ(OutputOf([&] { empty.Show(""); }), " Width=0 Height=0 mBits=0 Data = NULL\n");
    EXPECT_EQ(OutputOf([&] { image.Show("a.jpg"); }),
              "a.jpg Width=2 Height=1 mBits=24 Data != NULL\n");
}

TEST(CGraflib, ShowGlibErrorExplainsTheCodesFrom4To6)
{
    EXPECT_EQ(ShownError(GLIB_ERR_SIZE), "GLIB error: Groesse der Bitmaps verschieden\n");
    EXPECT_EQ(ShownError(GLIB_ERR_NOT32BIT), "GLIB error: Datei muss 32 bit sein\n");
    EXPECT_EQ(ShownError(GLIB_ERR_NOT24BIT), "GLIB error: Datei muss 24 bit sein\n");
    for (const int code : {1, 2, 3, 7})
        EXPECT_EQ(ShownError(code), "") << code;
}

TEST(CGraflib, SetAppendModeStoresTheMode)
{
    TestImage image;
    for (const bool append : {true, false}) {
        image.CGraflib::SetAppendMode(append);
        EXPECT_EQ(image.mAppendMode, append);
    }
}
