#include "tests/jpeg/JpegTestSupport.h"

using JpegProfileTest = FolderTest;

static constexpr std::size_t kMostPartBytes = 65519;
static constexpr std::size_t kMostBytes = CGraphicsJpeg::kMaxProfileBytes;

static Bytes ToBytes(const std::string& text)
{
    return {text.begin(), text.end()};
}

/// A profile of `size` bytes in the markers of a file, each as long as it can be.
static std::string InParts(const Bytes& profile)
{
    const std::size_t count = (profile.size() + kMostPartBytes - 1) / kMostPartBytes;
    const std::string all(profile.begin(), profile.end());
    std::string parts;
    for (std::size_t i = 0; i < count; ++i)
        parts += ProfilePart(static_cast<int>(i) + 1, static_cast<int>(count),
                             all.substr(i * kMostPartBytes, kMostPartBytes));
    return parts;
}

TEST_F(JpegProfileTest, IsPutTogetherOrLeftOut)
{
    const std::string first = ProfilePart(1, 2, "one, ");
    const std::string second = ProfilePart(2, 2, "two");
    const struct
    {
        const char* mName;
        std::string mMarkers;
        std::string mProfile;
    } rows[] = {
        {"none", "", ""},
        {"one part", ProfilePart(1, 1, "all"), "all"},
        {"two parts", first + second, "one, two"},
        {"two parts the other way round", second + first, "one, two"},
        {"an empty part", ProfilePart(1, 2, "") + second, "two"},
        {"among others of the kind",
         std::string("\xff\xe2\0\6MPF\0", 8) + first + std::string("\xff\xe2\0\2", 4) + second,
         "one, two"},
        {"another kind as long as the name of a profile",
         std::string("\xff\xe2\0\x12notaprofile\0\1\1all", 20), ""},
        {"a missing part", second, ""},
        {"a part twice", first + first + second, ""},
        {"a part of another", first + ProfilePart(2, 3, "two"), ""},
        {"part 0", ProfilePart(1, 1, "all") + ProfilePart(0, 1, "none"), ""},
        {"a part too far", ProfilePart(1, 1, "all") + ProfilePart(2, 1, "more"), ""},
        {"no parts", ProfilePart(0, 0, "all"), ""}};
    const std::string picture = SampleJpeg(9, 9);
    for (const auto& row : rows) {
        WriteAll(mFile, WithMarkers(picture, row.mMarkers));
        TestImage image;
        image.mKeepProfile = true;
        image.mProfile = {7};  // left over
        image.OpenReadLine(mPath);
        EXPECT_EQ(image.mProfile, ToBytes(row.mProfile)) << row.mName;
        image.mProfile = {7};
        image.Read(mPath, nullptr);
        EXPECT_EQ(image.mProfile, ToBytes(row.mProfile)) << row.mName;
        EXPECT_TRUE(AreSame(image.Pixels(), DecodeJpeg(picture))) << row.mName;
        EXPECT_EQ(image.mWarnings, 0) << row.mName;
    }
}

TEST_F(JpegProfileTest, IsKeptOfColourPicturesOnly)
{
    for (const auto& [name, components] : kKinds) {
        WriteAll(mFile, WithMarkers(SampleJpeg(9, 9, components), ProfilePart(1, 1, "all")));
        TestImage image;
        image.mKeepProfile = true;
        image.Read(mPath, nullptr);
        EXPECT_EQ(image.mProfile, ToBytes(components == 3 ? "all" : "")) << name;
    }
}

TEST_F(JpegProfileTest, IsLeftAloneUnlessItIsWanted)
{
    WriteAll(mFile, WithMarkers(SampleJpeg(9, 9), ProfilePart(1, 1, "all")));
    TestImage image;
    image.mProfile = {7};
    image.Read(mPath, nullptr);
    EXPECT_THAT(image.mProfile, testing::ElementsAre(7));
}

TEST_F(JpegProfileTest, IsLimitedInSize)
{
    const std::string picture = SampleJpeg(9, 9);
    for (const std::size_t size : {kMostBytes, kMostBytes + 1}) {
        const Bytes profile = Noise(static_cast<int>(size));
        WriteAll(mFile, WithMarkers(picture, InParts(profile)));
        TestImage image;
        image.mKeepProfile = true;
        image.Read(mPath, nullptr);
        EXPECT_TRUE(AreSame(image.mProfile, size == kMostBytes ? profile : Bytes()));
        image.mProfile = profile;
        EXPECT_EQ(image.CanWrite(), size == kMostBytes) << size;
        const std::string error = size == kMostBytes ? "" : "Errors: 2 " + mFile;
        const std::string whole = OutputOf([&] { image.Write(mPath, true, nullptr); });
        const std::string lines = OutputOf([&] { image.OpenWriteLine(mPath); });
        EXPECT_EQ(whole, error) << size;
        EXPECT_EQ(lines, error) << size;
    }
}

TEST_F(JpegProfileTest, IsWrittenInPartsThatTheMarkersHold)
{
    for (const std::size_t size : {std::size_t{1}, kMostPartBytes, kMostPartBytes + 1}) {
        TestImage image({1, 1, 24}, Bytes(3));
        image.mProfile = Noise(static_cast<int>(size));
        image.Write(mPath, true, nullptr);
        const std::string whole = ReadAll(mFile);
        const std::string parts = InParts(image.mProfile);
        const std::size_t at = FindMarker(whole, "\xff\xe2");
        EXPECT_TRUE(AreSame(whole.substr(at, parts.size()), parts)) << size;
        const std::string rest = whole.substr(0, at) + whole.substr(at + parts.size());
        EXPECT_TRUE(AreSame(rest, EncodeJpeg(1, 1, 3, Bytes(3)))) << size;
        image.OpenWriteLine(mPath);
        image.WriteLine(image.mData);
        image.CloseWriteLine();
        EXPECT_TRUE(AreSame(ReadAll(mFile), whole)) << size << " by lines";
    }
}
