#include "app/OutputFile.h"

#include "tests/support/TestSupport.h"

TEST(OutputFile, WhatIsLostShowsWhenTheFileIsClosed)
{
    std::FILE* const stream = std::fopen("/dev/full", "w");
    if (!stream)
        GTEST_SKIP() << "this system has no /dev/full";
    std::fputs("lost", stream);
    EXPECT_FALSE(CloseOutput(stream));
}
