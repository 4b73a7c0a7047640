// The instants were worked out with Python's zoneinfo.
#include "platform/Date.h"
#include "tests/timecode/TimeZone.h"

#include <gtest/gtest.h>

#include <thread>

namespace merro::platform {
namespace {

using test::TimeZone;

std::int64_t secondsOf(const CalendarFields& fields) {
    return std::chrono::duration_cast<std::chrono::seconds>(
               dateFromCalendar(fields)->instant().time_since_epoch())
        .count();
}

CalendarFields fieldsAt(std::int64_t seconds, std::int64_t microseconds = 0) {
    return calendarFromDate(
        Date(Date::Instant(std::chrono::seconds(seconds) + std::chrono::microseconds(microseconds))));
}

TEST(Calendar, BuildsTheInstantOfALocalTime) {
    const TimeZone zone("UTC");
    EXPECT_EQ(secondsOf({1970, 1, 1, 0, 0, 0}), 0);
    EXPECT_EQ(secondsOf({2005, 3, 17, 14, 3, 22}), 1111068202);
    EXPECT_EQ(secondsOf({1925, 1, 1, 0, 0, 0}), -1420070400);
}

TEST(Calendar, NoticesAChangedTimeZone) {
    {
        const TimeZone zone("Europe/Paris");
        EXPECT_EQ(secondsOf({2005, 3, 17, 14, 3, 22}), 1111064602);
    }
    const TimeZone zone("America/New_York");
    EXPECT_EQ(secondsOf({2005, 3, 17, 14, 3, 22}), 1111086202);
    EXPECT_EQ(fieldsAt(1111086202), (CalendarFields{2005, 3, 17, 14, 3, 22}));
}

TEST(Calendar, WorksWithNoTimeZoneSet) {
    const TimeZone restored("UTC");
    unsetenv("TZ"); // NOLINT(concurrency-mt-unsafe)
    const CalendarFields fields{2005, 3, 17, 14, 3, 22};
    EXPECT_EQ(calendarFromDate(*dateFromCalendar(fields)), fields);
}

TEST(Calendar, MovesALocalTimeThatDoesNotExistForwardByTheGap) {
    const TimeZone paris("Europe/Paris"); // 2005-03-27: 02:00 becomes 03:00
    EXPECT_EQ(secondsOf({2005, 3, 27, 1, 59, 59}), 1111887000 - 1801);
    EXPECT_EQ(secondsOf({2005, 3, 27, 2, 30, 0}), 1111887000);
    EXPECT_EQ(secondsOf({2005, 3, 27, 3, 30, 0}), 1111887000);
    EXPECT_EQ(fieldsAt(1111887000), (CalendarFields{2005, 3, 27, 3, 30, 0}));
}

TEST(Calendar, TakesTheEarlierInstantOfALocalTimeThatExistsTwice) {
    const TimeZone paris("Europe/Paris"); // 2005-10-30: 03:00 becomes 02:00
    EXPECT_EQ(secondsOf({2005, 10, 30, 1, 59, 59}), 1130632200 - 1801);
    EXPECT_EQ(secondsOf({2005, 10, 30, 2, 30, 0}), 1130632200);
    EXPECT_EQ(secondsOf({2005, 10, 30, 3, 0, 0}), 1130632200 + 5400);
    EXPECT_EQ(fieldsAt(1130632200), (CalendarFields{2005, 10, 30, 2, 30, 0}));
    EXPECT_EQ(fieldsAt(1130632200 + 3600), (CalendarFields{2005, 10, 30, 2, 30, 0}));
}

TEST(Calendar, KnowsGapsOtherThanAnHour) {
    {
        const TimeZone lordHowe("Australia/Lord_Howe"); // 2005-10-30: 02:00 becomes 02:30
        EXPECT_EQ(secondsOf({2005, 10, 30, 2, 15, 0}), 1130600700);
        EXPECT_EQ(fieldsAt(1130600700), (CalendarFields{2005, 10, 30, 2, 45, 0}));
    }
    const TimeZone apia("Pacific/Apia"); // 2011-12-30 was left out
    EXPECT_EQ(secondsOf({2011, 12, 30, 12, 0, 0}), 1325282400);
    EXPECT_EQ(secondsOf({2011, 12, 31, 12, 0, 0}), 1325282400);
}

TEST(Calendar, GivesEverySecondOfTheNightOfTheChangeItsInstant) {
    const TimeZone paris("Europe/Paris");
    for (std::int64_t second = 1111887000 - 1800 - 86400; second < 1111887000 + 86400; second += 600)
        EXPECT_EQ(secondsOf(fieldsAt(second)), second);
}

TEST(Calendar, CarriesNumbersOutOfRangeOver) {
    EXPECT_EQ(normalisedCalendar({2005, 13, 1, 0, 0, 0}), (CalendarFields{2006, 1, 1, 0, 0, 0}));
    EXPECT_EQ(normalisedCalendar({2005, 0, 1, 0, 0, 0}), (CalendarFields{2004, 12, 1, 0, 0, 0}));
    EXPECT_EQ(normalisedCalendar({2005, -11, 1, 0, 0, 0}), (CalendarFields{2004, 1, 1, 0, 0, 0}));
    EXPECT_EQ(normalisedCalendar({2005, 3, 0, 0, 0, 0}), (CalendarFields{2005, 2, 28, 0, 0, 0}));
    EXPECT_EQ(normalisedCalendar({2004, 3, 0, 0, 0, 0}), (CalendarFields{2004, 2, 29, 0, 0, 0}));
    EXPECT_EQ(normalisedCalendar({2005, 2, 31, 0, 0, 0}), (CalendarFields{2005, 3, 3, 0, 0, 0}));
    EXPECT_EQ(normalisedCalendar({2005, 12, 31, 23, 59, 60}), (CalendarFields{2006, 1, 1, 0, 0, 0}));
    EXPECT_EQ(normalisedCalendar({2006, 1, 1, 0, 0, -1}), (CalendarFields{2005, 12, 31, 23, 59, 59}));
    EXPECT_EQ(normalisedCalendar({2000, 0, 0, 45, 85, 85}), (CalendarFields{1999, 12, 1, 22, 26, 25}));
}

TEST(Calendar, NormalisesBeforeItBuildsAnInstant) {
    const TimeZone zone("UTC");
    EXPECT_EQ(secondsOf({2005, 2, 45, 14, 3, 22}), secondsOf({2005, 3, 17, 14, 3, 22}));
}

TEST(Calendar, KnowsYearsFarAway) {
    EXPECT_EQ(normalisedCalendar({-1, 12, 32, 0, 0, 0}), (CalendarFields{0, 1, 1, 0, 0, 0}));
    EXPECT_EQ(normalisedCalendar({100000, 2, 30, 0, 0, 0}), (CalendarFields{100000, 3, 1, 0, 0, 0}));
    EXPECT_EQ(normalisedCalendar({-100000, 3, 0, 0, 0, 0}), (CalendarFields{-100000, 2, 29, 0, 0, 0}));
}

TEST(Calendar, CutsFractionsOfASecondOff) {
    const TimeZone zone("UTC");
    EXPECT_EQ(fieldsAt(0, 999999), (CalendarFields{1970, 1, 1, 0, 0, 0}));
    EXPECT_EQ(fieldsAt(0, -1), (CalendarFields{1969, 12, 31, 23, 59, 59}));
}

TEST(Calendar, AnswersEveryThread) {
    const TimeZone paris("Europe/Paris");
    std::int64_t elsewhere = 0;
    std::thread([&] { elsewhere = secondsOf({2005, 3, 17, 14, 3, 22}); }).join();
    EXPECT_EQ(elsewhere, 1111064602);
}

} // namespace
} // namespace merro::platform
