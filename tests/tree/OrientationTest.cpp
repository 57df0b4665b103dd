#include "tree/Orientation.h"

#include <sys/stat.h>

#include <string_view>

#include "tests/support/TestSupport.h"

using namespace std::string_literals;

namespace {

/// What is seen of a picture of 3 x 2 pixels, abc above def, that is stored in this orientation.
struct SOrientationRow
{
    int mOrientation;
    int mWidth;
    int mHeight;
    std::string_view mPixels;
};

const SOrientationRow kRows[] = {{1, 3, 2, "abcdef"}, {2, 3, 2, "cbafed"}, {3, 3, 2, "fedcba"},
                                 {4, 3, 2, "defabc"}, {5, 2, 3, "adbecf"}, {6, 2, 3, "daebfc"},
                                 {7, 2, 3, "fcebda"}, {8, 2, 3, "cfbead"}, {0, 3, 2, "abcdef"},
                                 {9, 3, 2, "abcdef"}};

/// A segment of a JPEG file with a marker, in which its own length counts.
std::string Segment(char marker, const std::string& content)
{
    const std::size_t length = content.size() + 2;
    return "\xff"s + marker + static_cast<char>(length >> 8) + static_cast<char>(length) + content;
}

/// A segment of Exif data whose only tag is this one of 12 bytes, in little endian order.
std::string Exif(const std::string& tag)
{
    return Segment('\xe1', "Exif\0\0II*\0\x08\0\0\0\x01\0"s + tag + "\0\0\0\0"s);
}

std::string ExifOrientation(char number)
{
    return Exif("\x12\x01\x03\0\x01\0\0\0"s + number + "\0\0\0"s);
}

const std::string kStart = "\xff\xd8";
const std::string kScan = Segment('\xda', std::string(10, '\0')) + "some data";

struct SFileRow
{
    const char* mName;
    std::string mContent;
    int mOrientation;
};

std::string ManySegments(int count)
{
    std::string segments;
    for (int i = 0; i < count; ++i)
        segments += Segment('\xe2', "profile");
    return segments;
}

const SFileRow kFiles[] = {
    {"last value", kStart + ExifOrientation(8) + kScan, 8},
    {"below the values", kStart + ExifOrientation(0) + kScan, 1},
    {"above the values", kStart + ExifOrientation(9) + kScan, 1},
    {"big endian",
     kStart + Segment('\xe1',
                      "Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0"s),
     6},
    {"a longer type", kStart + Exif("\x12\x01\x04\0\x01\0\0\0\x06\0\0\0"s) + kScan, 1},
    {"two values", kStart + Exif("\x12\x01\x03\0\x02\0\0\0\x06\0\x06\0"s) + kScan, 1},
    {"the first of two", kStart + ExifOrientation(3) + ExifOrientation(6) + kScan, 3},
    {"behind other segments",
     kStart + Segment('\xe0', "JFIF") + Segment('\xe1', "http:") + Segment('\xdb', "") +
         "\xff\xff" + ExifOrientation(6),
     6},
    {"behind a colour profile", kStart + ManySegments(255) + ExifOrientation(6) + kScan, 6},
    {"behind any number of segments", kStart + ManySegments(9999) + ExifOrientation(6) + kScan, 1},
    {"behind the start of the picture", kStart + Segment('\xda', "") + ExifOrientation(6), 1},
    {"in a file that is cut there", (kStart + ExifOrientation(6)).substr(0, 30), 1},
    {"a length below its own", kStart + "\xff\xe0\0\x01"s + ExifOrientation(6), 1},
};

using Orientation = FolderTest;

}  // namespace

TEST(TurnUpright, ShowsEveryOrientationAsBrowsersDo)
{
    const std::string_view stored = "abcdef";
    for (const SOrientationRow& row : kRows) {
        SCOPED_TRACE("orientation " + std::to_string(row.mOrientation));
        TestImage image({3, 2, 8}, Bytes(stored.begin(), stored.end()));
        TurnUpright(image, row.mOrientation);
        EXPECT_EQ(image.GetShape(), Shape(row.mWidth, row.mHeight, 8));
        EXPECT_EQ(std::string_view(reinterpret_cast<char*>(image.mData), 6), row.mPixels);
    }
}

TEST_F(Orientation, IsThatOfTheFirstExifData)
{
    for (const SFileRow& row : kFiles) {
        WriteAll(mFile, row.mContent);
        EXPECT_EQ(ReadOrientation(mPath), row.mOrientation) << row.mName;
    }
}

TEST_F(Orientation, IsNoneOfWhatIsNoOrdinaryFile)
{
    EXPECT_EQ(ReadOrientation(mPath), kUpright) << "a missing file";
    EXPECT_EQ(ReadOrientation(mFolder.c_str()), kUpright) << "a folder";
    ASSERT_EQ(mkfifo(mPath, 0600), 0);
    EXPECT_EQ(ReadOrientation(mPath), kUpright) << "a FIFO";  // or the test never ends
    std::fstream writer(mFile);
    writer << kStart << ExifOrientation(6) << std::flush;
    EXPECT_EQ(ReadOrientation(mPath), kUpright) << "a FIFO with a picture in it";
}
