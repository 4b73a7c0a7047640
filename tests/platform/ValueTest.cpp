// The lenient readings of values.
#include "platform/Value.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace merro::platform {
namespace {

constexpr auto kLargest = std::numeric_limits<std::int64_t>::max();
constexpr auto kSmallest = std::numeric_limits<std::int64_t>::min();

TEST(Value, aBooleanReadsAsZeroOrOne) {
    EXPECT_EQ(Value(true).integerValue(), 1);
    EXPECT_EQ(Value(false).integerValue(), 0);
    EXPECT_EQ(Value(true).doubleValue(), 1.0);
    EXPECT_EQ(Value(true).stringValue(), "1");
    EXPECT_TRUE(Value(true).boolValue());
}

TEST(Value, aNumberIsTrueWhenItIsNotZero) {
    EXPECT_TRUE(Value(2).boolValue());
    EXPECT_TRUE(Value(-1).boolValue());
    EXPECT_TRUE(Value(0.5).boolValue());
    EXPECT_FALSE(Value(0).boolValue());
    EXPECT_FALSE(Value(0.0).boolValue());
}

TEST(Value, aDoubleIsCutTowardsZero) {
    EXPECT_EQ(Value(2.9).integerValue(), 2);
    EXPECT_EQ(Value(-2.9).integerValue(), -2);
}

TEST(Value, aDoubleThatIsNoIntegerAtAllReadsAsTheNearest) {
    EXPECT_EQ(Value(1e30).integerValue(), kLargest);
    EXPECT_EQ(Value(-1e30).integerValue(), kSmallest);
    EXPECT_EQ(Value(9223372036854775808.0).integerValue(), kLargest); // 2^63, one too many
    EXPECT_EQ(Value(std::nan("")).integerValue(), 0);
}

TEST(Value, aTextIsReadAsFarAsItIsANumber) {
    EXPECT_EQ(Value("12 frames").integerValue(), 12);
    EXPECT_EQ(Value("  -7").integerValue(), -7);
    EXPECT_EQ(Value("+3").integerValue(), 3);
    EXPECT_EQ(Value("2.75 s").integerValue(), 2);
    EXPECT_EQ(Value("2.75 s").doubleValue(), 2.75);
    EXPECT_EQ(Value("1e3").doubleValue(), 1000.0);
    EXPECT_TRUE(Value("1").boolValue());
    EXPECT_FALSE(Value("0").boolValue());
}

TEST(Value, aTextThatIsNoNumberReadsAsZero) {
    for (const char* const text : {"", " ", "-", "+", "+-1", "YES", "inf", "nan", "x1"}) {
        EXPECT_EQ(Value(text).integerValue(), 0) << text;
        EXPECT_EQ(Value(text).doubleValue(), 0.0) << text;
        EXPECT_FALSE(Value(text).boolValue()) << text;
    }
}

TEST(Value, aTextOfTooManyDigitsReadsAsTheNearestInteger) {
    EXPECT_EQ(Value("99999999999999999999").integerValue(), kLargest);
    EXPECT_EQ(Value("-99999999999999999999").integerValue(), kSmallest);
}

TEST(Value, aLargeIntegerKeepsAllItsDigits) {
    EXPECT_EQ(Value(kLargest).integerValue(), kLargest);
    EXPECT_EQ(Value(kLargest).stringValue(), "9223372036854775807");
}

TEST(Value, numbersReadAsTheirShortestText) {
    EXPECT_EQ(Value(25).stringValue(), "25");
    EXPECT_EQ(Value(0.5).stringValue(), "0.5");
    EXPECT_EQ(Value("take 2").stringValue(), "take 2");
}

TEST(Value, whatIsNoNumberAndNoTextReadsAsNothing) {
    for (const Value& value : {Value(Data{1}), Value(DateRef()), Value(TimecodeValue()), Value(Array{1}),
                               Value(Dictionary{{"a", 1}})}) {
        EXPECT_EQ(value.integerValue(), 0);
        EXPECT_EQ(value.doubleValue(), 0.0);
        EXPECT_FALSE(value.boolValue());
        EXPECT_EQ(value.stringValue(), "");
    }
}

} // namespace
} // namespace merro::platform
