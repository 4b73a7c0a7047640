#include "platform/Date.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>

namespace merro::platform {
namespace {

using LocalSeconds = std::int64_t; ///< seconds from 1970-01-01 00:00:00 as a wall clock shows them
using UtcSeconds = std::int64_t;

constexpr std::int64_t kSecondsPerDay = 86'400;

/// Instants are microseconds in 64 bits; this is about the year 290000, before or after.
constexpr std::int64_t kFarthestSecond = 9'200'000'000'000;

constexpr std::int64_t floorDivide(std::int64_t value, std::int64_t divisor) {
    const std::int64_t quotient = value / divisor;
    return value % divisor < 0 ? quotient - 1 : quotient;
}

LocalSeconds localSeconds(const CalendarFields& fields) {
    const std::int64_t monthsFromZero = std::int64_t{fields.month} - 1;
    const std::int64_t year = fields.year + floorDivide(monthsFromZero, 12);
    const std::int64_t month = monthsFromZero - floorDivide(monthsFromZero, 12) * 12; // 0 is January

    // Years are counted from March, so that the leap day is a year's last.
    const std::int64_t marchYear = month < 2 ? year - 1 : year;
    const std::int64_t marchMonth = (month + 10) % 12;
    const std::int64_t daysBeforeMonth = (153 * marchMonth + 2) / 5;
    const std::int64_t leapDays =
        floorDivide(marchYear, 4) - floorDivide(marchYear, 100) + floorDivide(marchYear, 400);
    constexpr std::int64_t kEpochFromMarchOfYearZero = 719'468;
    const std::int64_t days =
        365 * marchYear + leapDays + daysBeforeMonth + fields.day - 1 - kEpochFromMarchOfYearZero;
    return days * kSecondsPerDay + std::int64_t{fields.hours} * 3600 + std::int64_t{fields.minutes} * 60 +
           fields.seconds;
}

CalendarFields fieldsOf(LocalSeconds local) {
    const std::int64_t days = floorDivide(local, kSecondsPerDay);
    const auto secondOfDay = static_cast<int>(local - days * kSecondsPerDay);
    CalendarFields fields;
    using std::chrono::sys_days;
    if (days > -11'000'000 && days < 11'000'000) { // what std::chrono::year can hold
        const std::chrono::year_month_day date{sys_days{std::chrono::days{days}}};
        fields.year = static_cast<int>(date.year());
        fields.month = static_cast<int>(static_cast<unsigned>(date.month()));
        fields.day = static_cast<int>(static_cast<unsigned>(date.day()));
    } else {
        const std::int64_t eras = floorDivide(days, 146'097); // the calendar repeats after 400 years
        fields = fieldsOf((days - eras * 146'097) * kSecondsPerDay);
        fields.year += static_cast<int>(eras * 400);
    }
    fields.hours = secondOfDay / 3600;
    fields.minutes = secondOfDay / 60 % 60;
    fields.seconds = secondOfDay % 60;
    return fields;
}

/// Seconds by which the wall clock is ahead of UTC at an instant.
std::int64_t zoneOffsetAt(UtcSeconds instant) {
    const auto time = static_cast<std::time_t>(instant);
    std::tm fields{};
    return localtime_r(&time, &fields) != nullptr ? fields.tm_gmtoff : 0;
}

/// The zone's offset on the local day that was asked for last. Every frame of a tape asks for a time on the
/// same day, and looking the zone up costs more than all the rest of a frame's date.
class OffsetOfDay {
public:
    /// Whether the offset is known and the same all through the local day of `local`.
    bool covers(LocalSeconds local) {
        noticeChangedZone();
        if (m_known && local >= m_dayStart && local < m_dayStart + kSecondsPerDay)
            return true;
        m_dayStart = floorDivide(local, kSecondsPerDay) * kSecondsPerDay;
        // No zone is a whole day from UTC, so these two instants lie before and after the local day.
        m_offset = zoneOffsetAt(m_dayStart - kSecondsPerDay);
        m_known = m_offset == zoneOffsetAt(m_dayStart + 2 * kSecondsPerDay) &&
                  m_offset == zoneOffsetAt(m_dayStart + kSecondsPerDay / 2 - m_offset);
        return m_known;
    }

    /// The same for an instant; asks the zone only when the day changes.
    bool coversInstant(UtcSeconds instant) {
        noticeChangedZone();
        if (m_known && covers(instant + m_offset))
            return true;
        return covers(instant + zoneOffsetAt(instant));
    }

    [[nodiscard]] std::int64_t offset() const { return m_offset; }

private:
    void noticeChangedZone() {
        const char* zone = std::getenv("TZ"); // NOLINT(concurrency-mt-unsafe): nobody changes TZ meanwhile
        const bool isSet = zone != nullptr;
        if (m_wasAsked && isSet == m_zoneIsSet && (!isSet || m_zone == zone))
            return;
        tzset(); // localtime_r alone keeps to the zone that it found first
        m_zone = isSet ? zone : "";
        m_zoneIsSet = isSet;
        m_wasAsked = true;
        m_known = false;
    }

    std::string m_zone;
    bool m_zoneIsSet = false;
    bool m_wasAsked = false;
    bool m_known = false;
    LocalSeconds m_dayStart = 0;
    std::int64_t m_offset = 0;
};

OffsetOfDay& offsetOfDay() {
    thread_local OffsetOfDay offset;
    return offset;
}

UtcSeconds instantOf(LocalSeconds local) {
    OffsetOfDay& day = offsetOfDay();
    if (day.covers(local))
        return local - day.offset();

    // The clock is set forward or back around this day: read the time under the offset before and the one
    // after.
    const std::int64_t offsetBefore = zoneOffsetAt(local - kSecondsPerDay);
    const std::int64_t offsetAfter = zoneOffsetAt(local + kSecondsPerDay);
    const UtcSeconds underBefore = local - offsetBefore;
    const UtcSeconds underAfter = local - offsetAfter;
    const bool existsBefore = zoneOffsetAt(underBefore) == offsetBefore;
    const bool existsAfter = zoneOffsetAt(underAfter) == offsetAfter;
    if (existsBefore && existsAfter)
        return std::min(underBefore, underAfter);
    // A time that the clock skipped, read under the offset before, shows as later by the length of the gap.
    return existsAfter ? underAfter : underBefore;
}

} // namespace

DateRef dateFromCalendar(const CalendarFields& fields) {
    const LocalSeconds local = std::clamp(localSeconds(fields), -kFarthestSecond, kFarthestSecond);
    return std::make_shared<const Date>(Date::Instant(std::chrono::seconds(instantOf(local))));
}

CalendarFields calendarFromDate(const Date& date) {
    const UtcSeconds instant =
        std::chrono::floor<std::chrono::seconds>(date.instant()).time_since_epoch().count();
    OffsetOfDay& day = offsetOfDay();
    return fieldsOf(instant + (day.coversInstant(instant) ? day.offset() : zoneOffsetAt(instant)));
}

CalendarFields normalisedCalendar(const CalendarFields& fields) {
    return fieldsOf(localSeconds(fields));
}

} // namespace merro::platform
