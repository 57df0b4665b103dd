#include "jpeg/CGraphicsJpeg.h"

#include <memory>

#include "tests/TestSupport.h"

namespace {

struct SPicture
{
    int mWidth = -1, mHeight = -1, mComponents = -1;
    std::unique_ptr<unsigned char[]> mPixels;

    SPicture(CGraphicsJpeg& jpeg, const std::string& path)
        : mPixels(jpeg.ReadJpeg(path.c_str(), &mWidth, &mHeight, &mComponents))
    {
    }
    Bytes All() const { return {mPixels.get(), mPixels.get() + mWidth * mHeight * mComponents}; }
};

}  // namespace

TEST(CGraphicsJpeg, ReadsEveryKindWholeAndByLine)
{
    const TempFolder folder;
    const std::string path = folder / "x.jpg";
    for (int kind = 0; kind < 6; ++kind) {
        const int components = kind / 2 == 0 ? 1 : kind / 2 + 2;
        const std::string file = SampleJpeg(17, 11, components, kind % 2 == 1);
        const Bytes pixels = DecodeJpeg(file);
        WriteAll(path, "junk in front" + file);
        CGraphicsJpeg jpeg;
        jpeg.mReadOffset = 13;
        const SPicture picture(jpeg, path);
        ASSERT_TRUE(picture.mPixels && picture.mWidth == 17 && picture.mHeight == 11);
        EXPECT_TRUE(picture.mComponents == components && jpeg.mComponents == components);
        EXPECT_EQ(picture.All(), pixels);

        short width = 0, height = 0;
        int count = 0;
        EXPECT_TRUE(jpeg.GetJpegSize(path.c_str(), &width, &height, &count));
        EXPECT_TRUE(width == 17 && height == 11 && count == components);
        EXPECT_TRUE(jpeg.GetJpegSize(path.c_str(), &width, &height, nullptr));
        width = height = 0;
        const std::unique_ptr<unsigned char[]> again(
            jpeg.ReadJpeg(path.c_str(), &width, &height, 0));
        EXPECT_TRUE(again && width == 17 && height == 11);

        int size[3];
        ASSERT_TRUE(jpeg.OpenJpegRead(path.c_str(), &size[0], &size[1], &size[2]));
        Bytes lines, line(static_cast<std::size_t>(17 * components));
        while (jpeg.ReadJpegLine(line.data()))
            lines.insert(lines.end(), line.begin(), line.end());
        EXPECT_EQ(lines, pixels);
        line.assign(line.size(), 99);
        EXPECT_FALSE(jpeg.ReadJpegLine(line.data()));
        EXPECT_EQ(line, Bytes(line.size(), 99));
        jpeg.CloseJpegLines();
    }
}

TEST(CGraphicsJpeg, FailedReadsLeaveTheObjectIdle)
{
    const TempFolder folder;
    const std::string missing = folder / "missing", text = folder / "text", good = folder / "good";
    WriteAll(text, "not a picture");
    WriteAll(good, SampleJpeg(9, 9));
    CGraphicsJpeg jpeg;
    short width = 7, height = 7;
    int size[3];
    unsigned char line[27];
    testing::internal::CaptureStderr();
    const SPicture none(jpeg, missing);
    EXPECT_TRUE(!none.mPixels && none.mWidth == 0 && none.mHeight == 0);
    EXPECT_FALSE(jpeg.ReadJpegLine(line));
    // A reader closed early is neither an error nor in the way of the next.
    ASSERT_TRUE(jpeg.OpenJpegRead(good.c_str(), &size[0], &size[1], &size[2]));
    EXPECT_TRUE(jpeg.ReadJpegLine(line));
    jpeg.CloseJpegLines();
    jpeg.CloseJpegLines();
    EXPECT_TRUE(SPicture(jpeg, good).mPixels);
    jpeg.mReadOffset = -1;
    EXPECT_FALSE(SPicture(jpeg, good).mPixels);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");

    jpeg.mReadOffset = 0;
    testing::internal::CaptureStderr();
    EXPECT_FALSE(SPicture(jpeg, text).mPixels || jpeg.ReadJpegLine(line));
    EXPECT_FALSE(jpeg.GetJpegSize(text.c_str(), &width, &height, nullptr));
    EXPECT_TRUE(width == 0 && height == 0);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("Not a JPEG file"), std::string::npos);
}

