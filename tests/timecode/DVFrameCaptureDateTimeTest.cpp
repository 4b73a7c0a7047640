#include "timecode/DVFrameCaptureDateTime.h"

#include "tests/support/PlainLocalization.h"
#include "tests/timecode/TimeZone.h"

#include <gtest/gtest.h>

namespace merro {
namespace {

using Value = DVFrameCaptureDateTime;

/// Holds the short date format, or nothing.
class ShortDateFormat : public platform::UserDefaults {
public:
    explicit ShortDateFormat(std::optional<std::string> format = {}) : m_format(std::move(format)) {}

    [[nodiscard]] std::optional<platform::Value> objectForKey(std::string_view key) const override {
        return key == "NSShortDateFormatString" && m_format ? std::optional(platform::Value(*m_format))
                                                            : std::nullopt;
    }
    void setObjectForKey(platform::Value, std::string_view) override {}
    void removeObjectForKey(std::string_view) override {}
    [[nodiscard]] platform::Observation addObserver(std::string,
                                                    std::function<void(const std::string&)>) override {
        return {};
    }

private:
    std::optional<std::string> m_format;
};

std::int64_t secondsOf(const platform::DateRef& date) {
    return std::chrono::duration_cast<std::chrono::seconds>(date->instant().time_since_epoch()).count();
}

void expectNumbers(const Value& value, int year, int month, int day, int hours, int minutes, int seconds) {
    EXPECT_EQ(value.year(), year);
    EXPECT_EQ(value.monthOfYear(), month);
    EXPECT_EQ(value.dayOfMonth(), day);
    EXPECT_EQ(value.hourOfDay(), hours);
    EXPECT_EQ(value.minuteOfHour(), minutes);
    EXPECT_EQ(value.secondOfMinute(), seconds);
}

DVFrameCaptureDateTimeRef endOf1999() {
    return Value::dateWithYearMonthDayHoursMinutesSeconds(1999, 12, 31, 23, 5, 9);
}

TEST(RecordingDate, StartsWithNothingSet) {
    const Value value;
    expectNumbers(value, 0, 0, 0, 0, 0, 0);
    EXPECT_FALSE(value.isDateSet());
    EXPECT_FALSE(value.isTimeSet());
}

TEST(RecordingDate, IsMadeFromEitherHalfOrBoth) {
    const Value time = Value::initWithHoursMinutesSeconds(7, 8, 9);
    expectNumbers(time, 0, 0, 0, 7, 8, 9);
    EXPECT_TRUE(time.isTimeSet());
    EXPECT_FALSE(time.isDateSet());
    EXPECT_FALSE(time.isFullySet());

    const Value date = Value::initWithYearMonthDay(2005, 3, 17);
    expectNumbers(date, 2005, 3, 17, 0, 0, 0);
    EXPECT_TRUE(date.isDateSet());
    EXPECT_FALSE(date.isTimeSet());
    EXPECT_FALSE(date.isFullySet());

    EXPECT_TRUE(Value::timeWithHoursMinutesSeconds(7, 8, 9)->isTimeSet());
    EXPECT_TRUE(Value::dateWithYearMonthDay(2005, 3, 17)->isDateSet());
    expectNumbers(*endOf1999(), 1999, 12, 31, 23, 5, 9);
    EXPECT_TRUE(endOf1999()->isFullySet());
}

TEST(RecordingDate, IsMadeFromAWallClock) {
    const auto value = Value::dateWithCalendarDate({2005, 13, 1, 10, 20, 30});
    expectNumbers(*value, 2006, 1, 1, 10, 20, 30);
    EXPECT_TRUE(value->isFullySet());
}

TEST(RecordingDate, IsMadeFromAnInstantInTheSystemTimeZone) {
    const test::TimeZone paris("Europe/Paris");
    const platform::Date date{platform::Date::Instant(std::chrono::seconds(1111064602))};
    const auto value = Value::dateWithNSDate(date);
    expectNumbers(*value, 2005, 3, 17, 14, 3, 22);
    EXPECT_TRUE(value->isFullySet());
}

TEST(RecordingDate, CopiesOnlyTheHalvesThatAreSet) {
    Value date = Value::initWithYearMonthDay(2005, 3, 17);
    Value unset;
    unset.setTimeWithHoursMinutesSeconds(7, 8, 9);
    date.setTimeFrom(&unset);
    date.setDateFrom(nullptr); // the date's numbers stay behind

    const auto copy = date.copy();

    expectNumbers(*copy, 0, 0, 0, 7, 8, 9);
    EXPECT_FALSE(copy->isDateSet());
    EXPECT_TRUE(copy->isTimeSet());
    expectNumbers(*endOf1999()->copy(), 1999, 12, 31, 23, 5, 9);
    EXPECT_TRUE(endOf1999()->copy()->isFullySet());
}

TEST(RecordingDate, TakesOverATimeWithItsFlag) {
    Value value = *endOf1999();
    value.setTimeFrom(nullptr);
    expectNumbers(value, 1999, 12, 31, 23, 5, 9);
    EXPECT_TRUE(value.isTimeSet());

    const Value other = Value::initWithYearMonthDay(2005, 3, 17);
    value.setTimeFrom(&other);
    expectNumbers(value, 1999, 12, 31, 0, 0, 0);
    EXPECT_FALSE(value.isTimeSet());
    EXPECT_TRUE(value.isDateSet());
}

// A host's archived dates hold the day twice; they would no longer compare equal with the month in its place.
TEST(RecordingDate, TakesOverADateWithItsDayAsTheMonth) {
    Value value;
    const Value other = Value::initWithYearMonthDay(2005, 3, 17);
    value.setDateFrom(&other);
    expectNumbers(value, 2005, 17, 17, 0, 0, 0);
    EXPECT_TRUE(value.isDateSet());
}

TEST(RecordingDate, LosesItsDateToOneThatHasNone) {
    Value value = *endOf1999();
    const Value other = Value::initWithHoursMinutesSeconds(7, 8, 9);
    value.setDateFrom(&other);
    expectNumbers(value, 0, 0, 0, 23, 5, 9);
    EXPECT_FALSE(value.isDateSet());
    EXPECT_TRUE(value.isTimeSet());
}

TEST(RecordingDate, LosesItsDateButNotTheNumbersToANullOne) {
    Value value = *endOf1999();
    value.setDateFrom(nullptr);
    expectNumbers(value, 1999, 12, 31, 23, 5, 9);
    EXPECT_FALSE(value.isDateSet());
    EXPECT_TRUE(value.isTimeSet());
}

TEST(RecordingDate, IsAnInstantOnlyWhenBothHalvesAreSet) {
    const test::TimeZone paris("Europe/Paris");
    EXPECT_EQ(secondsOf(Value::dateWithYearMonthDayHoursMinutesSeconds(2005, 3, 17, 14, 3, 22)->date()),
              1111064602);
    EXPECT_EQ(Value::initWithYearMonthDay(2005, 3, 17).date(), nullptr);
    EXPECT_EQ(Value::initWithHoursMinutesSeconds(7, 8, 9).date(), nullptr);
}

TEST(RecordingDate, StandsAtTenOClockForItsDateAlone) {
    const test::TimeZone utc("UTC");
    const Value date = Value::initWithYearMonthDay(2005, 3, 17);
    EXPECT_EQ(secondsOf(date.dateReference()), 1111053600); // 14:03:22 is 1111068202, less 4:03:22
    EXPECT_EQ(date.timeReference(), nullptr);
}

TEST(RecordingDate, StandsOnNewYearsDay2001ForItsTimeAlone) {
    const test::TimeZone utc("UTC");
    const Value time = Value::initWithHoursMinutesSeconds(7, 8, 9);
    EXPECT_EQ(secondsOf(time.timeReference()), 978307200 + 25689); // date -u -d 2001-01-01 +%s; 7 h 8 min 9 s
    EXPECT_EQ(time.dateReference(), nullptr);
    EXPECT_EQ(time.date(), nullptr);
}

TEST(RecordingDate, MovesByCalendarAmounts) {
    const auto moved = endOf1999()->dateByAddingYearsMonthsDaysHoursMinutesSeconds(1, 2, 3, 1, 60, -9);
    // year 2000, month 14, day 34, 24:65:00: month 14 is February 2001,
    // whose day 34 is 6 March; 24:65 is 01:05 of the 7th
    expectNumbers(*moved, 2001, 3, 7, 1, 5, 0);
    EXPECT_TRUE(moved->isFullySet());
    EXPECT_EQ(Value::initWithYearMonthDay(2005, 3, 17)
                  .dateByAddingYearsMonthsDaysHoursMinutesSeconds(1, 0, 0, 0, 0, 0),
              nullptr);
}

TEST(RecordingDate, CarriesOverTheEndOfAMonthWhenMoved) {
    const auto january = Value::dateWithYearMonthDayHoursMinutesSeconds(2005, 1, 31, 12, 0, 0);
    expectNumbers(*january->dateByAddingYearsMonthsDaysHoursMinutesSeconds(0, 1, 0, 0, 0, 0), 2005, 3, 3, 12,
                  0, 0);
}

TEST(RecordingDate, KeepsTheWallClockWhenMovedOverAChangeOfTheClock) {
    const test::TimeZone paris("Europe/Paris");
    const auto before = Value::dateWithYearMonthDayHoursMinutesSeconds(2005, 3, 26, 2, 30, 0);
    expectNumbers(*before->dateByAddingYearsMonthsDaysHoursMinutesSeconds(0, 0, 2, 0, 0, 0), 2005, 3, 28, 2,
                  30, 0);
    expectNumbers(*before->dateByAddingYearsMonthsDaysHoursMinutesSeconds(0, 0, 1, 0, 0, 0), 2005, 3, 27, 3,
                  30, 0);
}

TEST(RecordingDate, MeasuresSecondsSinceAnother) {
    const auto later = Value::dateWithYearMonthDayHoursMinutesSeconds(2000, 1, 1, 0, 0, 0);
    EXPECT_EQ(later->timeIntervalSinceCaptureDateTime(endOf1999().get()), 3291.0); // 54 min 51 s
    EXPECT_EQ(endOf1999()->timeIntervalSinceCaptureDateTime(later.get()), -3291.0);
}

TEST(RecordingDate, MeasuresTenThousandSecondsBackWhenAHalfIsMissing) {
    const Value dateOnly = Value::initWithYearMonthDay(1999, 12, 31);
    EXPECT_EQ(endOf1999()->timeIntervalSinceCaptureDateTime(&dateOnly), -10000.0);
    EXPECT_EQ(dateOnly.timeIntervalSinceCaptureDateTime(endOf1999().get()), -10000.0);
    EXPECT_EQ(endOf1999()->timeIntervalSinceCaptureDateTime(nullptr), -10000.0);
}

TEST(RecordingDate, IsEqualByNumbersWhateverIsSet) {
    Value cleared = *endOf1999();
    cleared.setDateFrom(nullptr);
    EXPECT_EQ(cleared, *endOf1999());
    EXPECT_EQ(cleared.hash(), endOf1999()->hash());
    for (const auto& other : {Value::dateWithYearMonthDayHoursMinutesSeconds(1998, 12, 31, 23, 5, 9),
                              Value::dateWithYearMonthDayHoursMinutesSeconds(1999, 11, 31, 23, 5, 9),
                              Value::dateWithYearMonthDayHoursMinutesSeconds(1999, 12, 30, 23, 5, 9),
                              Value::dateWithYearMonthDayHoursMinutesSeconds(1999, 12, 31, 22, 5, 9),
                              Value::dateWithYearMonthDayHoursMinutesSeconds(1999, 12, 31, 23, 4, 9),
                              Value::dateWithYearMonthDayHoursMinutesSeconds(1999, 12, 31, 23, 5, 8)})
        EXPECT_FALSE(other->isEqual(*endOf1999()));
}

TEST(RecordingDate, HashesItsNumbersWithWrapAround) {
    EXPECT_EQ(Value::initWithHoursMinutesSeconds(0, 1, 2).hash(), 33U);
    // ((((2005 x 31 + 3) x 31 + 17) x 31 + 14) x 31 + 3) x 31 + 22, modulo 2^32, by Python
    EXPECT_EQ(Value::dateWithYearMonthDayHoursMinutesSeconds(2005, 3, 17, 14, 3, 22)->hash(), 1570163486U);
}

TEST(RecordingDate, IsArchivedAsSixIntsAndTwoChars) {
    SequentialEncoder coder;
    Value::initWithYearMonthDay(2005, 3, 17).encodeWithCoder(coder);
    const std::vector<std::uint8_t> expected{'i', 0,   0,  0x07, 0xD5, 'i', 0,   0, 0,   3, 'i', 0,
                                             0,   0,   17, 'i',  0,    0,   0,   0, 'i', 0, 0,   0,
                                             0,   'i', 0,  0,    0,    0,   'c', 1, 'c', 0};
    EXPECT_EQ(coder.bytes(), expected);
}

TEST(RecordingDate, ComesBackFromTheArchive) {
    SequentialEncoder encoder;
    endOf1999()->encodeWithCoder(encoder);
    Value::initWithHoursMinutesSeconds(7, 8, 9).encodeWithCoder(encoder);

    SequentialDecoder decoder(encoder.bytes());
    const auto first = Value::initWithCoder(decoder);
    const auto second = Value::initWithCoder(decoder);

    expectNumbers(*first, 1999, 12, 31, 23, 5, 9);
    EXPECT_TRUE(first->isFullySet());
    expectNumbers(*second, 0, 0, 0, 7, 8, 9);
    EXPECT_FALSE(second->isDateSet());
    EXPECT_TRUE(second->isTimeSet());
    EXPECT_EQ(Value::initWithCoder(decoder), nullptr);
}

std::string described(const Value& value, const ShortDateFormat& defaults) {
    DateDescriptionOrder order;
    return value.description(test::PlainLocalization("tr:"), defaults, order);
}

TEST(RecordingDateDescription, FollowsTheShortDateFormat) {
    EXPECT_EQ(described(*endOf1999(), ShortDateFormat("%d/%m/%y")), "31/12/1999 - 23:05:09");
    EXPECT_EQ(described(*endOf1999(), ShortDateFormat("%e %B %Y")), "31/12/1999 - 23:05:09");
    EXPECT_EQ(described(*endOf1999(), ShortDateFormat("%m/%d/%y")), "12/31/1999 - 23:05:09");
    EXPECT_EQ(described(*endOf1999(), ShortDateFormat("")), "12/31/1999 - 23:05:09");
}

TEST(RecordingDateDescription, IsDayFirstWithoutAShortDateFormat) {
    EXPECT_EQ(described(*endOf1999(), ShortDateFormat()), "31/12/1999 - 23:05:09");
}

TEST(RecordingDateDescription, AsksForTheFormatUntilThereIsOneAndThenKeepsIt) {
    DateDescriptionOrder order;
    EXPECT_FALSE(order.isMonthFirst(ShortDateFormat()));
    EXPECT_TRUE(order.isMonthFirst(ShortDateFormat("%m/%d/%y")));
    EXPECT_TRUE(order.isMonthFirst(ShortDateFormat("%d/%m/%y")));
    EXPECT_TRUE(order.isMonthFirst(ShortDateFormat()));
}

TEST(RecordingDateDescription, SharesTheOrderWithinTheProcess) {
    const bool isMonthFirst = DateDescriptionOrder::ofProcess().isMonthFirst(ShortDateFormat("%m/%d/%y"));
    const std::string text = endOf1999()->description(test::PlainLocalization(), ShortDateFormat("%d/%m/%y"));
    EXPECT_EQ(text, isMonthFirst ? "12/31/1999 - 23:05:09" : "31/12/1999 - 23:05:09");
}

TEST(RecordingDateDescription, SaysInTheUsersLanguageWhatIsMissing) {
    const Value date = Value::initWithYearMonthDay(2005, 3, 7);
    EXPECT_EQ(described(date, ShortDateFormat()), "tr:SarnetDV/07/03/2005 - time unknown");
    EXPECT_EQ(described(date, ShortDateFormat("%m/%d/%y")), "tr:SarnetDV/03/07/2005 - time unknown");
    EXPECT_EQ(described(Value::initWithHoursMinutesSeconds(7, 8, 9), ShortDateFormat()),
              "tr:SarnetDV/date unknown - 07:08:09");
    EXPECT_EQ(described(Value(), ShortDateFormat()), "tr:SarnetDV/Undefined date and time");
}

} // namespace
} // namespace merro
