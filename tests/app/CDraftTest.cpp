#include "app/CDraft.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "tests/support/TestSupport.h"

using CDraftTest = FolderTest;

/// Lets files grow to so many bytes, and not beyond, as on a full disk.
class CFileLimit
{
public:
    explicit CFileLimit(rlim_t bytes)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        getrlimit(RLIMIT_FSIZE, &mBefore);
        const rlimit limit{bytes, mBefore.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    CFileLimit(const CFileLimit&) = delete;
    CFileLimit& operator=(const CFileLimit&) = delete;
    ~CFileLimit() { setrlimit(RLIMIT_FSIZE, &mBefore); }

private:
    rlimit mBefore = {};
};

/// The names of all that lies in a folder.
static Names NamesIn(const fs::path& folder)
{
    Names names;
    for (const auto& entry : fs::directory_iterator(folder))
        names.push_back(entry.path().filename());
    return names;
}

TEST_F(CDraftTest, DraftsOfTwoRunsAtOnceTakeThePlaceOnlyWhole)
{
    WriteAll(mFile, "old");
    CDraftFolder folder(mFile + ".new");
    ASSERT_EQ(folder.Open(), EReplaced::kDone);
    CDraft first(folder, mFile);
    CDraft second(folder, mFile);
    ASSERT_EQ(first.Open(), EReplaced::kDone);
    ASSERT_EQ(second.Open(), EReplaced::kDone);
    std::fputs("first", first.Stream());
    std::fputs("second", second.Stream());

    EXPECT_EQ(second.PutInPlace(), EReplaced::kDone);
    EXPECT_EQ(ReadAll(mFile), "second");
    folder.RemoveDrafts();
    EXPECT_EQ(first.PutInPlace(), EReplaced::kLost);
    EXPECT_EQ(ReadAll(mFile), "second");
}

TEST_F(CDraftTest, AnUnfinishedDraftLeavesTheOldFileAndNothingElse)
{
    WriteAll(mFile, "old");
    {
        CDraftFolder folder(mFile + ".new");
        ASSERT_EQ(folder.Open(), EReplaced::kDone);
        {
            CDraft draft(folder, mFile);
            ASSERT_EQ(draft.Open(), EReplaced::kDone);
            std::fputs("new", draft.Stream());
        }
        folder.Remove();
    }
    EXPECT_EQ(ReadAll(mFile), "old");
    EXPECT_EQ(NamesIn(mFolder), Names{"x.jpg"});
}

TEST_F(CDraftTest, WithoutRoomTheOldFileStaysWhole)
{
    const std::string old(3000, 'o');
    WriteAll(mFile, old);
    {
        const CFileLimit limit(4000);
        EXPECT_FALSE(ReplaceFile(mFile, std::string(5000, 'n')));
    }
    EXPECT_EQ(ReadAll(mFile), old);
}

TEST_F(CDraftTest, WithoutRoomANewFileIsRemoved)
{
    {
        const CFileLimit limit(4000);
        EXPECT_FALSE(ReplaceFile(mFile, std::string(5000, 'n')));
    }
    EXPECT_EQ(NamesIn(mFolder), Names{});
}

TEST_F(CDraftTest, AnUpdateLeavesAFileOfTheSameContentsAlone)
{
    WriteAll(mFile, "same");
    struct stat before = {};
    stat(mPath, &before);
    EXPECT_TRUE(UpdateFile(mFile, "same"));
    struct stat after = {};
    stat(mPath, &after);
    EXPECT_EQ(after.st_ino, before.st_ino);
    EXPECT_TRUE(UpdateFile(mFile, "news"));
    EXPECT_EQ(ReadAll(mFile), "news");
}
