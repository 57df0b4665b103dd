#include "util/CStringTool.h"

#include <climits>

#include "tests/support/TestSupport.h"

TEST(CStringTool, SplitStringGivesAFieldForEachSeparatorAndOneMore)
{
    const std::pair<const char*, Names> rows[] = {
        {"a,b,,c", {"a", "b", "", "c"}}, {",a,", {"", "a", ""}}, {"a;b", {"a;b"}}, {"", {""}}};
    for (const auto& [text, expected] : rows) {
        Names fields;
        CStringTool::SplitString(text, &fields, ',');
        EXPECT_EQ(fields, expected) << text;
    }
}

TEST(CStringTool, SplitStringAppendsToTheListThatMayHoldTheText)
{
    Names fields{"before", "a,b"};
    const int count = CStringTool::SplitString(fields[1], &fields, ',');
    EXPECT_EQ(fields, Names({"before", "a,b", "a", "b"}));
    EXPECT_EQ(count, 4);
}

TEST(CStringTool, TrimStringRemovesOnePairOfQuotesAroundAText)
{
    const std::pair<const char*, const char*> rows[] = {
        {"\"abc\"", "abc"}, {"\"\"a\"b\"\"", "\"a\"b\""},
        {"\"\"", ""},       {"\"", ""},
        {"", ""},           {"\"ab", "\"ab"},
        {"ab\"", "ab\""}};
    for (const auto& [before, trimmed] : rows) {
        std::string text(before);
        CStringTool::TrimString(&text);
        EXPECT_EQ(text, trimmed) << before;
    }
}

TEST(CStringTool, StringToReadsTheStartOfATextAsAStreamDoesOrGives0)
{
    const std::pair<const char*, int> rows[] = {{"42", 42},        {" \t\n\v\f\r-17x", -17},
                                                {"+5", 5},         {"2147483647", INT_MAX},
                                                {"2147483648", 0}, {"", 0},
                                                {"x", 0},          {"+", 0},
                                                {"+-5", 0},        {"- 5", 0}};
    for (const auto& [text, value] : rows)
        EXPECT_EQ(CStringTool::StringTo<int>(text), value) << text;
    EXPECT_EQ(CStringTool::StringTo<unsigned int>("4294967295 "), 4294967295U);
    EXPECT_EQ(CStringTool::StringTo<std::int64_t>("8589934592"), 8589934592);
}
