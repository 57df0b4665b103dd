#include "util/CStringTool.h"

#include <new>

#include "tests/support/TestSupport.h"
#include "util/SizeProduct.h"

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
    const std::pair<const char*, int> rows[] = {{" \t\n\v\f\r-17x", -17},
                                                {"2147483647", 2147483647},
                                                {"2147483648", 0},
                                                {"+5", 5},
                                                {"+-5", 0},
                                                {"x", 0}};
    for (const auto& [text, number] : rows)
        EXPECT_EQ(CStringTool::StringTo<int>(text), number) << text;
    EXPECT_EQ(CStringTool::StringTo<unsigned int>("4294967295 "), 4294967295U);
    EXPECT_EQ(CStringTool::StringTo<unsigned int>("4294967296"), 0U);
}

TEST(SizeProduct, RefusesWhatNoArrayCanHold)
{
    EXPECT_EQ(SizeProduct(3, 5U, std::size_t{7}), 105U);
    EXPECT_EQ(SizeProduct(PTRDIFF_MAX), static_cast<std::size_t>(PTRDIFF_MAX));
    EXPECT_THROW(SizeProduct(PTRDIFF_MAX / 2 + 1, 2), std::bad_alloc);
    EXPECT_THROW(SizeProduct(1 << 16, 1 << 16, 1 << 16, 1 << 16), std::bad_alloc);
    EXPECT_THROW(SizeProduct(-1), std::bad_alloc);
}
