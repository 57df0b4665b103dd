#include "tree/Orientation.h"

#include <sys/stat.h>

#include "tests/support/TestSupport.h"

using namespace std::string_literals;

namespace {

using Orientation = FolderTest;

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

std::string ManySegments(int count)
{
    std::string segments;
    for (int i = 0; i < count; ++i)
        segments += Segment('\xe2', "profile");
    return segments;
}

}  // namespace

TEST(TurnUpright, ShowsEveryOrientationAsBrowsersDo)
{
    // Of a picture that is stored as 3 x 2 pixels, abc above def.
    const std::tuple<int, int, int, std::string> rows[] = {
        {1, 3, 2, "abcdef"}, {2, 3, 2, "cbafed"}, {3, 3, 2, "fedcba"}, {4, 3, 2, "defabc"},
        {5, 2, 3, "adbecf"}, {6, 2, 3, "daebfc"}, {7, 2, 3, "fcebda"}, {8, 2, 3, "cfbead"}};
    for (const auto& [orientation, width, height, pixels] : rows) {
        SCOPED_TRACE("orientation " + std::to_string(orientation));
        TestImage image({3, 2, 8}, {'a', 'b', 'c', 'd', 'e', 'f'});
        TurnUpright(image, orientation);
        EXPECT_EQ(image.GetShape(), Shape(width, height, 8));
        EXPECT_EQ(image.Pixels(), Bytes(pixels.begin(), pixels.end()));
    }
}

TEST_F(Orientation, IsThatOfTheFirstExifData)
{
    const std::string start = "\xff\xd8";
    const std::tuple<const char*, std::string, int> rows[] = {
        {"last value", start + ExifOrientation(8), 8},
        {"above the values", start + ExifOrientation(9), 1},
        {"big endian",
         start + Segment('\xe1',
                         "Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06"
                         "\0\0\0\0\0\0"s),
         6},
        {"a longer type", start + Exif("\x12\x01\x04\0\x01\0\0\0\x06\0\0\0"s), 1},
        {"two values", start + Exif("\x12\x01\x03\0\x02\0\0\0\x06\0\x06\0"s), 1},
        {"the first of two", start + ExifOrientation(3) + ExifOrientation(6), 3},
        {"behind other segments",
         start + Segment('\xe1', "http:") + Segment('\xdb', "") + "\xff\xff" + ExifOrientation(6),
         6},
        {"behind a colour profile", start + ManySegments(255) + ExifOrientation(6), 6},
        {"behind any number of segments", start + ManySegments(9999) + ExifOrientation(6), 1},
        {"behind the start of the picture", start + Segment('\xda', "") + ExifOrientation(6), 1},
        {"in a file that is cut there", (start + ExifOrientation(6)).substr(0, 30), 1},
        {"a length below its own", start + "\xff\xe0\0\x01"s + ExifOrientation(6), 1}};
    for (const auto& [name, content, orientation] : rows) {
        WriteAll(mFile, content);
        EXPECT_EQ(ReadOrientation(mPath), orientation) << name;
    }
}

TEST_F(Orientation, IsNoneOfWhatIsNoOrdinaryFile)
{
    EXPECT_EQ(ReadOrientation("/no/where"), kUpright);
    EXPECT_EQ(ReadOrientation(mFolder.c_str()), kUpright) << "a folder";
    ASSERT_EQ(mkfifo(mPath, 0600), 0);
    EXPECT_EQ(ReadOrientation(mPath), kUpright) << "a FIFO";  // or the test never ends
}
