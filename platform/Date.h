// Instants and the calendar that turns a camera's wall clock into them.
//
// A Date is immutable and held by DateRef: two DateRefs are "the same date object" when the pointers are
// equal, which some setters care about. The calendar functions work in the time zone of the process (TZ), as
// the C library sees it; they may be called from any thread as long as nobody changes TZ meanwhile.
#pragma once

#include <chrono>
#include <memory>

namespace merro::platform {

class Date {
public:
    using Instant = std::chrono::sys_time<std::chrono::microseconds>;

    explicit Date(Instant instant) : m_instant(instant) {}

    [[nodiscard]] Instant instant() const { return m_instant; }

    /// Seconds from `other` to this date; negative when this date is the earlier one.
    [[nodiscard]] double timeIntervalSinceDate(const Date& other) const {
        return std::chrono::duration<double>(m_instant - other.m_instant).count();
    }

private:
    Instant m_instant;
};

using DateRef = std::shared_ptr<const Date>;

/// The fields of a wall clock. Not range-checked: the calendar normalises them.
struct CalendarFields {
    int year = 0;
    int month = 0; ///< 1 is January
    int day = 0;   ///< 1 is the first of the month
    int hours = 0;
    int minutes = 0;
    int seconds = 0;

    friend bool operator==(const CalendarFields&, const CalendarFields&) = default;
};

/// The instant at which the system time zone's clock shows `fields`. Numbers out of range are normalised
/// (month 13 is January of the next year, day 0 the day before). A local time that exists twice is the
/// earlier instant; one that does not exist is moved forward by the gap.
[[nodiscard]] DateRef dateFromCalendar(const CalendarFields& fields);

/// What the system time zone's clock shows at `date`; fractions of a second are cut off.
[[nodiscard]] CalendarFields calendarFromDate(const Date& date);

/// `fields` with numbers out of range carried over as calendars do, no time zone involved.
[[nodiscard]] CalendarFields normalisedCalendar(const CalendarFields& fields);

} // namespace merro::platform
