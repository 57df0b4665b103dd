#include "jpeg/CGraflibJpeg.h"

#include <unistd.h>

#include <climits>
#include <cmath>
#include <new>

#include "tests/support/TestSupport.h"

using CGraflibJpegTest = FolderTest;

/// The pixels of a picture, decoded with libjpeg's defaults.
static Bytes DecodeJpeg(const std::string& jpeg)
{
    jpeg_error_mgr errors{};
    jpeg_decompress_struct codec{};
    codec.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&codec);
    jpeg_mem_src(&codec, reinterpret_cast<const unsigned char*>(jpeg.data()), jpeg.size());
    jpeg_read_header(&codec, TRUE);
    jpeg_start_decompress(&codec);
    const auto rowBytes = codec.output_width * static_cast<JDIMENSION>(codec.output_components);
    Bytes pixels(std::size_t{rowBytes} * codec.output_height);
    for (auto* row = pixels.data(); codec.output_scanline < codec.output_height; row += rowBytes)
        jpeg_read_scanlines(&codec, &row, 1);
    jpeg_destroy_decompress(&codec);
    return pixels;
}

TEST_F(CGraflibJpegTest, EveryDepthIsReadAndWrittenAsColour)
{
    const std::string source = mFolder / "source.jpg";
    SFileReadInfo info{0, 5, 0};
    for (const std::size_t components : {1U, 3U, 4U}) {
        const Shape shape(33, 21, static_cast<int>(components) * 8);
        const std::string file = SampleJpeg(33, 21, static_cast<int>(components));
        const Bytes pixels = DecodeJpeg(file);
        Bytes rgb;
        for (std::size_t i = 0; i < 33 * 21 * 3; ++i) {
            const unsigned char* pixel = pixels.data() + i / 3 * components;
            const double alpha = components == 4 ? pixel[3] / 255.0 : 1.0;
            rgb.push_back(
                static_cast<unsigned char>(std::lround(pixel[i % 3 % components] * alpha)));
        }
        const std::string expected = EncodeJpeg(33, 21, 3, rgb, 30);
        TestImage image, in, out;
        WriteAll(source, file);
        WriteAll(mFile, "front" + file);
        EXPECT_TRUE(in.GetSize(mPath, 5, 0) && in.GetShape() == shape);
        EXPECT_TRUE(image.Read(mPath, &info) && image.GetShape() == shape);
        EXPECT_EQ(image.Pixels(), pixels);
        image.SetAppendMode(true);  // has no say in Write
        image.mQuality = out.mQuality = 30;
        EXPECT_TRUE(image.Write(mPath, true, nullptr) && ReadAll(mFile) == expected);
        out.SetAppendMode(true);
        std::string all = expected;
        for (int copy = 0; copy < 2; ++copy) {
            EXPECT_TRUE(in.OpenReadLine(source.c_str()) && in.GetShape() == shape);
            static_cast<CDataRect&>(out) = in;
            EXPECT_TRUE(out.OpenWriteLine(mPath));
            out.GetSize("/no/x", 0, 0);  // has no say in what is open
            for (std::size_t y = 0; y < 21; ++y) {
                EXPECT_TRUE(in.ReadLine(image.mData) && out.WriteLine(&rgb[y * 33 * 3]) == 1);
                EXPECT_TRUE(std::equal(image.mData, image.mData + 33 * components,
                                       &pixels[y * 33 * components]));
            }
            EXPECT_FALSE(in.ReadLine(image.mData));
            in.CloseReadLine();
            out.CloseWriteLine();
            EXPECT_EQ(out.WriteLine(rgb.data()), 0);
            EXPECT_TRUE(ReadAll(mFile) == all.append(expected)) << components;
        }
        EXPECT_TRUE(out.OpenReadLine(source.c_str()) && out.OpenWriteLine(mPath));
        EXPECT_LT(fs::file_size(mFile), expected.size());  // the mode was that of the writer before
    }
}

TEST_F(CGraflibJpegTest, FailedReadsThrowAndLeaveAnEmptyRecord)
{
    unsigned char line[27];
    TestImage whole, lines;
    for (const char* message : {"", "Not a JPEG file: starts with 0x6e 0x6f\n"}) {
        const std::string error = std::string("Errors: ") + message + "1 " + mFile;
        TestImage size;
        for (TestImage* image : {&whole, &lines, &size})
            image->mWidth = image->mHeight = image->mBits = 24;  // left over
        EXPECT_EQ(OutputOf([&] { whole.Read(mPath, nullptr); }), error);
        EXPECT_EQ(OutputOf([&] { whole.Show(nullptr); }), "Width=0 Height=0 mBits=0 Data = NULL\n");
        EXPECT_EQ(OutputOf([&] { lines.OpenReadLine(mPath); }), error);
        OutputOf([&] { EXPECT_FALSE(size.GetSize(mPath, 0, 0)); });
        EXPECT_FALSE(lines.ReadLine(line));
        EXPECT_TRUE(lines.GetShape() == Shape() && size.GetShape() == Shape());
        WriteAll(mFile, "not a picture");
    }
    WriteAll(mFile, SampleJpeg(9, 9));
    SFileReadInfo info{0, -1, 0};
    EXPECT_EQ(OutputOf([&] { whole.Read(mPath, &info); }), "Errors: 1 " + mFile);
    // A reader closed early is neither an error nor in the way of the next.
    for (int i = 0; i < 2; ++i) {
        EXPECT_TRUE(lines.OpenReadLine(mPath) && lines.ReadLine(line));
        EXPECT_EQ(OutputOf([&] { lines.CloseReadLine(); }), "");
        EXPECT_FALSE(lines.ReadLine(line));
    }
    lines.OpenReadLine(mPath);  // left open: the image's end is its end
}

