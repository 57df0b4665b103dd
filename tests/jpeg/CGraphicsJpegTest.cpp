#include "jpeg/CGraphicsJpeg.h"

#include "tests/TestSupport.h"

using CGraphicsJpegTest = FolderTest;

TEST_F(CGraphicsJpegTest, EveryTruncationAndByteChangeEndsCleanly)
{
    const std::string whole = SampleJpeg(16, 16);
    CGraphicsJpeg jpeg;
    int width = -1, height = -1, components = -1, pictures = 0;
    const auto isRead = [&](const std::string& content) {
        WriteAll(mFile, content);
        const std::unique_ptr<unsigned char[]> pixels(
            jpeg.ReadJpeg(mPath, &width, &height, &components));
        return pixels != nullptr;
    };
    EXPECT_FALSE(jpeg.ReadJpeg(mPath, &width, &height, &components) || width || height);
    OutputOf([&] {
        for (std::size_t at = 0; at < whole.size(); ++at) {
            pictures += isRead(whole.substr(0, at));  // with grey where data are missing
            std::string changed = whole;
            changed[at] = static_cast<char>(changed[at] ^ (1 << at % 8));
            isRead(changed);
        }
    });
    EXPECT_TRUE(pictures > 10 && pictures < std::ssize(whole) - 100) << pictures;
    EXPECT_TRUE(isRead(whole) && width == 16 && height == 16 && jpeg.mComponents == 3);
}

TEST_F(CGraphicsJpegTest, ClaimsBeyondAnyPictureCountAsDamaged)
{
    const std::string whole = EncodeJpeg(64, 64, 1, Noise(64 * 64), 80, true);
    const std::size_t size = whole.find("\xff\xc2") + 5, scan = whole.find("\xff\xda");
    const std::string one = whole.substr(scan, whole.find("\xff\xc4", scan) - scan);
    std::string huge = whole, crowded = whole;
    huge.replace(size, 4, "\xff\xdc\xff\xdc");
    for (int i = 0; i < CGraphicsJpeg::kMaxScans; ++i)
        crowded.insert(scan, one);
    const std::pair<std::string, std::string> rows[] = {{huge, "Premature end of input file\n"},
                                                        {crowded, "More than 500 scans\n"}};
    for (const auto& [content, message] : rows) {
        WriteAll(mFile, content);
        const std::string output = OutputOf([&] {
            int shape[3];
            EXPECT_FALSE(CGraphicsJpeg().ReadJpeg(mPath, &shape[0], &shape[1], &shape[2]));
        });
        EXPECT_TRUE(output.ends_with(message)) << output;
    }
}

TEST_F(CGraphicsJpegTest, WritesFilesAndStreamsOrEndsTheProcess)
{
    const Bytes pixels = Noise(20 * 10 * 3);
    const std::string once = EncodeJpeg(20, 10, 3, pixels, 75);
    CGraphicsJpeg jpeg;
    EXPECT_FALSE(jpeg.WriteJpeg("/no/x", 20, 10, pixels.data(), 75));
    EXPECT_TRUE(jpeg.WriteJpeg(mPath, 20, 10, pixels.data(), 75));
    EXPECT_TRUE(jpeg.WriteJpegLine(pixels.data()) == 0 && ReadAll(mFile) == once);
    std::FILE* stream = std::fopen(mPath, "wb");
    std::fputs("front", stream);
    EXPECT_EQ(jpeg.WriteJpeg(stream, 20, 10, pixels.data(), 75), std::ssize(once));
    std::fclose(stream);
    EXPECT_EQ(ReadAll(mFile), "front" + once);
    jpeg.write_JPEG_file(mPath, 75);
    EXPECT_EQ(ReadAll(mFile), once);
    const auto one = testing::ExitedWithCode(1);
    EXPECT_EXIT(jpeg.write_JPEG_file("/no/x", 75), one, "can't open /no/x\n");
    EXPECT_EXIT(jpeg.WriteJpeg(mPath, 0, 1, pixels.data(), 75), one, "Empty JPEG");
    EXPECT_TRUE(jpeg.OpenJpegWrite(mPath, 1, 1, 75));
    EXPECT_EXIT(jpeg.CloseJpegWrite(), one, "Application transferred too few scanlines");
    jpeg.WriteJpegLine(pixels.data());
    jpeg.CloseJpegWrite();
}
