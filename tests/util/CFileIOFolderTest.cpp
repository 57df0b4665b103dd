#include <dirent.h>
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

#include "tests/support/TestSupport.h"
#include "util/CFileIO.h"

using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

namespace {

int entriesToFailure = -1;  // never

/// The text of a new array, which is released.
std::string Take(char* text)
{
    const std::unique_ptr<char[]> owner(text);
    return text;
}

}  // namespace

/// Takes the place of the system's readdir, for a folder that fails midway as on a faulty disk.
extern "C" dirent* readdir(DIR* folder)
{
    void* known = dlsym(RTLD_NEXT, "readdir64");  // where file offsets can have 32 bits, too
    static const auto real =
        reinterpret_cast<decltype(&readdir)>(known ? known : dlsym(RTLD_NEXT, "readdir"));
    if (entriesToFailure-- != 0)
        return real(folder);
    errno = EIO;
    return nullptr;
}

/// A test with these files in its folder, and a folder.
struct CFileIOFolderTest : FolderTest
{
    CFileIOFolderTest()
    {
        for (const char* name : {"a.jpg", "B.JPG", ".jpg", "jpg", "e.jpg.bak"})
            WriteAll(mFolder / name, "");
        fs::create_directory(mFolder / "f.Jpg");
    }
};

// --- Folders -------------------------------------------------------------------------------------

TEST_F(CFileIOFolderTest, ResolveWildCardMatchesTheEndsOfNames)
{
    const std::pair<const char*, Names> rows[] = {
        {"*.jpg", {".jpg", "B.JPG", "a.jpg", "f.Jpg"}},
        {".JPG", {".jpg", "B.JPG", "a.jpg", "f.Jpg"}},
        {"*", {".", "..", ".jpg", "B.JPG", "a.jpg", "e.jpg.bak", "f.Jpg", "jpg"}},
        {"**.jpg", {}}};
    for (const auto& [pattern, matches] : rows) {
        Names names{"left over"};
        const bool isListed = CFileIO::ResolveWildCard(mFolder.c_str(), pattern, &names);
        EXPECT_TRUE(isListed) << pattern;
        EXPECT_THAT(names, UnorderedElementsAreArray(matches)) << pattern;
    }
}

TEST_F(CFileIOFolderTest, ResolveWildCardTakesElementsOfItsList)
{
    Names names{mFolder, "*.bak"};
    CFileIO::ResolveWildCard(names[0].c_str(), names[1].c_str(), &names);
    EXPECT_EQ(names, Names{"e.jpg.bak"});
}

TEST_F(CFileIOFolderTest, ResolveWildCardRefusesFoldersThatCannotBeReadToTheEnd)
{
    for (const char* folder : {"/no/where", mFolder.c_str()}) {
        Names names{"left over"};
        entriesToFailure = 3;
        const bool isListed = CFileIO::ResolveWildCard(folder, "*", &names);
        EXPECT_FALSE(isListed) << folder;
        EXPECT_THAT(names, IsEmpty()) << folder;
    }
}

TEST_F(CFileIOFolderTest, ResolveWildCardMakesAnArrayThatEndsInNullOrNone)
{
    const char* const folder = mFolder.c_str();
    int counts[] = {-1, -1};
    char** list = nullptr;
    char** none = nullptr;
    const std::string output =
        OutputOf([&] { list = CFileIO::ResolveWildCard(folder, "*.bak", &counts[0]); });
    OutputOf([&] { none = CFileIO::ResolveWildCard(folder, "*.x", &counts[1]); });
    EXPECT_EQ(output, "CFileIO::ResolveWildCard Dir=" + mFolder.string() + " Wildcard=*.bak\n");
    EXPECT_THAT(counts, testing::ElementsAre(1, 0));
    EXPECT_STREQ(list[0], "e.jpg.bak");
    EXPECT_EQ(list[1], nullptr);
    EXPECT_EQ(none, nullptr);
    CFileIO::DeleteStringList(list);
    CFileIO::DeleteStringList(none);
}

