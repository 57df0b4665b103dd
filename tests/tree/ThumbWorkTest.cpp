#include "tree/ThumbWork.h"

#include "tests/support/TestSupport.h"

TEST(ThumbWork, TheMessageOfLibjpegIsTakenOutOfWhatWasPrinted)
{
    const std::string reading = "Reading g/a.jpg\n";
    const std::string shown = "g/a.jpg Width=3 Height=2 mBits=24 Data != NULL\n";
    const std::string writing = "Writing g/tessel/a.jpg\n";
    const struct
    {
        const char* name;
        std::string printed;
        const char* message;
    } rows[] = {
        {"all is well", reading + shown + "sizeof(Tpixel)=3\n" + writing, ""},
        {"no picture", reading + "Not a JPEG file: starts with 0x74\n",
         "Not a JPEG file: starts with 0x74"},
        {"a cut picture", reading + "Premature end of JPEG file\n" + shown + writing,
         "Premature end of JPEG file"},
        {"a full disk", reading + shown + writing + "Output file write error\n",
         "Output file write error"},
        {"an older thumbnail was tested first", "Empty input file\n" + reading + shown + writing,
         ""},
        {"ended before it said anything", "", ""},
        {"ended at once", reading, ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(JpegMessage(row.printed, "g/a.jpg", "g/tessel/a.jpg"), row.message) << row.name;
    }
}
