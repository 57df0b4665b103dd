#include "app/ReplaceFile.h"

#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>

#include "tests/support/TestSupport.h"

using ReplaceFileTest = FolderTest;

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

TEST_F(ReplaceFileTest, WithoutRoomTheOldFileStaysWhole)
{
    const std::string old(3000, 'o');
    WriteAll(mFile, old);
    {
        const CFileLimit limit(4000);
        EXPECT_FALSE(ReplaceFile(mFile, std::string(5000, 'n')));
    }
    EXPECT_EQ(ReadAll(mFile), old);
}

TEST_F(ReplaceFileTest, WithoutRoomANewFileIsRemoved)
{
    {
        const CFileLimit limit(4000);
        EXPECT_FALSE(ReplaceFile(mFile, std::string(5000, 'n')));
    }
    EXPECT_TRUE(fs::is_empty(mFolder));
}

TEST_F(ReplaceFileTest, OnlyAFileOfJustThisTextHasItAsContents)
{
    const struct
    {
        const char* name;
        std::string contents;
        std::string text;
        bool expected;
    } rows[] = {
        {"the same", "page", "page", true},
        {"nothing", "", "", true},
        {"more in the file", "pages", "page", false},
        {"less in the file", "pag", "page", false},
        {"another letter", "pape", "page", false},
        {"the same, in more than one piece", std::string(65537, 'p'), std::string(65537, 'p'),
         true},
        {"more behind the first piece", std::string(65537, 'p'), std::string(65536, 'p'), false},
    };
    for (const auto& row : rows) {
        WriteAll(mFile, row.contents);
        EXPECT_EQ(HasContents(mFile, row.text), row.expected) << row.name;
    }
}
