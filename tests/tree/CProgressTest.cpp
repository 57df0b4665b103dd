#include "tree/CProgress.h"

#include "tests/support/TestSupport.h"

TEST(CProgress, SaysHowFarItIsHowFastAndHowLongItTakes)
{
    const struct
    {
        const char* name;
        long done;
        long total;
        double seconds;
        const char* text;
    } rows[] = {
        {"at the start", 0, 100, 0.0, "0 of 100 pictures"},
        {"on the way", 25, 100, 10.0, "25 of 100 pictures, 3 a second, 0:30 left"},
        {"for minutes", 10, 1000, 10.0, "10 of 1000 pictures, 1 a second, 16:30 left"},
        {"for hours", 1, 10000, 1.0, "1 of 10000 pictures, 1 a second, 2:46:39 left"},
        {"at the end", 100, 100, 50.0, "100 of 100 pictures, 2 a second, 0:00 left"},
        {"beyond what was counted", 7, 5, 7.0, "7 of 7 pictures, 1 a second, 0:00 left"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(ProgressText(row.done, row.total, row.seconds), row.text) << row.name;
}
