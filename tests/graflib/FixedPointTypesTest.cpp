#include "graflib/FixedPointTypes.h"

#include "graflib/PixelTypes.h"
#include "tests/support/TestSupport.h"

TEST(MakeScaleParams, HoldsStepsAndAreaWithTheirFractions)
{
    const CDataRect source{nullptr, 3, 5, 8};
    SPixel1i<unsigned char> pixel{};
    const auto params = MakeScaleParams<8>(source, &pixel, 2, 3);
    EXPECT_EQ(params.mSrcWidth, 3);
    EXPECT_EQ(params.mSrcHeight, 5);
    EXPECT_EQ(params.mStepX.mValue, 384);  // 1.5 * 256
    EXPECT_EQ(params.mStepY.mValue, 426);  // 5 / 3 * 256, cut
    EXPECT_EQ(params.mArea.mValue, 639);   // 1.5 * 426
    EXPECT_EQ(params.mDest, &pixel);
}