TEST_F(CFileIOFolderTest, CreateDirMakesAFolderOfMode0775OrKeepsIt)
{
    const std::string path = mFolder / "made";
    const mode_t mask = umask(0);
    CFileIO::CreateDir(path.c_str());
    umask(mask);
    EXPECT_TRUE(CFileIO::CreateDir(path.c_str()));
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0775));
}

// --- Files ---------------------------------------------------------------------------------------

TEST_F(CFileIOFolderTest, GetFileSizeIsTheLengthOrMinus1)
{
    WriteAll(mFile, "abc");
    EXPECT_EQ(CFileIO::GetFileSize(mPath), 3);
    fs::resize_file(mFile, INT_MAX);
    EXPECT_EQ(CFileIO::GetFileSize(mPath), INT_MAX);
    fs::resize_file(mFile, std::uintmax_t{INT_MAX} + 1);
    EXPECT_EQ(CFileIO::GetFileSize(mPath), -1);
    EXPECT_EQ(CFileIO::GetFileSize("/no/where"), -1);
}

TEST_F(CFileIOFolderTest, FileExistsForWhatCanBeOpened)
{
    EXPECT_TRUE(CFileIO::FileExists(mFolder.c_str()));
    EXPECT_FALSE(CFileIO::FileExists("/no/where"));
}

// --- Names and numbers ---------------------------------------------------------------------------

TEST(CFileIONames, PathsComeApartIntoFolderNameAndFormat)
{
    const std::tuple<const char*, const char*, const char*, const char*, int> rows[] = {
        {"/a/b/c.jpg", "c.jpg", "/a/b/", "/a/b/c.x", 1},
        {"x.tif", "x.tif", "x.tif", "x.x", 2},
        {"x.y.pNg", "x.y.pNg", "x.y.pNg", "x.y.x", 3},
        {"a\\b.tga", "b.tga", "a\\", "a\\b.x", 4},
        {"a.raw", "a.raw", "a.raw", "a.x", 5},
        {"a/b\\c.gif", "b\\c.gif", "a/b\\", "a/b\\c.x", 6},
        {"a\\b/c", "c", "a\\", "a\\b/c.x", 0},
        {"a/", "", "a/", "a/.x", 0},
        {".jpg", ".jpg", ".jpg", ".x", 0}};
    for (const auto& [path, name, folder, withExtension, format] : rows) {
        SCOPED_TRACE(path);
        EXPECT_EQ(Take(CFileIO::ExtractFilename(path)), name);
        EXPECT_EQ(Take(CFileIO::ExtractPath(path)), folder);
        EXPECT_EQ(Take(CFileIO::ReplaceApp(path, ".x")), withExtension);
        EXPECT_EQ(CFileIO::GuessFileFormat(path), format);
    }
}

TEST(CFileIONames, StrcmpxComparesWithoutLetterCase)
{
    EXPECT_TRUE(CFileIO::Strcmpx("aBc1", "AbC1"));
    EXPECT_FALSE(CFileIO::Strcmpx("abc", "abcd"));
    EXPECT_FALSE(CFileIO::Strcmpx("abcd", "abc"));
    EXPECT_FALSE(CFileIO::Strcmpx("[", "{"));
    EXPECT_FALSE(CFileIO::Strcmpx(nullptr, ""));
}

TEST(CFileIONumbers, Fill0PutsZerosInFrontUpTo15CharactersInItsOwnBuffer)
{
    char buffer[12];
    EXPECT_STREQ(CFileIO::Fill0(buffer, 7, 3), "007");
    EXPECT_STREQ(CFileIO::Fill0(buffer, INT_MIN, 3), "-2147483648");
    EXPECT_STREQ(CFileIO::Fill0(-5, 4), "00-5");
    EXPECT_STREQ(CFileIO::Fill0(INT_MIN, 1000), "0000-2147483648");
}

TEST(CFileIONumbers, GetIntReadsANumberOrGives0)
{
    EXPECT_EQ(CFileIO::GetInt(" 42abc"), 42);
    EXPECT_EQ(CFileIO::GetInt(nullptr), 0);
}
