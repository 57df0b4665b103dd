#include "tree/ThumbWork.h"

#include <sys/stat.h>

#include "tests/support/TestSupport.h"
#include "tree/STreeOptions.h"

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

struct ThumbWorkTest : FolderTest
{
    const std::string mThumb = mFolder / "tessel/x.jpg";
    STreeOptions mOptions;

    ThumbWorkTest()
    {
        mOptions.mThumbSize = 8;
        fs::create_directory(mFolder / "tessel");
        WriteAll(mFile, SampleJpeg(16, 12));
    }

    EThumb Make(bool ifWrong)
    {
        std::string reply;
        OutputOf([&] { reply = MakeRequestedThumb(ThumbRequest(mFile, ifWrong), mOptions); });
        return ReadThumbReply(reply).mOutcome;
    }
};

TEST_F(ThumbWorkTest, AThumbnailIsRepairedOnlyIfItIsWrong)
{
    const struct
    {
        const char* name;
        std::string thumbnail;
        EThumb outcome;
    } rows[] = {
        {"right", SampleJpeg(8, 6), EThumb::kKept},
        {"right, and upright", SampleJpeg(6, 8), EThumb::kKept},
        {"of another size", SampleJpeg(9, 8), EThumb::kMade},
        {"empty", "", EThumb::kMade},
        {"no picture", "text", EThumb::kMade},
    };
    for (const auto& row : rows) {
        WriteAll(mThumb, row.thumbnail);
        EXPECT_EQ(Make(true), row.outcome) << row.name;
    }
    fs::remove(mThumb);
    EXPECT_EQ(Make(true), EThumb::kMade) << "missing";
    fs::remove(mThumb);
    mkfifo(mThumb.c_str(), 0600);
    EXPECT_EQ(Make(true), EThumb::kMade) << "a FIFO";
}

TEST_F(ThumbWorkTest, AnOlderThumbnailStaysWhereANewOneCantBeMade)
{
    WriteAll(mFile, "no picture");
    WriteAll(mThumb, "older");
    EXPECT_EQ(Make(false), EThumb::kUnreadable);
    EXPECT_EQ(ReadAll(mThumb), "older");
}

TEST_F(ThumbWorkTest, AFolderInThePlaceOfAThumbnailIsAFailedWrite)
{
    fs::create_directory(mThumb);
    EXPECT_EQ(Make(false), EThumb::kUnwritable);
}

TEST_F(ThumbWorkTest, ACutPictureHasWarnings)
{
    const std::string whole = SampleJpeg(16, 12);
    WriteAll(mFile, whole.substr(0, whole.size() - 20));
    std::string reply;
    OutputOf([&] { reply = MakeRequestedThumb(ThumbRequest(mFile, false), mOptions); });
    EXPECT_EQ(ReadThumbReply(reply).mOutcome, EThumb::kMade);
    EXPECT_GT(ReadThumbReply(reply).mWarnings, 0);
}
