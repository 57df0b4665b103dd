#include "tree/Orientation.h"

#include <fcntl.h>
#include <libexif/exif-data.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <initializer_list>
#include <memory>
#include <string_view>
#include <vector>

#include "graflib/CGraflib.h"

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kStartOfImage = 0xd8;  // markers, by their second byte
constexpr int kStartOfScan = 0xda;
constexpr int kApp1 = 0xe1;
constexpr std::string_view kExifName{"Exif\0\0", 6};
/// In front of that of Exif. The largest colour profile takes 255; a file may claim any number.
constexpr int kMostSegments = 300;

struct SCloseFile
{
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePointer = std::unique_ptr<std::FILE, SCloseFile>;

struct SReleaseExif
{
    void operator()(ExifData* exif) const { exif_data_unref(exif); }
};

/// An ordinary file, opened for reading; null for anything else, a FIFO among them, for which a
/// reader would wait.
FilePointer OpenOrdinary(const char* path)
{
    const int file = open(path, O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    if (file < 0)
        return nullptr;
    struct stat status = {};
    const bool isOrdinary = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    FilePointer stream(isOrdinary ? fdopen(file, "rb") : nullptr);
    if (!stream)
        close(file);
    return stream;
}

/// A marker's second byte; EOF where no marker stands. Any number of bytes 0xff may lead to it.
int ReadMarker(std::FILE* file)
{
    int byte = std::getc(file);
    if (byte != 0xff)
        return EOF;
    while (byte == 0xff)
        byte = std::getc(file);
    return byte;
}

/// How many bytes of a segment follow its length, which counts itself; below 0 at the file's end.
int ReadLength(std::FILE* file)
{
    const int high = std::getc(file);
    const int low = std::getc(file);
    return low == EOF ? EOF : (high << 8 | low) - 2;
}

Bytes ReadBytes(std::FILE* file, int length)
{
    Bytes bytes(static_cast<std::size_t>(length));
    bytes.resize(std::fread(bytes.data(), 1, bytes.size(), file));
    return bytes;
}

bool HoldsExif(const Bytes& segment)
{
    return segment.size() >= kExifName.size() &&
           std::equal(kExifName.begin(), kExifName.end(), segment.begin());
}

/// The segment of a JPEG file that holds its Exif data; empty where there is none. libexif itself
/// would need the whole file in memory, and gives up at a segment that it doesn't expect.
Bytes ReadExif(std::FILE* file)
{
    if (ReadMarker(file) != kStartOfImage)
        return {};
    for (int i = 0; i < kMostSegments; ++i) {
        const int marker = ReadMarker(file);
        const int length = marker == EOF || marker == kStartOfScan ? EOF : ReadLength(file);
        if (length < 0)
            break;
        if (marker == kApp1) {
            Bytes segment = ReadBytes(file, length);
            if (HoldsExif(segment))
                return segment;
        } else if (std::fseek(file, length, SEEK_CUR) != 0) {
            break;
        }
    }
    return {};
}

/// The orientation that Exif data gives; 0 where it gives none. Browsers look at the first folder
/// of tags alone, and pass over a tag of another type.
int FindOrientation(const Bytes& segment)
{
    const std::unique_ptr<ExifData, SReleaseExif> exif(exif_data_new());
    if (!exif)
        return 0;
    // Otherwise it would mend the tags that it has read.
    exif_data_unset_option(exif.get(), EXIF_DATA_OPTION_FOLLOW_SPECIFICATION);
    exif_data_load_data(exif.get(), segment.data(), static_cast<unsigned>(segment.size()));
    const ExifEntry* const entry =
        exif_content_get_entry(exif->ifd[EXIF_IFD_0], EXIF_TAG_ORIENTATION);
    if (!entry || entry->format != EXIF_FORMAT_SHORT || entry->components != 1)
        return 0;
    return exif_get_short(entry->data, exif_data_get_byte_order(exif.get()));
}

}  // namespace

int ReadOrientation(const char* path)
{
    const FilePointer file = OpenOrdinary(path);
    const Bytes segment = file ? ReadExif(file.get()) : Bytes();
    const int orientation = segment.empty() ? kUpright : FindOrientation(segment);
    return orientation >= 1 && orientation <= 8 ? orientation : kUpright;
}

void TurnUpright(CGraflib& image, int orientation)
{
    const auto isOneOf = [orientation](std::initializer_list<int> orientations) {
        return std::find(orientations.begin(), orientations.end(), orientation) !=
               orientations.end();
    };
    if (isOneOf({5, 6, 7, 8}))
        image.Transpose();
    if (isOneOf({2, 3, 6, 7}))
        image.Xflip();
    if (isOneOf({3, 4, 7, 8}))
        image.Yflip();
}
