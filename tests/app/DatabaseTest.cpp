#include "app/Database.h"

#include <climits>
#include <cstdint>

#include "tests/support/TestSupport.h"

using Database = FolderTest;
using Records = std::set<SFileInfo>;

/// A time as a record holds it: where a long has 32 bits, its largest value stands for later ones.
static std::string Limited(std::int64_t time)
{
    return std::to_string(std::min<std::int64_t>(time, LONG_MAX));
}

TEST_F(Database, EachLineIsARecordOrNothing)
{
    const struct
    {
        const char* name;
        std::string file;
        std::string read;  // as it is written again
    } rows[] = {
        {"records in any order", "b\t2\na\t1\n", "a\t1\nb\t2\n"},
        {"carriage returns", "a\t1\r\nb\rc\t2\n", "a\t1\nbc\t2\n"},
        {"more fields", "a\t1\tmore\t2\n", "a\t1\n"},
        {"the first of two lines of a name counts", "a\t1\na\t3\n", "a\t1\n"},
        {"a line without a TAB", "\nno tab\na\t1\n", "a\t1\n"},
        {"no time", "a\t\nb\t\t4\nc\tx\n", "a\t0\nb\t0\nc\t0\n"},
        {"an empty name", "\t7\n", "\t7\n"},
        {"a time before 1970", "a\t-5\n", "a\t-5\n"},
        {"a time after 2038", "a\t8589934592\n", "a\t" + Limited(8589934592) + "\n"},
        {"a time that nothing can hold", "a\t99999999999999999999\n", "a\t0\n"},
        {"a last line without a line feed", "a\t1\nb\t2", "a\t1\n"},
        {"an empty file", "", ""},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        WriteAll(mFile, row.file);
        Records records;
        EXPECT_TRUE(ReadDatabase(mPath, &records));
        EXPECT_EQ(DatabaseText(records), row.read);
    }
}

TEST_F(Database, RecordsInMemoryWinOverThoseOfTheFile)
{
    WriteAll(mFile, "a\t1\nb\t2\n");
    Records records{{"a", 9}};
    EXPECT_TRUE(ReadDatabase(mPath, &records));
    EXPECT_EQ(DatabaseText(records), "a\t9\nb\t2\n");
}

TEST_F(Database, NamesThatWouldBeReadAsOthersAreNotWritten)
{
    const Records records{{"tab\t", 1}, {"feed\n", 2}, {"return\r", 3}, {"good", 4}};
    EXPECT_TRUE(WriteDatabase(mPath, records));
    EXPECT_EQ(ReadAll(mFile), "good\t4\n");
}

TEST_F(Database, WhatCantBeReadWholeIsToldFromNothing)
{
    const std::string line = std::string(99, 'n') + "\t1\n";
    std::string large;
    while (large.size() <= static_cast<std::size_t>(kMostDatabaseBytes))
        large += line;
    const struct
    {
        const char* name;
        std::string path;
        bool isRead;
    } rows[] = {
        {"missing", mFolder / "missing", true},
        {"in a missing folder", mFolder / "missing/file", true},
        {"below a file", mFile + "/file", true},
        {"a folder", mFolder, true},
        {"a file that is too large", mFile, false},
    };
    WriteAll(mFile, large);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Records records{{"kept", 1}};
        EXPECT_EQ(ReadDatabase(row.path.c_str(), &records), row.isRead);
        EXPECT_EQ(DatabaseText(records), "kept\t1\n");
    }
}

TEST_F(Database, APictureIsMadeWhenItIsNewOrLaterThanItsRecord)
{
    Run("touch -d @5 x.jpg");
    const SFileInfo earlier{"x.jpg", 4};
    const SFileInfo same{"x.jpg", 5};
    const SFileInfo later{"x.jpg", 6};
    const struct
    {
        const char* name;
        const SFileInfo* record;
        bool mustMake;
    } rows[] = {
        {"new", nullptr, true},
        {"changed", &earlier, true},
        {"unchanged", &same, false},
        {"set back", &later, false},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const SPictureState state = TestPicture(mPath, row.record);
        EXPECT_EQ(state.mMustMake, row.mustMake);
        EXPECT_TRUE(state.mHasTime);
        EXPECT_EQ(state.mTime, 5);
    }
}

TEST_F(Database, APictureThatCantBeOpenedIsMadeAndHasNoTime)
{
    const SFileInfo record{"x.jpg", 5};
    const SPictureState state = TestPicture(mPath, &record);
    EXPECT_TRUE(state.mMustMake);
    EXPECT_FALSE(state.mHasTime);
}
