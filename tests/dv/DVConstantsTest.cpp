#include "dv/DVConstants.h"

#include <gtest/gtest.h>

namespace merro {
namespace {

TEST(DVConstants, DescribeTheTwoSystems) {
    EXPECT_EQ(DIF_SEQ_COUNT_525_60, 10);
    EXPECT_EQ(DIF_SEQ_COUNT_625_50, 12);
    EXPECT_EQ(DIF_SEQ_COUNT_MIN, 10);
    EXPECT_EQ(DIF_SEQ_COUNT_MAX, 12);
    EXPECT_EQ(BLOCKS_PER_SEQUENCE, 150);
    EXPECT_EQ(DIF_BLOCK_COUNT_525_60, 1500);
    EXPECT_EQ(DIF_BLOCK_COUNT_625_50, 1800);
    EXPECT_EQ(SEQUENCE_SIZE, 12000);
    EXPECT_EQ(BLOCKS_SIZE, 80);
    EXPECT_EQ(ROW_COUNT_625_50, 576);
    EXPECT_EQ(COLUMN_COUNT_625_50, 720);
    EXPECT_EQ(ROW_COUNT_525_60, 480);
    EXPECT_EQ(COLUMN_COUNT_525_60, 720);
    EXPECT_EQ(FRAME_SIZE_525_60, 120000);
    EXPECT_EQ(FRAME_SIZE_625_50, 144000);
    EXPECT_EQ(FRAME_SIZE_525_60_50MBS, 240000);
    EXPECT_EQ(FRAME_SIZE_625_50_50MBS, 288000);
    EXPECT_EQ(TIMEBASE_525_60, 30);
    EXPECT_EQ(TIMEBASE_625_50, 25);
}

TEST(DVConstants, GiveRatesRatiosAndNames) {
    EXPECT_EQ(AVERAGE_FPS_525_60, 29.97);
    EXPECT_EQ(AVERAGE_FPS_625_50, 25.0);
    EXPECT_EQ(ASPECT_RATIO_4_3, 1.3333333333333333);
    EXPECT_EQ(ASPECT_RATIO_16_9, 1.7777777777777777);
    EXPECT_EQ(ASPECT_RATIO_525_60, ASPECT_RATIO_4_3);
    EXPECT_EQ(ASPECT_RATIO_625_50, ASPECT_RATIO_4_3);
    EXPECT_EQ(NTSC, "NTSC");
    EXPECT_EQ(PAL, "PAL");
    EXPECT_EQ(NOT_DECODED, "Not decoded");
}

TEST(AspectRatioCode, HasANameAndARatio) {
    EXPECT_EQ(DVAspectRatioNameForRatio(-1), "???");
    EXPECT_EQ(DVAspectRatioNameForRatio(0), "16/9");
    EXPECT_EQ(DVAspectRatioNameForRatio(1), "4/3");
    EXPECT_EQ(DVAspectRatioNameForRatio(2), "Not Set");
    EXPECT_EQ(DVAspectRatioNameForRatio(3), "Fixed");
    EXPECT_EQ(DVAspectRatioValueForRatio(-1), 1.0F);
    EXPECT_FLOAT_EQ(DVAspectRatioValueForRatio(0), 1.7777778F);
    EXPECT_FLOAT_EQ(DVAspectRatioValueForRatio(1), 1.3333333F);
    EXPECT_EQ(DVAspectRatioValueForRatio(2), 1.0F);
    EXPECT_EQ(DVAspectRatioValueForRatio(3), -1.0F);
}

TEST(AspectRatioCode, ThatDoesNotExistIsUnknown) {
    for (const int code : {4, -2, 1000, -1000}) {
        EXPECT_EQ(DVAspectRatioNameForRatio(code), "???") << code;
        EXPECT_EQ(DVAspectRatioValueForRatio(code), 1.0F) << code;
    }
}

TEST(AspectRatioCode, TablesStartAtCodeMinusOne) {
    EXPECT_EQ(DVAspectRatioName[0], "???");
    EXPECT_EQ(DVAspectRatioName[4], "Fixed");
    EXPECT_EQ(DVAspectRatioValues[0], 1.0F);
    EXPECT_EQ(DVAspectRatioValues[4], -1.0F);
}

} // namespace
} // namespace merro
