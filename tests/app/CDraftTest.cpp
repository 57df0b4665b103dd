#include "app/CDraft.h"

#include "tests/support/TestSupport.h"

using CDraftTest = FolderTest;

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
