#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

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
    void WriteImage(bool byLines)
    {
        TestImage image({1, 1, 24}, Bytes(3));
        if (!byLines) {
            image.Write(mPath, true, nullptr);
            return;
        }
        image.SetAppendMode(mJpeg.mAppend);
        image.OpenWriteLine(mPath);
        image.WriteLine(image.mData);
        image.CloseWriteLine();
    }
    /// What a write says whose close fails.
    template <typename Call>
    std::string OutputWhereClosingFails(Call write)
    {
        closingFails = true;
        const std::string output = OutputOf(write);
        closingFails = false;
        return output;
    }

    const Bytes mPixels = Noise(20 * 10 * 3);
    CGraphicsJpeg mJpeg;
    const testing::ExitedWithCode mFailed{1};
};

TEST_F(CGraphicsJpegWriteTest, FilesAreWhatLibjpegMakesWithItsDefaults)
{
    for (const int quality : {1, 75}) {  // the coarsest needs steps of more than 8 bits, or a limit
        const bool isWritten = mJpeg.WriteJpeg(mPath, 20, 10, mPixels.data(), quality);
        EXPECT_TRUE(isWritten) << quality;
        EXPECT_TRUE(AreSame(ReadAll(mFile), Encoded(quality))) << quality;
    }
}

TEST_F(CGraphicsJpegWriteTest, StreamsStayOpenAndGrowByTheBytesReturned)
{
    std::FILE* stream = std::fopen(mPath, "wb");
    std::fputs("front", stream);
    const int size = mJpeg.WriteJpeg(stream, 20, 10, mPixels.data(), 75);
    mJpeg.write_JPEG_file(stream, 30);  // the picture described last, once more
    std::fclose(stream);
    EXPECT_EQ(size, std::ssize(Encoded(75)));
    EXPECT_TRUE(AreSame(ReadAll(mFile), "front" + Encoded(75) + Encoded(30)));
    mJpeg.write_JPEG_file(mPath, 50);
    EXPECT_TRUE(AreSame(ReadAll(mFile), Encoded(50)));
}

TEST_F(CGraphicsJpegWriteTest, AFileThatCantBeOpenedIsSaid)
{
    const bool isWritten = mJpeg.WriteJpeg("/no/x", 20, 10, mPixels.data(), 75);
    const bool isOpen = mJpeg.OpenJpegWrite("/no/x", 20, 10, 75);
    EXPECT_FALSE(isWritten);
    EXPECT_FALSE(isOpen);
    EXPECT_EXIT(mJpeg.write_JPEG_file("/no/x", 75), mFailed, "can't open /no/x\n");
}

TEST_F(CGraphicsJpegWriteTest, ErrorsOfLibjpegEndTheProcess)
{
    EXPECT_EXIT(mJpeg.WriteJpeg(mPath, 0, 1, mPixels.data(), 75), mFailed, "Empty JPEG");
    EXPECT_EXIT(mJpeg.WriteJpeg("/dev/full", 20, 10, mPixels.data(), 75), mFailed,
                "Output file write error");
    mJpeg.OpenJpegWrite(mPath, 20, 10, 75);
    EXPECT_EXIT(WriteLines(9), mFailed, "Application transferred too few scanlines");
    mJpeg.Abandon();
}

TEST_F(CGraphicsJpegWriteTest, AFailedCloseIsAFailedWriteAndRemovesTheFile)
{
    bool isWritten = false;  // what CGraphicsJpeg returns, while CGraflibJpeg throws
    const std::string thrown = "Errors: 2 " + mFile;
    const struct
    {
        const char* mName;
        std::function<void()> mWrite;
        std::string mOutput;
    } rows[] = {
        {"whole", [&] { isWritten = mJpeg.WriteJpeg(mPath, 20, 10, mPixels.data(), 75); }, ""},
        {"lines",
         [&] {
             mJpeg.OpenJpegWrite(mPath, 20, 2, 75);
             isWritten = WriteLines(2);
         },
         ""},
        {"image", [&] { WriteImage(false); }, thrown},
        {"lines of an image", [&] { WriteImage(true); }, thrown}};
    for (const auto& row : rows) {
        const std::string output = OutputWhereClosingFails(row.mWrite);
        EXPECT_EQ(output, row.mOutput) << row.mName;
        EXPECT_FALSE(isWritten) << row.mName;
        EXPECT_FALSE(fs::exists(mFile)) << row.mName << ": the file is still there";
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
                {"a link", [&] { fs::create_symlink(other, mFile); }, false},
                {"a pipe", [&] { mkfifo(mPath, 0600); }, false}};
    for (const auto& row : rows) {
        fs::remove(mFile);
        row.mPrepare();
        const int reader = open(mPath, O_RDONLY | O_NONBLOCK);  // without one, pipes don't open
        mJpeg.mAppend = row.mAppend;
        const std::string output = OutputWhereClosingFails([&] { WriteImage(true); });
        close(reader);
        EXPECT_EQ(output, "Errors: 2 " + mFile) << row.mName;
        EXPECT_TRUE(fs::exists(fs::symlink_status(mFile))) << row.mName << " was removed";
    }
}

TEST_F(CGraphicsJpegWriteTest, AFileThatHasTakenTheNameMeanwhileStays)
{
    mJpeg.OpenJpegWrite(mPath, 20, 1, 75);
    fs::rename(mFile, mFile + ".moved");
    WriteAll(mFile, "another");
    OutputWhereClosingFails([&] { WriteLines(1); });
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
