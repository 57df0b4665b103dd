#include "tree/CReport.h"

#include <sstream>

#include "tests/support/TestSupport.h"

TEST(CReport, SaysWhatWasDoneAndNamesWhatNeedsCare)
{
    CReport report;
    report.AddGallery(1);
    report.AddGallery(2);
    report.AddThumbnail();
    report.AddPassedOver(3);
    report.AddMissing("b/10.jpg", "");
    report.AddMissing("b/9.jpg", "Not a JPEG file");
    report.AddDamaged("a/x.jpg", "Premature end of JPEG file", true);
    report.AddDamaged("a/y\033[31m.jpg", "Corrupt JPEG data", false);
    report.AddUnfinished("c", "locked by another program");
    report.AddFailure("galleries.html");
    std::ostringstream out;
    report.Write(out);
    EXPECT_EQ(out.str(),
              "2 galleries, 3 pictures, 1 thumbnail made\n"
              "Without a thumbnail:\n"
              "  b/9.jpg: Not a JPEG file\n"
              "  b/10.jpg\n"
              "Damaged:\n"
              "  a/x.jpg: Premature end of JPEG file (an older thumbnail stays)\n"
              "  a/y?[31m.jpg: Corrupt JPEG data\n"
              "Passed over: 3 pictures named *.jpeg; only *.jpg is taken\n"
              "Not finished:\n"
              "  c: locked by another program\n"
              "Not written:\n"
              "  galleries.html\n");
}

TEST(CReport, SaysNothingOfWhatIsWell)
{
    CReport report;
    report.AddGallery(5);
    std::ostringstream out;
    report.Write(out);
    EXPECT_EQ(out.str(), "1 gallery, 5 pictures, 0 thumbnails made\n");
}

TEST(CReport, IsCompleteUnlessSomethingCouldNotBeDone)
{
    CReport damaged;
    damaged.AddMissing("a.jpg", "");
    damaged.AddDamaged("b.jpg", "", false);
    EXPECT_TRUE(damaged.IsComplete());
    CReport unfinished;
    unfinished.AddUnfinished("c", "");
    EXPECT_FALSE(unfinished.IsComplete());
    CReport unwritten;
    unwritten.AddFailure("page");
    EXPECT_FALSE(unwritten.IsComplete());
}
