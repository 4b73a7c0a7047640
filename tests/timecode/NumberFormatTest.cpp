#include "timecode/NumberFormat.h"

#include <gtest/gtest.h>

namespace merro {
namespace {

TEST(FormatNumbers, SetsNumbersIntoTheTextInOrder) {
    EXPECT_EQ(formatNumbers("%02d/%02d/%04d", {1, 12, 99}), "01/12/0099");
    EXPECT_EQ(formatNumbers("%d and %3d", {2005, 7}), "2005 and   7");
    EXPECT_EQ(formatNumbers("%02d", {2005}), "2005");
}

TEST(FormatNumbers, PutsTheSignBeforeTheZeros) {
    EXPECT_EQ(formatNumbers("%04d %4d", {-5, -5}), "-005   -5");
}

TEST(FormatNumbers, LeavesAloneWhatATranslationGotWrong) {
    EXPECT_EQ(formatNumbers("%02d %02d", {1}), "01 %02d");
    EXPECT_EQ(formatNumbers("%s %n %d%% %", {1}), "%s %n 1% %");
    EXPECT_EQ(formatNumbers("%99999999d", {1}), "%99999999d");
    EXPECT_EQ(formatNumbers("", {1}), "");
}

} // namespace
} // namespace merro