TEST_F(CGraflibJpegTest, WritesRefuseBeforeTheyTouchTheFile)
{
    // Which are written whole, and which line by line.
    const std::tuple<Shape, bool, bool> rows[] = {
        {{1, 1, 0}, false, true},     {{1, 1, 16}, false, true},     {{1, 1, 40}, false, true},
        {{0, 1, 24}, false, false},   {{1, 0, 24}, false, false},    {{-1, 1, 24}, false, false},
        {{1, -1, 8}, false, false},   {{32767, 1, 8}, true, true},   {{1, 32767, 8}, true, true},
        {{32768, 1, 8}, false, true}, {{1, 32768, 8}, false, true},  {{65500, 1, 8}, false, true},
        {{1, 65500, 8}, false, true}, {{65501, 1, 8}, false, false}, {{1, 65501, 8}, false, false}};
    const std::string error = "Errors: 2 " + mFile;
    TestImage empty({1, 1, 24});
    for (const auto& [shape, whole, lines] : rows) {
        TestImage image(shape, Bytes(70000));
        WriteAll(mFile, "as it was");
        EXPECT_EQ(image.CanWrite(), whole);
        EXPECT_EQ(OutputOf([&] { image.Write(mPath, true, nullptr); }), whole ? "" : error);
        EXPECT_EQ(ReadAll(mFile) == "as it was", !whole);
        WriteAll(mFile, "as it was");
        EXPECT_EQ(OutputOf([&] { image.OpenWriteLine(mPath); }), lines ? "" : error);
        EXPECT_EQ(ReadAll(mFile) == "as it was", !lines) << testing::PrintToString(shape);
    }
    WriteAll(mFile, "as it was");
    EXPECT_EQ(OutputOf([&] { empty.Write(mPath, true, nullptr); }), error);
    EXPECT_EQ(ReadAll(mFile), "as it was");
    EXPECT_EQ(OutputOf([&] { empty.OpenWriteLine("/no/x"); }), "Errors: 2 /no/x");
}

/// What a call writes to standard output and standard error, in the order of writing.
template <typename Call>
static std::string OneStreamOf(Call call)
{
    testing::internal::CaptureStdout();
    const int errors = dup(STDERR_FILENO);
    dup2(STDOUT_FILENO, STDERR_FILENO);
    try {
        call();
    } catch (const std::bad_alloc&) {
        std::cerr << "no memory";
    } catch (const CGraflibException& e) {
        std::cerr << e.mCode;
    }
    dup2(errors, STDERR_FILENO);
    close(errors);
    return testing::internal::GetCapturedStdout();
}

TEST_F(CGraflibJpegTest, ScalesWhileReading)
{
    // Reduced, enlarged, until footprints vanish, refused, and too large for any memory; whole and
    // cut short, so that libjpeg has a warning to give while it finishes.
    const Sizes sizes[] = {{33, 47, 7, 11},          {33, 47, 33, 47},  {50, 3, 49, 2},
                           {40, 200, 1, 1},          {9, 300, 40, 50},  {31, 64, 8, 16},
                           {2, 1, 9, 700},           {2, 3, 1001, 200}, {9, 9, 0, 5},
                           {9, 9, INT_MAX, INT_MAX}, {3, 700, 2, 2}};
    const std::string other = mFolder / "other.jpg";
    WriteAll(other, SampleJpeg(64, 64, 4));
    for (const auto& [fromWidth, fromHeight, width, height] : sizes) {
        for (const int components : {1, 3, 4, 5}) {
            if (components == 1 && width == INT_MAX)
                continue;  // an array could be as large as that
            // libjpeg takes five components only without the fifth's scans.
            const std::string file = SampleJpeg(fromWidth, fromHeight, components);
            const std::size_t fifth = file.find(std::string("\xff\xda\0\x8\1\4", 6));
            WriteAll(mFile, file.substr(0, std::min(fifth, file.size() - 1)));
            TestImage whole, lines;
            const auto plain = [&, &w = width, &h = height] {
                whole.Read(mPath, nullptr);
                whole.Show(mPath);
                whole.DownScaleFix2(w, h);
            };
            const auto byLines = [&, &w = width, &h = height] {
                lines.OpenReadLine(mPath);
                EXPECT_TRUE(lines.GetSize(other.c_str(), 0, 0));
                lines.ScaleWhileReading(mPath, w, h);
            };
            const std::string expected = OneStreamOf(plain);
            EXPECT_EQ(OneStreamOf(byLines), expected);
            EXPECT_NE(expected.find("JPEG file"), std::string::npos) << expected;
            if (expected.find("sizeof") == std::string::npos) {
                EXPECT_EQ(lines.mData, nullptr);
                continue;
            }
            EXPECT_EQ(lines.GetShape(), whole.GetShape());
            EXPECT_TRUE(lines.Pixels() == whole.Pixels()) << width << ' ' << height;
        }
    }
    // A picture of which not all rows are left.
    unsigned char row[64 * 4];
    TestImage image;
    EXPECT_TRUE(image.OpenReadLine(other.c_str()) && image.ReadLine(row));
    EXPECT_EQ(OutputOf([&] { image.ScaleWhileReading(mPath, 8, 8); }), "Errors: 1 " + mFile);
    EXPECT_EQ(image.mData, nullptr);
}
