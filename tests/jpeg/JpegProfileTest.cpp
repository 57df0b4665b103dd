#include "tests/jpeg/JpegTestSupport.h"

struct JpegProfileTest : FolderTest
{
    const std::string mPicture = SampleJpeg(9, 9);
};

static Bytes ToBytes(const std::string& text)
{
    return {text.begin(), text.end()};
}

TEST_F(JpegProfileTest, IsPutTogetherOrLeftOut)
{
    const std::string first = ProfilePart(1, 2, "one, ");
    const std::string second = ProfilePart(2, 2, "two");
    const std::tuple<const char*, std::string, std::string> rows[] = {
        {"none", "", ""},
        {"two parts the other way round", second + first, "one, two"},
        {"an empty part", ProfilePart(1, 2, "") + second, "two"},
        {"behind another of the kind", "\xff\xe2" + std::string("\0\6MPF\0", 6) + first + second,
         "one, two"},
        {"another kind as long as the name of a profile",
         "\xff\xe2" + std::string("\0\x12notaprofile\0\1\1all", 18), ""},
        {"a missing part", second, ""},
        {"a part twice", first + first + second, ""},
        {"a part of another", first + ProfilePart(2, 3, "two"), ""},
        {"part 0", first + second + ProfilePart(0, 2, "none"), ""},
        {"a part too far", first + second + ProfilePart(3, 2, "more"), ""}};
    for (const auto& [name, markers, profile] : rows) {
        WriteAll(mFile, WithMarkers(mPicture, markers));
        TestImage image;
        image.mKeepProfile = true;
        image.mProfile = {7};  // left over
        image.Read(mPath, nullptr);
        EXPECT_EQ(image.mProfile, ToBytes(profile)) << name;
        EXPECT_EQ(image.mWarnings, 0) << name;
    }
}

TEST_F(JpegProfileTest, IsKeptOfColourPicturesIfItIsWanted)
{
    const std::tuple<const char*, int, bool, std::string> rows[] = {
        {"grey", 1, true, ""},
        {"colour", 3, true, "all"},
        {"four channels", 4, true, ""},
        {"not wanted", 3, false, "left over"}};
    for (const auto& [name, components, isWanted, profile] : rows) {
        const std::string picture = SampleJpeg(9, 9, components);
        WriteAll(mFile, WithMarkers(picture, ProfilePart(1, 1, "all")));
        TestImage image;
        image.mKeepProfile = isWanted;
        image.mProfile = ToBytes("left over");
        image.OpenReadLine(mPath);
        EXPECT_EQ(image.mProfile, ToBytes(profile)) << name;
    }
}

TEST_F(JpegProfileTest, IsNotReadBeyondALimit)
{
    constexpr int kParts = 128;
    constexpr std::size_t kPartBytes = CGraphicsJpeg::kMaxProfileBytes / kParts;
    std::string markers;
    for (int part = 1; part < kParts; ++part)
        markers += ProfilePart(part, kParts, std::string(kPartBytes, 'p'));
    markers += ProfilePart(kParts, kParts, std::string(kPartBytes + 1, 'p'));
    WriteAll(mFile, WithMarkers(mPicture, markers));
    TestImage image;
    image.mKeepProfile = true;
    image.OpenReadLine(mPath);
    EXPECT_THAT(image.mProfile, testing::IsEmpty());
}

TEST_F(JpegProfileTest, IsWrittenInPartsUpToALimit)
{
    TestImage image({1, 1, 24}, Bytes(3));
    image.mProfile = Noise(CGraphicsJpeg::kMaxProfileBytes);
    image.Write(mPath, true, nullptr);
    const std::string whole = ReadAll(mFile);
    WriteRows(image, mPath);
    TestImage read;
    read.mKeepProfile = true;
    read.OpenReadLine(mPath);
    EXPECT_TRUE(AreSame(read.mProfile, image.mProfile));
    EXPECT_TRUE(AreSame(ReadAll(mFile), whole)) << "written by lines";
    image.mProfile.push_back(7);
    const std::string output = OutputOf([&] { image.OpenWriteLine(mPath); });
    EXPECT_EQ(output, "Errors: 2 " + mFile);
    EXPECT_FALSE(image.CanWrite());
}