TEST(CGraphicsJpeg, EveryTruncationAndByteChangeEndsCleanly)
{
    const TempFolder folder;
    const std::string path = folder / "x.jpg";
    testing::internal::CaptureStderr();
    for (const bool progressive : {false, true}) {
        const std::string whole = SampleJpeg(16, 16, 3, progressive);
        std::size_t pictures = 0;  // with grey where data are missing
        CGraphicsJpeg jpeg;
        for (std::size_t length = 0; length <= whole.size(); ++length) {
            WriteAll(path, whole.substr(0, length));
            const SPicture picture(jpeg, path);
            EXPECT_TRUE(!picture.mPixels || picture.All().size() == 768U) << length;
            pictures += picture.mPixels ? 1 : 0;
        }
        EXPECT_TRUE(pictures > 10 && pictures < whole.size() - 100);
        const std::size_t size = whole.find(progressive ? "\xff\xc2" : "\xff\xc0") + 5;
        for (std::size_t at = 0; at < whole.size(); ++at) {
            if (at >= size && at < size + 4)
                continue;  // this is about damage, not about huge pictures
            std::string changed = whole;
            changed[at] = static_cast<char>(changed[at] ^ (1 << at % 8));
            WriteAll(path, changed);
            SPicture(jpeg, path);
        }
        WriteAll(path, whole);
        EXPECT_EQ(SPicture(jpeg, path).All(), DecodeJpeg(whole));
    }
    testing::internal::GetCapturedStderr();
}

TEST(CGraphicsJpeg, WritesFilesStreamsAndAppends)
{
    const TempFolder folder;
    const std::string path = folder / "x.jpg";
    const Bytes pixels = NoisyBytes(20 * 10 * 3);
    const std::string expected = EncodeJpeg(20, 10, 3, pixels, 75);
    CGraphicsJpeg jpeg;
    EXPECT_FALSE(jpeg.WriteJpeg((folder / "no/x.jpg").c_str(), 20, 10, pixels.data(), 75));
    EXPECT_TRUE(jpeg.WriteJpeg(path.c_str(), 20, 10, pixels.data(), 75));
    EXPECT_EQ(ReadAll(path), expected);
    for (const bool append : {true, false}) {
        jpeg.mAppend = append;
        ASSERT_TRUE(jpeg.OpenJpegWrite(path.c_str(), 20, 10, 75));
        for (std::size_t row = 0; row < 10; ++row)
            EXPECT_EQ(jpeg.WriteJpegLine(pixels.data() + row * 60), 1);
        jpeg.CloseJpegWrite();
        EXPECT_EQ(jpeg.WriteJpegLine(pixels.data()), 0);
        EXPECT_EQ(ReadAll(path), append ? expected + expected : expected);
    }
    std::FILE* stream = std::fopen(path.c_str(), "wb");
    std::fputs("front", stream);
    const int size = static_cast<int>(expected.size());
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(jpeg.WriteJpeg(stream, 20, 10, pixels.data(), 75), size);
    std::fclose(stream);
    EXPECT_EQ(ReadAll(path), "front" + expected + expected);
    jpeg.write_JPEG_file(path.c_str(), 75);
    EXPECT_EQ(ReadAll(path), expected);
}

TEST(CGraphicsJpegDeathTest, EncodingErrorsEndTheProcess)
{
    const TempFolder folder;
    const std::string path = folder / "x";
    CGraphicsJpeg jpeg;
    const unsigned char pixel[3] = {};
    const auto one = testing::ExitedWithCode(1);
    EXPECT_EXIT(jpeg.write_JPEG_file((folder / "no/x").c_str(), 75), one, "can't open .*/no/x\n");
    EXPECT_EXIT(jpeg.WriteJpeg(path.c_str(), 0, 1, pixel, 75), one, "Empty JPEG");
    EXPECT_TRUE(jpeg.OpenJpegWrite(path.c_str(), 1, 2, 75));
    EXPECT_EXIT(jpeg.CloseJpegWrite(), one, "Application transferred too few scanlines");
    jpeg.WriteJpegLine(pixel);
    jpeg.WriteJpegLine(pixel);
    jpeg.CloseJpegWrite();
}
