#include "app/CDraft.h"

#include "tests/support/TestSupport.h"

using CDraftTest = FolderTest;

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
