#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <functional>

#include "tests/jpeg/JpegTestSupport.h"

using testing::EndsWith;

constexpr char kBaseline[] = "\xff\xc0";
constexpr char kProgressive[] = "\xff\xc2";
constexpr char kArithmetic[] = "\xff\xc9";
constexpr char kProgressiveArithmetic[] = "\xff\xca";
constexpr char kScan[] = "\xff\xda";

using Change = std::function<void(jpeg_compress_struct&)>;

/// A picture of one colour, which decodes fast at any size that it claims.
static std::string Blank(int components, const Change& change = nullptr)
{
    return EncodeJpeg(16, 16, components, Bytes(16 * 16 * 3, 99), 80, change);
}

static void AllColours(jpeg_compress_struct& codec)
{
    Arithmetic(codec);
    codec.comp_info[0].h_samp_factor = 1;
    codec.comp_info[0].v_samp_factor = 1;
}

static void ProgressiveArithmetic(jpeg_compress_struct& codec)
{
    Arithmetic(codec);
    Progressive(codec);
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

struct JpegLimitsTest : FolderTest
{
    ~JpegLimitsTest() override { mJpeg.Abandon(); }

    /// Opens a file, which reads all scans of one that has several. What libjpeg says then.
    std::string Open(const std::string& path)
    {
        int width = 0;
        int height = 0;
        int components = 0;
        return OutputOf(
            [&] { mIsOpen = mJpeg.OpenJpegRead(path.c_str(), &width, &height, &components); });
    }

    CGraphicsJpeg mJpeg;
    bool mIsOpen = false;
};

TEST_F(JpegLimitsTest, AFileMustBeLongEnoughForALargePicture)
{
    const std::string grey = Blank(1);
    const struct
    {
        const char* mName;
        int mSide;
        std::size_t mBytes;
        bool mIsOpened;
    } rows[] = {{"the largest of any length", 5792, 1000, true},
                {"too large for any length", 5793, 1000, false},
                {"just long enough", 5793, 32773, true},
                {"a byte too short", 5793, 32772, false},
                {"the largest, and long enough", 65500, 4189698, true},
                {"the largest, and too short", 65500, 4189697, false}};
    for (const auto& row : rows) {
        std::string file = Claiming(grey, kBaseline, row.mSide, row.mSide);
        file.resize(row.mBytes);
        WriteAll(mFile, "front" + file);
        mJpeg.mReadOffset = 5;
        const std::string message = Open(mFile);
        EXPECT_EQ(mIsOpen, row.mIsOpened) << row.mName;
        EXPECT_EQ(message, row.mIsOpened ? "" : "Errors: Premature end of input file\n")
            << row.mName;
    }
}

TEST_F(JpegLimitsTest, APipeIsBelieved)
{
    int pipes[2];
    ASSERT_EQ(pipe(pipes), 0);
    const std::string file = Claiming(Blank(1), kBaseline, 5793, 5793);
    const auto written = write(pipes[1], file.data(), file.size());
    close(pipes[1]);
    ASSERT_EQ(written, std::ssize(file));
    Open("/dev/fd/" + std::to_string(pipes[0]));
    EXPECT_TRUE(mIsOpen);
    close(pipes[0]);
}

TEST_F(JpegLimitsTest, ScansAreLimitedInNumberAndByWhatTheyCost)
{
    const std::string grey = Blank(1, Progressive);
    const struct
    {
        const char* mName;
        int mSide;
        int mScans;
        std::string mMessage;
    } rows[] = {{"as many as there may be", 16, 500, ""},
                {"one too many", 16, 501, "More than 500 scans\n"},
                {"as many as a large picture may have", 5792, 74, ""},
                {"one too many for a large picture", 5792, 75, "More than 74 scans\n"}};
    for (const auto& row : rows) {
        WriteAll(mFile, WithScans(Claiming(grey, kProgressive, row.mSide, row.mSide), row.mScans));
        const std::string message = Open(mFile);
        EXPECT_EQ(mIsOpen, row.mMessage.empty()) << row.mName;
        EXPECT_THAT(message, EndsWith(row.mMessage)) << row.mName;
    }
}

TEST_F(JpegLimitsTest, ArithmeticCodingIsLimitedByWhatItMayCost)
{
    static constexpr jpeg_scan_info kFirst[] = {{1, {0}, 0, 0, 0, 0}, {1, {0}, 1, 63, 0, 0}};
    static constexpr jpeg_scan_info kRefining[] = {
        {1, {0}, 0, 0, 0, 0}, {1, {0}, 1, 63, 0, 1}, {1, {0}, 1, 63, 1, 0}};
    const std::string photo = Blank(3, Arithmetic);
    const std::string scans = Blank(3, ProgressiveArithmetic);
    const std::string colour = Blank(3, AllColours);
    std::string fewer = colour;  // its scan claims one coefficient a block, which is not believed
    fewer.replace(FindMarker(fewer, std::string("\0\x3f\0", 3)), 3, std::string(3, '\0'));
    const std::string first = Blank(1, InScans(kFirst, true));
    const std::string refining = Blank(1, InScans(kRefining, true));
    const std::string refusal = "Arithmetic coding that may take more than 5 s\n";
    const struct
    {
        const char* mName;
        std::string mFile;
        const char* mFrame;
        int mSide;
        int mScans;
        bool mIsOpened;
    } rows[] = {
        {"16 megapixels of a photograph", photo, kArithmetic, 4096, 1, true},
        {"16 megapixels, progressive", scans, kProgressiveArithmetic, 4096, 10, true},
        {"the largest in three colours", colour, kArithmetic, 3720, 1, true},
        {"too large in three colours", colour, kArithmetic, 3721, 1, false},
        {"too large, and claims to be less", fewer, kArithmetic, 3721, 1, false},
        {"as many first scans as may be", first, kProgressiveArithmetic, 2048, 11, true},
        {"a first scan too many", first, kProgressiveArithmetic, 2048, 12, false},
        {"as many refining scans as may be", refining, kProgressiveArithmetic, 2048, 38, true},
        {"a refining scan too many", refining, kProgressiveArithmetic, 2048, 39, false}};
    for (const auto& row : rows) {
        WriteAll(mFile,
                 WithScans(Claiming(row.mFile, row.mFrame, row.mSide, row.mSide), row.mScans));
        const std::string message = Open(mFile);
        EXPECT_EQ(mIsOpen, row.mIsOpened) << row.mName;
        EXPECT_THAT(message, EndsWith(row.mIsOpened ? "" : refusal)) << row.mName;
    }
}

TEST_F(JpegLimitsTest, MemoryIsLimitedUnlessTheEnvironmentSaysOtherwise)
{
    // A scan for each component makes libjpeg keep all. Only the first, a small one, is there.
    static constexpr jpeg_scan_info kScans[] = {
        {1, {1}, 0, 63, 0, 0}, {1, {0}, 0, 63, 0, 0}, {1, {2}, 0, 63, 0, 0}};
    const std::string all = Blank(3, InScans(kScans, false));
    const std::size_t second = all.find(kScan, FindMarker(all, kScan) + 1);
    const std::string one = all.substr(0, second) + "\xff\xd9";
    const struct
    {
        const char* mName;
        const char* mMemory;
        int mSide;
        bool mIsOpened;
    } rows[] = {{"150 megapixels", nullptr, 12247, true},
                {"190 megapixels", nullptr, 13784, false},
                {"more than the environment allows", "1M", 1024, false},
                {"what the environment allows", "4M", 1024, true}};
    for (const auto& row : rows) {
        std::string file = Claiming(one, kBaseline, row.mSide, row.mSide);
        file.resize(200'000);
        WriteAll(mFile, file);
        if (row.mMemory)
            setenv("JPEGMEM", row.mMemory, 1);
        Open(mFile);
        unsetenv("JPEGMEM");
        EXPECT_EQ(mIsOpen, row.mIsOpened) << row.mName;
        mJpeg.Abandon();
    }
}
