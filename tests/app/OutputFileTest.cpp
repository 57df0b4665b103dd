#include "app/OutputFile.h"

#include "tests/support/TestSupport.h"

using OutputFile = FolderTest;

TEST_F(OutputFile, DraftsOfRunsAtOnceTakeEachOthersPlaceOnlyWhole)
{
    WriteAll(mFile, "old");
    {
        CDraft first(mFile), second(mFile);
        (first.mStream << "first").flush();
        (second.mStream << "second").flush();
        EXPECT_TRUE(second.PutInPlace() && ReadAll(mFile) == "second");
        EXPECT_FALSE(first.PutInPlace());  // which the other run has removed
        EXPECT_EQ(ReadAll(mFile), "second");
    }
    {
        CDraft unfinished(mFile);
        unfinished.mStream << "third";
    }
    EXPECT_EQ(ReadAll(mFile), "second");
    EXPECT_EQ(std::distance(fs::directory_iterator(mFolder), {}), 1);
}
