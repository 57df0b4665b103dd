#include "util/CStringTool.h"

#include "tests/TestSupport.h"

TEST(CStringTool, SplitsTrimsAndReadsNumbers)
{
    Names fields{",a,b,,c,"};  // a field may itself be split into the list
    EXPECT_EQ(CStringTool::SplitString(fields[0], &fields, ','), 7);
    EXPECT_EQ(CStringTool::SplitString("", &fields, ','), 8);
    EXPECT_EQ(fields, (Names{",a,b,,c,", "", "a", "b", "", "c", "", ""}));
    Names texts{"\"a\"b\"", "\"ab", "ab\"", "\"\"", "\"", ""};
    for (std::string& text : texts)
        CStringTool::TrimString(&text);
    EXPECT_EQ(texts, (Names{"a\"b", "\"ab", "ab\"", "", "", ""}));
    EXPECT_EQ(CStringTool::StringTo<int>(" \t-17x"), -17);
    EXPECT_EQ(CStringTool::StringTo<int>("2147483648"), 0);
}
