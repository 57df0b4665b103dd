#include "util/CStringTool.h"

#include "tests/support/TestSupport.h"

using testing::ElementsAre;

namespace {

Names Split(const std::string& text)
{
    Names fields;
    CStringTool::SplitString(text, &fields, ',');
    return fields;
}

std::string Trimmed(std::string text)
{
    CStringTool::TrimString(&text);
    return text;
}

}  // namespace

TEST(CStringTool, SplitStringGivesAFieldForEachSeparatorAndOneMore)
{
    EXPECT_THAT(Split("a,b,,c"), ElementsAre("a", "b", "", "c"));
    EXPECT_THAT(Split(",a,"), ElementsAre("", "a", ""));
    EXPECT_THAT(Split(","), ElementsAre("", ""));
    EXPECT_THAT(Split("a;b"), ElementsAre("a;b"));
    EXPECT_THAT(Split(""), ElementsAre(""));
}

TEST(CStringTool, SplitStringAppendsToTheListThatMayHoldTheText)
{
    Names fields{"before", "a,b"};
    const int count = CStringTool::SplitString(fields[1], &fields, ',');
    EXPECT_THAT(fields, ElementsAre("before", "a,b", "a", "b"));
    EXPECT_EQ(count, 4);
}

TEST(CStringTool, TrimStringRemovesOnePairOfQuotes)
{
    EXPECT_EQ(Trimmed("\"abc\""), "abc");
    EXPECT_EQ(Trimmed("\"\"a\"b\"\""), "\"a\"b\"");
    EXPECT_EQ(Trimmed("\"\""), "");
    EXPECT_EQ(Trimmed("\""), "");
}

TEST(CStringTool, TrimStringKeepsTextsThatQuotesDoNotSurround)
{
    for (const char* text : {"", "abc", "\"ab", "ab\"", " \"ab\""})
        EXPECT_EQ(Trimmed(text), text);
}

TEST(CStringTool, StringToReadsTheStartOfATextAsAStreamDoes)
{
    EXPECT_EQ(CStringTool::StringTo<int>("42"), 42);
    EXPECT_EQ(CStringTool::StringTo<int>(" \t\n\v\f\r-17x"), -17);
    EXPECT_EQ(CStringTool::StringTo<int>("12 34"), 12);
    EXPECT_EQ(CStringTool::StringTo<int>("+5"), 5);
    EXPECT_EQ(CStringTool::StringTo<int>("2147483647"), 2147483647);
    EXPECT_EQ(CStringTool::StringTo<unsigned int>("4294967295 "), 4294967295U);
    EXPECT_EQ(CStringTool::StringTo<std::int64_t>("8589934592"), 8589934592);
}

TEST(CStringTool, StringToGives0WhereThereIsNoValue)
{
    for (const char* text : {"", "x", "+", "+-5", "++5", "- 5", "2147483648"})
        EXPECT_EQ(CStringTool::StringTo<int>(text), 0) << text;
    EXPECT_EQ(CStringTool::StringTo<unsigned int>("4294967296"), 0U);
}
