#include "tree/CProgress.h"

#include "tests/support/TestSupport.h"

TEST(CProgress, SaysHowFarItIsHowFastAndHowLongItTakes)
{
    const std::tuple<const char*, long, long, double, const char*> rows[] = {
        {"at the start", 0, 100, 0.0, "0 of 100 pictures"},
        {"on the way", 25, 100, 10.0, "25 of 100 pictures, 3 a second, 0:30 left"},
        {"for hours", 1, 10000, 1.0, "1 of 10000 pictures, 1 a second, 2:46:39 left"},
        {"beyond what was counted", 7, 5, 7.0, "7 of 7 pictures, 1 a second, 0:00 left"}};
    for (const auto& [name, done, total, seconds, text] : rows)
        EXPECT_EQ(ProgressText(done, total, seconds), text) << name;
}
