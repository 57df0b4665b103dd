#include <cstdlib>
#include <functional>

#include "tests/jpeg/JpegTestSupport.h"

using Change = std::function<void(jpeg_compress_struct&)>;

constexpr char kScan[] = "\xff\xda";
constexpr int kSide = 16;

/// A picture of one colour, which decodes fast at any size that it claims.
static std::string Blank(int components, const Change& change = nullptr)
{
    return EncodeJpeg(kSide, kSide, components, Bytes(kSide * kSide * 3, 99), 80, change);
}

/// The picture with a header that claims another size.
static std::string Claiming(std::string blank, int side)
{
    const std::size_t at = blank.find(std::string("\x8\0\x10\0\x10", 5)) + 1;
    const std::string bytes{static_cast<char>(side >> 8), static_cast<char>(side)};
    return blank.replace(at, 4, bytes + bytes);
}

static std::string WithLength(std::string jpeg, std::size_t length)
{
    jpeg.resize(length);
    return jpeg;
}

/// The file with its last scan once more, and again, until it has `count` scans.
static std::string WithScans(std::string jpeg, int count)
{
    const std::size_t last = jpeg.rfind(kScan);
    const std::size_t end = jpeg.size() - 2;  // where the marker is that ends it
    const std::string scan = jpeg.substr(last, end - last);
    for (std::size_t at = 0; (at = jpeg.find(kScan, at)) != std::string::npos; ++at)
        --count;
    for (; count > 0; --count)
        jpeg.insert(end, scan);
    return jpeg;
}

/// Makes pictures in scans of one's own.
template <std::size_t count>
Change InScans(const jpeg_scan_info (&scans)[count], bool arithmetic)
{
    return [&scans, arithmetic](jpeg_compress_struct& codec) {
        codec.arith_code = arithmetic;
        codec.scan_info = scans;
        codec.num_scans = static_cast<int>(count);
    };
}

struct JpegLimitsTest : FolderTest
{
    struct SCase
    {
        const char* mName;
        std::string mJpeg;
        std::string mMessage;  // that is given of one that is refused
    };

    ~JpegLimitsTest() override { mJpeg.Abandon(); }

    /// Opens each file, which reads all scans of one that has several.
    void ExpectLimits(const std::vector<SCase>& cases)
    {
        for (const auto& row : cases) {
            WriteAll(mFile, row.mJpeg);
            bool isOpen = false;
            int size = 0;
            const std::string message =
                OutputOf([&] { isOpen = mJpeg.OpenJpegRead(mPath, &size, &size, &size); });
            EXPECT_EQ(isOpen, row.mMessage.empty()) << row.mName << ": whether it is opened";
            EXPECT_THAT(message, testing::EndsWith(row.mMessage)) << row.mName;
        }
    }

    CGraphicsJpeg mJpeg;
};

TEST_F(JpegLimitsTest, AFileMustBeLongEnoughForALargePicture)
{
    const std::string message = "Errors: Premature end of input file\n";
    const std::string larger = "front" + Claiming(Blank(1), 5793);
    const std::string largest = "front" + Claiming(Blank(1), 65500);
    mJpeg.mReadOffset = 5;
    ExpectLimits({{"the largest of any length", "front" + Claiming(Blank(1), 5792), ""},
                  {"too large for any length", larger, message},
                  {"just long enough", WithLength(larger, 5 + 32773), ""},
                  {"a byte too short", WithLength(larger, 5 + 32772), message},
                  {"the largest, and long enough", WithLength(largest, 5 + 4189698), ""}});
}

TEST_F(JpegLimitsTest, ScansAreLimitedInNumberAndByWhatTheyCost)
{
    const std::string small = Blank(1, Progressive);
    const std::string large = Claiming(small, 5792);
    ExpectLimits({{"as many as there may be", WithScans(small, 500), ""},
                  {"one too many", WithScans(small, 501), "More than 500 scans\n"},
                  {"as many as a large picture may have", WithScans(large, 74), ""},
                  {"one too many for it", WithScans(large, 75), "More than 74 scans\n"}});
}

TEST_F(JpegLimitsTest, ArithmeticCodingIsLimitedByWhatItMayCost)
{
    static constexpr jpeg_scan_info kFirst[] = {{1, {0}, 0, 0, 0, 0}, {1, {0}, 1, 63, 0, 0}};
    static constexpr jpeg_scan_info kRefining[] = {
        {1, {0}, 0, 0, 0, 0}, {1, {0}, 1, 63, 0, 1}, {1, {0}, 1, 63, 1, 0}};
    const std::string message = "Arithmetic coding that may take more than 5 s\n";
    const std::string colour = Blank(3, Arithmetic);
    std::string fewer = Claiming(colour, 5265);
    fewer.replace(fewer.find(std::string("\0\x3f\0", 3)), 3, std::string(3, '\0'));
    const std::string first = Claiming(Blank(1, InScans(kFirst, true)), 2048);
    const std::string refining = Claiming(Blank(1, InScans(kRefining, true)), 2048);
    ExpectLimits({{"the largest in one scan", Claiming(colour, 5264), ""},
                  {"too large", Claiming(colour, 5265), message},
                  {"too large, and claims one coefficient a block", fewer, message},
                  {"as many first scans as may be", WithScans(first, 11), ""},
                  {"a first scan too many", WithScans(first, 12), message},
                  {"as many refining scans as may be", WithScans(refining, 38), ""},
                  {"a refining scan too many", WithScans(refining, 39), message}});
}

TEST_F(JpegLimitsTest, MemoryIsLimitedUnlessTheEnvironmentSaysOtherwise)
{
    // A scan for each component makes libjpeg keep all. Only the first, a small one, is there.
    static constexpr jpeg_scan_info kScans[] = {
        {1, {1}, 0, 63, 0, 0}, {1, {0}, 0, 63, 0, 0}, {1, {2}, 0, 63, 0, 0}};
    const std::string all = Blank(3, InScans(kScans, false));
    const std::string one = all.substr(0, all.find(kScan, all.find(kScan) + 1)) + "\xff\xd9";
    const auto claiming = [&](int side) { return WithLength(Claiming(one, side), 200'000); };
    const std::string message = "\n";  // versions of libjpeg have different words for it
    ExpectLimits(
        {{"150 megapixels", claiming(12247), ""}, {"190 megapixels", claiming(13784), message}});
    setenv("JPEGMEM", "1M", 1);
    ExpectLimits({{"more than the environment allows", claiming(1024), message}});
    unsetenv("JPEGMEM");
}
