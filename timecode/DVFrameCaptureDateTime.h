// The recording date and time that a DV frame carries; either half may be missing.
//
// A small mutable object, held by DVFrameCaptureDateTimeRef where it is shared. Not synchronised: it belongs
// to one thread at a time. No number is range-checked: tapes hold day 0 and month 0, and the calendar
// normalises them.
#pragma once

#include "platform/Date.h"
#include "platform/Localization.h"
#include "platform/UserDefaults.h"
#include "timecode/SequentialCoder.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace merro {

class DVFrameCaptureDateTime;
using DVFrameCaptureDateTimeRef = std::shared_ptr<DVFrameCaptureDateTime>;

/// Whether dates are printed day first or month first, as the user default "NSShortDateFormatString" says.
/// Read until it exists, then kept. Any thread.
class DateDescriptionOrder {
public:
    [[nodiscard]] bool isMonthFirst(const platform::UserDefaults& defaults);

    /// The one for the life of the process.
    [[nodiscard]] static DateDescriptionOrder& ofProcess();

private:
    enum class Order { Undecided, DayFirst, MonthFirst };
    std::atomic<Order> m_order = Order::Undecided;
};

class DVFrameCaptureDateTime {
public:
    /// All numbers 0, both halves missing.
    DVFrameCaptureDateTime() = default;

    [[nodiscard]] static DVFrameCaptureDateTime initWithHoursMinutesSeconds(int hours, int minutes,
                                                                            int seconds);
    [[nodiscard]] static DVFrameCaptureDateTime initWithYearMonthDay(int year, int month, int day);

    // New objects, owned by the caller.
    [[nodiscard]] static DVFrameCaptureDateTimeRef timeWithHoursMinutesSeconds(int hours, int minutes,
                                                                               int seconds);
    [[nodiscard]] static DVFrameCaptureDateTimeRef dateWithYearMonthDay(int year, int month, int day);
    [[nodiscard]] static DVFrameCaptureDateTimeRef
    dateWithYearMonthDayHoursMinutesSeconds(int year, int month, int day, int hours, int minutes,
                                            int seconds);
    /// Both halves from a wall clock; numbers out of range are normalised first.
    [[nodiscard]] static DVFrameCaptureDateTimeRef
    dateWithCalendarDate(const platform::CalendarFields& fields);
    /// Both halves from what the system time zone's clock shows at `date`.
    [[nodiscard]] static DVFrameCaptureDateTimeRef dateWithNSDate(const platform::Date& date);

    /// A new object with the halves that are set; the numbers of a missing half are 0 in it.
    [[nodiscard]] DVFrameCaptureDateTimeRef copy() const;

    void setDateWithYearMonthDay(int year, int month, int day);
    void setTimeWithHoursMinutesSeconds(int hours, int minutes, int seconds);

    /// Takes over the time half, missing or not. Null changes nothing.
    void setTimeFrom(const DVFrameCaptureDateTime* other);
    /// Takes over the date half, missing or not, but the month becomes the other's day. Null makes the date
    /// missing and keeps its numbers.
    void setDateFrom(const DVFrameCaptureDateTime* other);

    [[nodiscard]] bool isDateSet() const { return m_isDateSet; }
    [[nodiscard]] bool isTimeSet() const { return m_isTimeSet; }
    [[nodiscard]] bool isFullySet() const { return m_isDateSet && m_isTimeSet; }

    [[nodiscard]] int year() const { return m_year; }
    [[nodiscard]] int monthOfYear() const { return m_month; }
    [[nodiscard]] int dayOfMonth() const { return m_day; }
    [[nodiscard]] int hourOfDay() const { return m_hours; }
    [[nodiscard]] int minuteOfHour() const { return m_minutes; }
    [[nodiscard]] int secondOfMinute() const { return m_seconds; }

    /// The instant in the system time zone; null unless both halves are set. A new object each time.
    [[nodiscard]] platform::DateRef date() const;
    /// The date at 10:00:00; null unless the date is set.
    [[nodiscard]] platform::DateRef dateReference() const;
    /// The time on 2001-01-01; null unless the time is set.
    [[nodiscard]] platform::DateRef timeReference() const;

    /// This date moved on the wall clock, both halves set; null when date() is. Numbers out of range carry
    /// over as calendars do: 31 January and one month is 3 March (or 2 March in a leap year).
    [[nodiscard]] DVFrameCaptureDateTimeRef
    dateByAddingYearsMonthsDaysHoursMinutesSeconds(int years, int months, int days, int hours, int minutes,
                                                   int seconds) const;

    /// Seconds from `other` to this; -10000.0 when `other` is null or either is not fully set.
    [[nodiscard]] double timeIntervalSinceCaptureDateTime(const DVFrameCaptureDateTime* other) const;

    /// Whether the six numbers are equal. Which halves are set does not matter.
    [[nodiscard]] bool isEqual(const DVFrameCaptureDateTime& other) const;
    friend bool operator==(const DVFrameCaptureDateTime& left, const DVFrameCaptureDateTime& right) {
        return left.isEqual(right);
    }
    [[nodiscard]] std::uint32_t hash() const;

    /// Six ints (year, month, day, hours, minutes, seconds), then two chars (date set, time set).
    void encodeWithCoder(SequentialEncoder& coder) const;
    /// Null when the archive does not hold these eight values next.
    [[nodiscard]] static DVFrameCaptureDateTimeRef initWithCoder(SequentialDecoder& coder);

    /// For people: "31/12/1999 - 23:05:09", "31/12/1999 - time unknown", "date unknown - 23:05:09" or
    /// "Undefined date and time"; all but the first in the user's language.
    [[nodiscard]] std::string
    description(const platform::Localization& localization, const platform::UserDefaults& defaults,
                DateDescriptionOrder& order = DateDescriptionOrder::ofProcess()) const;

private:
    int m_year = 0;
    int m_month = 0;
    int m_day = 0;
    int m_hours = 0;
    int m_minutes = 0;
    int m_seconds = 0;
    bool m_isDateSet = false;
    bool m_isTimeSet = false;
};

} // namespace merro

template <>
struct std::hash<merro::DVFrameCaptureDateTime> {
    std::size_t operator()(const merro::DVFrameCaptureDateTime& value) const noexcept { return value.hash(); }
};
