#include "util/CStringTool.h"

#include <gtest/gtest.h>

using Fields = std::vector<std::string>;

TEST(CStringTool, SplitStringKeepsEmptyFieldsAndAppends)
{
    const std::pair<const char*, Fields> rows[] = {{"a,b,,c", {"0", "a", "b", "", "c"}},
                                                   {"x", {"0", "x"}},
                                                   {"", {"0", ""}},
                                                   {",a,", {"0", "", "a", ""}}};
    for (const auto& [text, expected] : rows) {
        Fields fields{"0"};
        EXPECT_EQ(CStringTool::SplitString(text, &fields, ','), expected.size()) << text;
        EXPECT_EQ(fields, expected) << text;
    }
    Fields fields{"a,b,c,d,e,f,g,h"};  // a field may itself be split into the list
    EXPECT_EQ(CStringTool::SplitString(fields[0], &fields, ','), 9);
    EXPECT_EQ(fields[8], "h");
}

TEST(CStringTool, TrimStringRemovesOnePairOfQuotes)
{
    const char* rows[][2] = {{"'abc'", "abc"}, {"''", ""},       {"'abc", "'abc"}, {"abc'", "abc'"},
                             {"'a'b'", "a'b"}, {" 'a'", " 'a'"}, {"'", ""},        {"", ""}};
    for (const auto& row : rows) {  // ' stands for the double quote
        std::string text = row[0], trimmed = row[1];
        std::replace(text.begin(), text.end(), '\'', '"');
        std::replace(trimmed.begin(), trimmed.end(), '\'', '"');
        CStringTool::TrimString(&text);
        EXPECT_EQ(text, trimmed) << row[0];
    }
}

TEST(CStringTool, StringToReadsTheLeadingNumber)
{
    const std::pair<const char*, int> rows[] = {
        {"42", 42},  {" \t17", 17}, {"12abc", 12},     {"-3", -3},
        {"+5", 5},   {"", 0},       {"big", 0},        {"-", 0},
        {"0x10", 0}, {"007", 7},    {"1,5", 1},        {"1e3", 1},
        {"- 5", 0},  {"\r\n8", 8},  {"2147483648", 0}, {"99999999999999999999999", 0}};
    for (const auto& [text, number] : rows)
        EXPECT_EQ(CStringTool::StringTo<int>(text), number) << text;
    EXPECT_EQ(CStringTool::StringTo<unsigned int>("1234567890"), 1234567890U);
    EXPECT_EQ(CStringTool::StringTo<long>("-9223372036854775808"), -9223372036854775807L - 1);
}
