#include "graflib/CGraflib.h"

#include "tests/TestSupport.h"

TEST(CGraflib, ShowDescribesTheRecord)
{
    TestImage image(640, 480, 24, Bytes(1)), empty;
    EXPECT_EQ(OutputOf([&] { image.Show("a.jpg"); }),
              "a.jpg Width=640 Height=480 mBits=24 Data != NULL\n");
    EXPECT_EQ(OutputOf([&] { empty.Show(nullptr); }), "Width=0 Height=0 mBits=0 Data = NULL\n");
    EXPECT_EQ(OutputOf([&] { empty.Show(""); }), " Width=0 Height=0 mBits=0 Data = NULL\n");
}

TEST(CGraflib, ShowGlibErrorKnowsThreeCodes)
{
    const std::map<int, std::string> texts = {
        {GLIB_ERR_SIZE, "GLIB error: Groesse der Bitmaps verschieden\n"},
        {GLIB_ERR_NOT32BIT, "GLIB error: Datei muss 32 bit sein\n"},
        {GLIB_ERR_NOT24BIT, "GLIB error: Datei muss 24 bit sein\n"}};
    for (int code = 0; code < 9; ++code) {
        CGraflibException error(code, "info");
        EXPECT_EQ(OutputOf([&] { TestImage().ShowGlibError(error); }),
                  texts.count(code) ? texts.at(code) : "");
    }
}
