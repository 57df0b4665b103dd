#include "tree/NaturalOrder.h"

#include "tests/support/TestSupport.h"

TEST(NaturalOrder, EachNameComesBeforeAllThatFollowAndNotBeforeItself)
{
    const Names names = {
        "",
        "00",
        "01",
        "1",
        "1a",
        "9.jpg",
        "010.jpg",
        "10.jpg",
        "18446744073709551617",
        "99999999999999999999",
        "A",
        "a",
        "a/z",
        "a-b",
        "A1b2",
        "a01B2",
        "a1b10",
        "z",
        "é",
    };
    for (std::size_t i = 0; i < names.size(); ++i) {
        for (std::size_t j = 0; j < names.size(); ++j)
            EXPECT_EQ(IsBefore(names[i], names[j]), i < j) << names[i] << " before " << names[j];
    }
}
