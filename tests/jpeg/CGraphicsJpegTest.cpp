#include "jpeg/CGraphicsJpeg.h"

#include "tests/support/TestSupport.h"

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
    jpeg.mReadOffset = -1;  // which can't be reached
    for (int i = 0; i < 40; ++i)
        EXPECT_FALSE(isRead(whole));
    const int next = dup(STDOUT_FILENO);
    EXPECT_LT(next, 40) << "files were left open";
    close(next);
}

TEST_F(CGraphicsJpegTest, ClaimsBeyondTheLimitsCountAsDamaged)
{
    const std::string whole = EncodeJpeg(64, 64, 1, Noise(64 * 64), 80, Progressive);
    const std::size_t size = whole.find("\xff\xc2") + 5, scan = whole.find("\xff\xda");
    const std::string one = whole.substr(scan, whole.find("\xff\xc4", scan) - scan);
    int scans = 0;
    for (std::size_t at = scan; at != std::string::npos; at = whole.find("\xff\xda", at + 1))
        ++scans;
    const std::string ends = "Premature end of input file\n";
    const std::tuple<int, int, std::size_t, int, std::string> rows[] = {
        // side, scans, bytes of the file behind the offset, the last message
        {5792, scans, 0, 1, ""},
        {5793, scans, 0, 0, ends},
        {5793, scans, 32773, 1, ""},
        {5793, scans, 32772, 0, ends},
        {65500, scans, 0, 0, ends},
        {64, 500, 0, 1, ""},
        {64, 501, 0, 0, "More than 500 scans\n"},
        {5792, 74, 0, 1, ""},
        {5792, 75, 0, 0, "More than 74 scans\n"}};
    for (const auto& [side, count, bytes, read, message] : rows) {
        std::string file = whole;
        const std::string claim{static_cast<char>(side >> 8), static_cast<char>(side & 255)};
        file.replace(size, 4, claim + claim);
        for (int i = scans; i < count; ++i)
            file.insert(scan, one);
        if (bytes > 0)
            file.resize(bytes);
        WriteAll(mFile, "front" + file);
        CGraphicsJpeg jpeg;
        jpeg.mReadOffset = 5;
        int shape[3];
        std::unique_ptr<unsigned char[]> pixels;
        const std::string output =
            OutputOf([&] { pixels.reset(jpeg.ReadJpeg(mPath, &shape[0], &shape[1], &shape[2])); });
        EXPECT_EQ(pixels != nullptr, read);
        EXPECT_TRUE(output.ends_with(message)) << side << ' ' << count << ' ' << output;
    }
    // A pipe, whose length isn't known, is believed.
    int pipes[2], shape[3];
    ASSERT_EQ(pipe(pipes), 0);
    std::string file = whole;
    file.replace(size, 4, "\x16\xa1\x16\xa1");  // 5793
    EXPECT_EQ(write(pipes[1], file.data(), file.size()), std::ssize(file));
    close(pipes[1]);
    const std::string path = "/dev/fd/" + std::to_string(pipes[0]);
    OutputOf([&] {
        const std::unique_ptr<unsigned char[]> pixels(
            CGraphicsJpeg().ReadJpeg(path.c_str(), &shape[0], &shape[1], &shape[2]));
        EXPECT_TRUE(pixels && shape[0] == 5793);
    });
    close(pipes[0]);
}

TEST_F(CGraphicsJpegTest, WhatIsOpenEndsWhereSomethingElseIsOpened)
{
    const Bytes pixels = Noise(20 * 10 * 3);
    const std::string once = EncodeJpeg(20, 10, 3, pixels, 75), other = mFolder / "other";
    WriteAll(mFile, once);
    CGraphicsJpeg jpeg;
    int width = 0, height = 0, components = 0;
    unsigned char line[60];
    short shortWidth = 0, shortHeight = 0;
    for (int i = 0; i < 2; ++i) {  // once more, and nothing is left of what was open
        EXPECT_TRUE(jpeg.OpenJpegRead(mPath, &width, &height, &components));
        EXPECT_TRUE(jpeg.GetJpegSize(mPath, &shortWidth, &shortHeight, nullptr));
        EXPECT_TRUE(shortWidth == 20 && shortHeight == 10 && jpeg.ReadJpegLine(line));
        EXPECT_EQ(jpeg.WriteJpegLine(line), 0);
        EXPECT_TRUE(jpeg.OpenJpegWrite(other.c_str(), 20, 10, 75));
        EXPECT_FALSE(jpeg.ReadJpegLine(line));
        jpeg.CloseJpegLines();
        EXPECT_EQ(jpeg.WriteJpegLine(pixels.data()), 1);
        EXPECT_TRUE(jpeg.OpenJpegRead(mPath, &width, &height, &components));
    }
    jpeg.Abandon();
    jpeg.CloseJpegWrite();
    EXPECT_FALSE(jpeg.OpenJpegWrite("/no/x", 20, 10, 75) || jpeg.WriteJpegLine(line));
}

TEST_F(CGraphicsJpegTest, SizesOf16BitsAreRightOr0)
{
    const std::tuple<int, int, bool> rows[] = {
        {32767, 2, true}, {2, 32767, true}, {32768, 2, false}, {2, 32768, false}, {0, 0, false}};
    for (const auto& [width, height, fits] : rows) {
        WriteAll(mFile, width == 0 ? "text" : SampleJpeg(width, height, 1));
        CGraphicsJpeg jpeg;
        short sides[2] = {7, 7};
        int components = 7;
        OutputOf([&, &wanted = fits] {
            EXPECT_EQ(jpeg.GetJpegSize(mPath, &sides[0], &sides[1], &components), wanted);
        });
        EXPECT_TRUE(sides[0] == (fits ? width : 0) && sides[1] == (fits ? height : 0)) << width;
        EXPECT_EQ(components, fits ? 1 : 7);
        sides[0] = sides[1] = 7;
        OutputOf([&] { delete[] jpeg.ReadJpeg(mPath, &sides[0], &sides[1], 0); });
        EXPECT_TRUE(sides[0] == static_cast<short>(width) &&
                    sides[1] == static_cast<short>(height));
        EXPECT_EQ(jpeg.mComponents, width == 0 ? 0 : 1);
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
    jpeg.write_JPEG_file(mPath, 1);
    EXPECT_EQ(ReadAll(mFile), EncodeJpeg(20, 10, 3, pixels, 1));
    jpeg.WriteJpeg(mPath, 20, 10, pixels.data(), 1);  // coarse, and yet of 8 bits a coefficient
    EXPECT_TRUE(ReadAll(mFile) == EncodeJpeg(20, 10, 3, pixels, 1));
    const auto one = testing::ExitedWithCode(1);
    EXPECT_EXIT(jpeg.write_JPEG_file("/no/x", 75), one, "can't open /no/x\n");
    EXPECT_EXIT(jpeg.WriteJpeg(mPath, 0, 1, pixels.data(), 75), one, "Empty JPEG");
    EXPECT_TRUE(jpeg.OpenJpegWrite(mPath, 1, 1, 75));
    EXPECT_EXIT(jpeg.CloseJpegWrite(), one, "Application transferred too few scanlines");
    jpeg.WriteJpegLine(pixels.data());
    jpeg.CloseJpegWrite();
}
