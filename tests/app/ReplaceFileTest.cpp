#include "app/ReplaceFile.h"

#include <sys/resource.h>

#include <csignal>

#include "tests/support/TestSupport.h"

using ReplaceFileTest = FolderTest;

TEST_F(ReplaceFileTest, WithoutRoomANewFileIsRemoved)
{
    std::signal(SIGXFSZ, SIG_IGN);
    rlimit before = {};
    getrlimit(RLIMIT_FSIZE, &before);
    const rlimit little{4000, before.rlim_max};
    setrlimit(RLIMIT_FSIZE, &little);
    const bool isWritten = ReplaceFile(mFile, std::string(5000, 'n'));
    setrlimit(RLIMIT_FSIZE, &before);
    EXPECT_FALSE(isWritten);
    EXPECT_TRUE(fs::is_empty(mFolder));
}

TEST_F(ReplaceFileTest, AShorterFileIsOverwrittenWhereSomebodysFileForbidsDrafts)
{
    const std::string inTheWay = DraftFolderOf(mFile);
    WriteAll(inTheWay, "somebody's");
    WriteAll(mFile, "the old text");
    const bool isReplaced = ReplaceFile(mFile, "new");
    EXPECT_TRUE(isReplaced);
    EXPECT_EQ(ReadAll(mFile), "new");
    EXPECT_EQ(ReadAll(inTheWay), "somebody's");
}

TEST_F(ReplaceFileTest, OnlyAFileOfJustThisTextHasItAsContents)
{
    const std::string piece(65536, 'p');  // as much as is compared at a time
    const std::tuple<const char*, std::string, std::string, bool> rows[] = {
        {"the same, in two pieces", piece + "age", piece + "age", true},
        {"nothing", "", "", true},
        {"less in the file", "pag", "page", false},
        {"another letter", "pape", "page", false},
        {"more behind the first piece", piece + "p", piece, false}};
    for (const auto& [name, contents, text, expected] : rows) {
        WriteAll(mFile, contents);
        EXPECT_EQ(HasContents(mFile, text), expected) << name;
    }
}
