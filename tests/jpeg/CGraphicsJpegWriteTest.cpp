#include <dlfcn.h>
#include <fcntl.h>
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
    std::string Encoded(int quality) const { return EncodeJpeg(20, 10, 3, mPixels, quality); }

    /// What a write says whose close fails.
    template <typename Call>
    std::string OutputWhereClosingFails(Call write)
    {
        closingFails = true;
        std::string output = OutputOf(write);
        closingFails = false;
        return output;
    }

    const Bytes mPixels = Noise(20 * 10 * 3);
    TestImage mImage{{20, 10, 24}, mPixels};
    CGraphicsJpeg mJpeg;
};

TEST_F(CGraphicsJpegWriteTest, StreamsStayOpenAndGrowByTheBytesReturned)
{
    std::FILE* stream = std::fopen(mPath, "wb");
    std::fputs("front", stream);
    const int size = mJpeg.WriteJpeg(stream, 20, 10, mPixels.data(), 75);
    mJpeg.write_JPEG_file(stream, 1);  // the same picture, in steps that only just fit 8 bits
    std::fclose(stream);
    EXPECT_EQ(size, std::ssize(Encoded(75)));
    EXPECT_TRUE(AreSame(ReadAll(mFile), "front" + Encoded(75) + Encoded(1)));
    mJpeg.write_JPEG_file(mPath, 50);
    EXPECT_TRUE(AreSame(ReadAll(mFile), Encoded(50)));
}

TEST_F(CGraphicsJpegWriteTest, ErrorsEndTheProcess)
{
    const testing::ExitedWithCode failed{1};
    const unsigned char* pixels = mPixels.data();
    EXPECT_EXIT(mJpeg.WriteJpeg(mPath, 0, 1, pixels, 75), failed, "Empty JPEG");
    EXPECT_EXIT(mJpeg.WriteJpeg("/dev/full", 20, 10, pixels, 75), failed, "file write error");
    mImage.OpenWriteLine(mPath);
    EXPECT_EXIT(mImage.CloseWriteLine(), failed, "Application transferred too few scanlines");
    EXPECT_EXIT(mJpeg.write_JPEG_file("/no/x", 75), failed, "can't open /no/x\n");
    std::FILE* stream = std::fopen("/dev/null", "wb");
    mJpeg.WriteJpeg(stream, 20, 10, pixels, 75);
    std::fclose(stream);
    const auto write = [&] {
        closingFails = true;
        mJpeg.write_JPEG_file(mPath, 75);
    };
    EXPECT_EXIT(write(), failed, "can't write " + mFile + "\n");
}

TEST_F(CGraphicsJpegWriteTest, AFailedCloseOfAWholePictureIsAFailedWrite)
{
    bool isWritten = true;
    const std::string output = OutputWhereClosingFails([&] {
        isWritten = mJpeg.WriteJpeg(mPath, 20, 10, mPixels.data(), 75);
        mImage.Write(mPath, true, nullptr);
    });
    EXPECT_FALSE(isWritten);
    EXPECT_EQ(output, "Errors: 2 " + mFile);
}

TEST_F(CGraphicsJpegWriteTest, AFailedCloseRemovesANewFileAndNothingElse)
{
    const std::string other = mFolder / "other";
    const std::tuple<const char*, std::function<void()>, bool, bool> rows[] = {
        {"a new file", [] {}, false, false},
        {"a file appended to", [&] { WriteAll(mFile, "front"); }, true, true},
        {"a link", [&] { fs::create_symlink(other, mFile); }, false, true},
        {"a pipe", [&] { mkfifo(mPath, 0600); }, false, true}};
    for (const auto& [name, prepare, append, stays] : rows) {
        fs::remove(mFile);
        prepare();
        const int reader = open(mPath, O_RDONLY | O_NONBLOCK);  // without one, pipes don't open
        mImage.SetAppendMode(append);
        const std::string output = OutputWhereClosingFails([&] { WriteRows(mImage, mPath); });
        close(reader);
        EXPECT_EQ(output, "Errors: 2 " + mFile) << name;
        EXPECT_EQ(fs::exists(fs::symlink_status(mFile)), stays)
            << "whether " << name << " is still there";
    }
}
