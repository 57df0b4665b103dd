#include "jpeg/CGraflibJpeg.h"

#include "tests/TestSupport.h"

namespace {

template <typename Call>
void ExpectThrow(Call call, int code, const std::string& info)
{
    try {
        call();
        ADD_FAILURE() << "no exception for " << info;
    } catch (const CGraflibException& e) {
        EXPECT_TRUE(e.mCode == code && e.mInfo == info) << e.mCode << ' ' << e.mInfo;
    }
}

/// What the writer must encode for pixels of 1, 3 or 4 components.
Bytes AsRgb(const Bytes& pixels, int components)
{
    Bytes rgb;
    for (std::size_t i = 0; i < pixels.size(); i += static_cast<std::size_t>(components))
        for (std::size_t k = 0; k < 3; ++k) {
            const double colour = pixels[components == 1 ? i : i + k];
            const double alpha = components == 4 ? pixels[i + 3] / 255.0 : 1.0;
            rgb.push_back(static_cast<unsigned char>(colour * alpha + 0.5));
        }
    return rgb;
}

}  // namespace

TEST(CGraflibJpeg, EveryDepthIsReadAndWrittenAsColour)
{
    const TempFolder folder;
    const std::string path = folder / "x.jpg", target = folder / "y.jpg", lines = folder / "z.jpg";
    for (const int components : {1, 3, 4}) {
        const std::string file = SampleJpeg(33, 21, components);
        const std::string expected = EncodeJpeg(33, 21, 3, AsRgb(DecodeJpeg(file), components));
        const auto isOpen = [&components](const CDataRect& image) {
            return image.mWidth == 33 && image.mHeight == 21 && image.mBits == components * 8;
        };
        WriteAll(path, file + file);
        TestImage image;
        SFileReadInfo info;
        info.mOffset = static_cast<int>(file.size());
        ASSERT_TRUE(image.Read(path.c_str(), &info) && isOpen(image));
        EXPECT_EQ(image.Samples(), DecodeJpeg(file));
        image.SetAppendMode(true);  // has no say in Write
        for (int i = 0; i < 2; ++i)
            EXPECT_TRUE(image.Write(target.c_str(), true, nullptr));
        EXPECT_EQ(ReadAll(target), expected);
        TestImage size;
        EXPECT_TRUE(size.GetSize(path.c_str(), info.mOffset, 0) && isOpen(size) && !size.mData);

        fs::remove(lines);
        TestImage in, out;
        out.SetAppendMode(true);
        for (int copy = 0; copy < 2; ++copy) {
            ASSERT_TRUE(in.OpenReadLine(path.c_str()) && isOpen(in));
            out.mWidth = in.mWidth;
            out.mHeight = in.mHeight;
            out.mBits = components == 3 ? 0 : in.mBits;  // unset, it stands for colour
            ASSERT_TRUE(out.OpenWriteLine(lines.c_str()));
            Bytes line(in.RowBytes());
            int count = 0;
            for (; in.ReadLine(line.data()); ++count)
                EXPECT_EQ(out.WriteLine(line.data()), 1);
            EXPECT_EQ(count, 21);
            in.CloseReadLine();
            out.CloseWriteLine();
        }
        EXPECT_EQ(ReadAll(lines), expected + expected);
    }
}

TEST(CGraflibJpeg, FailuresThrowAndLeaveAnEmptyRecord)
{
    const TempFolder folder;
    WriteAll(folder / "text.jpg", "not a picture");
    testing::internal::CaptureStderr();
    for (const std::string& path : {folder / "missing.jpg", folder / "text.jpg"}) {
        CGraflibJpeg image;
        const auto isEmptied = [&image] {
            const bool empty = image.mWidth == 0 && image.mHeight == 0 && image.mBits == 0;
            image.mWidth = image.mHeight = image.mBits = 24;
            return empty && !image.mData;
        };
        isEmptied();
        ExpectThrow([&] { image.Read(path.c_str(), nullptr); }, GLIB_ERR_READ, path);
        EXPECT_TRUE(isEmptied());
        ExpectThrow([&] { image.OpenReadLine(path.c_str()); }, GLIB_ERR_READ, path);
        EXPECT_TRUE(isEmptied());
        EXPECT_TRUE(!image.GetSize(path.c_str(), 0, 0) && isEmptied());
    }
    testing::internal::GetCapturedStderr();
}

TEST(CGraflibJpeg, WriteRefusesBeforeItTouchesTheFile)
{
    const TempFolder folder;
    const std::string path = folder / "x.jpg", nowhere = folder / "no/x.jpg";
    WriteAll(path, "as it was");
    const std::tuple<int, int, int, bool> rows[] = {
        {1, 1, 24, false}, {1, 1, 16, true}, {1, 1, 40, true},    {1, 1, 0, true},
        {0, 1, 24, true},  {1, 0, 24, true}, {32768, 1, 8, true}, {1, 32768, 8, true}};
    for (const auto& [width, height, bits, data] : rows) {
        TestImage image(width, height, bits, Bytes(40000));
        const std::unique_ptr<unsigned char[]> hidden(data ? nullptr : image.mData);
        image.mData = data ? image.mData : nullptr;
        ExpectThrow([&] { image.Write(path.c_str(), true, nullptr); }, GLIB_ERR_WRITE, path);
    }
    CGraflibJpeg lines;
    ExpectThrow([&] { lines.OpenWriteLine(path.c_str()); }, GLIB_ERR_WRITE, path);
    EXPECT_EQ(ReadAll(path), "as it was");
    lines.mWidth = lines.mHeight = 1;
    ExpectThrow([&] { lines.OpenWriteLine(nowhere.c_str()); }, GLIB_ERR_WRITE, nowhere);
    unsigned char line[3];
    EXPECT_FALSE(lines.ReadLine(line) || lines.WriteLine(line) != 0);
}
