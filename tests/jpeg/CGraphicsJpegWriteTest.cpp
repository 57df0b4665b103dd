#include <dlfcn.h>

#include <cerrno>
#include <functional>

#include "tests/jpeg/JpegTestSupport.h"

static bool closingFails = false;

/// In the place of the system's: a file that a server or a quota refuses at its closing.
extern "C" int fclose(std::FILE* stream)
{
    static const auto real = reinterpret_cast<decltype(&fclose)>(dlsym(RTLD_NEXT, "fclose"));
    const int result = real(stream);
    if (!closingFails)
        return result;
    errno = EIO;
    return EOF;
}

struct CGraphicsJpegWriteTest : FolderTest
{
    ~CGraphicsJpegWriteTest() override { closingFails = false; }

    std::string Encoded(int quality) const { return EncodeJpeg(20, 10, 3, mPixels, quality); }

    bool WriteLines(int count)
    {
        for (int i = 0; i < count; ++i)
            mJpeg.WriteJpegLine(mPixels.data());
        return mJpeg.CloseJpegWrite();
    }
    /// Writes a picture of one pixel from above; false when that throws what a failed write throws.
    bool WriteImage(bool byLines)
    {
        TestImage image({1, 1, 24}, Bytes(3));
        image.SetAppendMode(mJpeg.mAppend);
        const std::string output = OutputOf([&] {
            if (!byLines) {
                image.Write(mPath, true, nullptr);
                return;
            }
            image.OpenWriteLine(mPath);
            image.WriteLine(image.mData);
            image.CloseWriteLine();
        });
        EXPECT_EQ(output, closingFails ? "Errors: 2 " + mFile : "");
        return output.empty();
    }

    const Bytes mPixels = Noise(20 * 10 * 3);
    CGraphicsJpeg mJpeg;
    const testing::ExitedWithCode mFailed{1};
};

TEST_F(CGraphicsJpegWriteTest, FilesAreWhatLibjpegMakesWithItsDefaults)
{
    for (const int quality : {1, 75}) {  // the coarsest needs steps of more than 8 bits, or a limit
        EXPECT_TRUE(mJpeg.WriteJpeg(mPath, 20, 10, mPixels.data(), quality));
        EXPECT_TRUE(AreSame(ReadAll(mFile), Encoded(quality))) << quality;
    }
}

TEST_F(CGraphicsJpegWriteTest, StreamsStayOpenAndGrowByTheBytesReturned)
{
    std::FILE* stream = std::fopen(mPath, "wb");
    std::fputs("front", stream);
    const int size = mJpeg.WriteJpeg(stream, 20, 10, mPixels.data(), 75);
    mJpeg.write_JPEG_file(stream, 30);
    std::fputs("end", stream);
    std::fclose(stream);
    EXPECT_EQ(size, std::ssize(Encoded(75)));
    EXPECT_TRUE(AreSame(ReadAll(mFile), "front" + Encoded(75) + Encoded(30) + "end"));
}

TEST_F(CGraphicsJpegWriteTest, ThePictureDescribedLastGoesToAFile)
{
    mJpeg.WriteJpeg(mPath, 20, 10, mPixels.data(), 75);
    std::FILE* stream = std::fopen(mPath, "wb");
    mJpeg.WriteJpeg(stream, 20, 10, mPixels.data(), 75);
    std::fclose(stream);
    mJpeg.write_JPEG_file(mPath, 30);
    EXPECT_TRUE(AreSame(ReadAll(mFile), Encoded(30)));
}

TEST_F(CGraphicsJpegWriteTest, AFileThatCantBeOpenedIsSaid)
{
    EXPECT_FALSE(mJpeg.WriteJpeg("/no/x", 20, 10, mPixels.data(), 75));
    EXPECT_FALSE(mJpeg.OpenJpegWrite("/no/x", 20, 10, 75));
    EXPECT_EQ(mJpeg.WriteJpegLine(mPixels.data()), 0);
    EXPECT_EXIT(mJpeg.write_JPEG_file("/no/x", 75), mFailed, "can't open /no/x\n");
}

TEST_F(CGraphicsJpegWriteTest, ErrorsOfLibjpegEndTheProcess)
{
    EXPECT_EXIT(mJpeg.WriteJpeg(mPath, 0, 1, mPixels.data(), 75), mFailed, "Empty JPEG");
    EXPECT_EXIT(mJpeg.WriteJpeg("/dev/full", 20, 10, mPixels.data(), 75), mFailed,
                "Output file write error");
    const auto tooFewLines = [&] {
        mJpeg.OpenJpegWrite(mPath, 20, 10, 75);
        WriteLines(9);
    };
    EXPECT_EXIT(tooFewLines(), mFailed, "Application transferred too few scanlines");
}

TEST_F(CGraphicsJpegWriteTest, AFailedCloseIsAFailedWriteAndRemovesTheFile)
{
    const struct
    {
        const char* mName;
        std::function<bool()> mWrite;
    } rows[] = {{"whole", [&] { return mJpeg.WriteJpeg(mPath, 20, 10, mPixels.data(), 75); }},
                {"lines", [&] { return mJpeg.OpenJpegWrite(mPath, 20, 2, 75) && WriteLines(2); }},
                {"image", [&] { return WriteImage(false); }},
                {"lines of an image", [&] { return WriteImage(true); }}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mName);
        closingFails = true;
        EXPECT_FALSE(row.mWrite());
        EXPECT_FALSE(fs::exists(mFile)) << "the file is still there";
        closingFails = false;
        EXPECT_TRUE(row.mWrite());
        EXPECT_TRUE(fs::exists(mFile)) << "there is no file";
    }
}

TEST_F(CGraphicsJpegWriteTest, AFailedCloseRemovesNothingElse)
{
    const std::string other = mFolder / "other";
    const struct
    {
        const char* mName;
        std::function<void()> mPrepare;
        bool mAppend;
    } rows[] = {{"appended to", [&] { WriteAll(mFile, "front"); }, true},
                {"link to a file", [&] { fs::create_symlink(other, mFile); }, false},
                {"link to a device", [&] { fs::create_symlink("/dev/null", mFile); }, false}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.mName);
        fs::remove(mFile);
        row.mPrepare();
        mJpeg.mAppend = row.mAppend;
        for (const bool byLines : {true, false}) {
            if (row.mAppend && !byLines)
                continue;  // whole images are never appended
            closingFails = true;
            EXPECT_FALSE(WriteImage(byLines));
            closingFails = false;
            EXPECT_TRUE(fs::exists(fs::symlink_status(mFile))) << "it was removed";
        }
    }
}

TEST_F(CGraphicsJpegWriteTest, AFileThatHasTakenTheNameMeanwhileStays)
{
    ASSERT_TRUE(mJpeg.OpenJpegWrite(mPath, 20, 1, 75));
    fs::remove(mFile);
    WriteAll(mFile, "another");
    closingFails = true;
    const bool isWritten = WriteLines(1);
    closingFails = false;
    EXPECT_FALSE(isWritten);
    EXPECT_EQ(ReadAll(mFile), "another");
}

TEST_F(CGraphicsJpegWriteTest, AFailedCloseOfANamedPictureEndsTheProcess)
{
    std::FILE* stream = std::fopen("/dev/null", "wb");
    mJpeg.WriteJpeg(stream, 20, 10, mPixels.data(), 75);
    std::fclose(stream);
    const auto write = [&] {
        closingFails = true;
        mJpeg.write_JPEG_file(mPath, 75);
    };
    EXPECT_EXIT(write(), mFailed, "can't write " + mFile + "\n");
}
