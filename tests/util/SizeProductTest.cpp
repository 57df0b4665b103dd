#include "util/SizeProduct.h"

#include "tests/support/TestSupport.h"

TEST(SizeProduct, MultipliesFactorsOfAnyType)
{
    EXPECT_EQ(SizeProduct(3, 5U, std::size_t{7}), 105U);
    EXPECT_EQ(SizeProduct(PTRDIFF_MAX), static_cast<std::size_t>(PTRDIFF_MAX));
    EXPECT_EQ(SizeProduct(0, PTRDIFF_MAX, PTRDIFF_MAX), 0U);
}

TEST(SizeProduct, RefusesWhatNoArrayCanHoldAndNegativeFactors)
{
    EXPECT_THROW(SizeProduct(PTRDIFF_MAX / 2 + 1, 2), std::bad_alloc);
    EXPECT_THROW(SizeProduct(1 << 16, 1 << 16, 1 << 16, 1 << 16), std::bad_alloc);
    EXPECT_THROW(SizeProduct(std::size_t{PTRDIFF_MAX} + 1), std::bad_alloc);
    EXPECT_THROW(SizeProduct(0, -1), std::bad_alloc);
    EXPECT_THROW(SizeProduct(-2, -2), std::bad_alloc);
}
