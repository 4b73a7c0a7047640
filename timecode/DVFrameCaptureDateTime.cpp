#include "timecode/DVFrameCaptureDateTime.h"

#include "timecode/NumberFormat.h"

namespace merro {
namespace {

constexpr std::string_view kDescriptionTable = "SarnetDV";

} // namespace

bool DateDescriptionOrder::isMonthFirst(const platform::UserDefaults& defaults) {
    Order order = m_order;
    if (order == Order::Undecided) {
        const auto format = defaults.objectForKey("NSShortDateFormatString");
        if (!format)
            return false;
        const std::string text = format->stringValue();
        order = text.starts_with("%d") || text.starts_with("%e") ? Order::DayFirst : Order::MonthFirst;
        m_order = order;
    }
    return order == Order::MonthFirst;
}

DateDescriptionOrder& DateDescriptionOrder::ofProcess() {
    static DateDescriptionOrder order;
    return order;
}

DVFrameCaptureDateTime DVFrameCaptureDateTime::initWithHoursMinutesSeconds(int hours, int minutes,
                                                                           int seconds) {
    DVFrameCaptureDateTime value;
    value.setTimeWithHoursMinutesSeconds(hours, minutes, seconds);
    return value;
}

DVFrameCaptureDateTime DVFrameCaptureDateTime::initWithYearMonthDay(int year, int month, int day) {
    DVFrameCaptureDateTime value;
    value.setDateWithYearMonthDay(year, month, day);
    return value;
}

DVFrameCaptureDateTimeRef DVFrameCaptureDateTime::timeWithHoursMinutesSeconds(int hours, int minutes,
                                                                              int seconds) {
    return std::make_shared<DVFrameCaptureDateTime>(initWithHoursMinutesSeconds(hours, minutes, seconds));
}

DVFrameCaptureDateTimeRef DVFrameCaptureDateTime::dateWithYearMonthDay(int year, int month, int day) {
    return std::make_shared<DVFrameCaptureDateTime>(initWithYearMonthDay(year, month, day));
}

DVFrameCaptureDateTimeRef DVFrameCaptureDateTime::dateWithYearMonthDayHoursMinutesSeconds(int year, int month,
                                                                                          int day, int hours,
                                                                                          int minutes,
                                                                                          int seconds) {
    auto value = dateWithYearMonthDay(year, month, day);
    value->setTimeWithHoursMinutesSeconds(hours, minutes, seconds);
    return value;
}

DVFrameCaptureDateTimeRef
DVFrameCaptureDateTime::dateWithCalendarDate(const platform::CalendarFields& fields) {
    const platform::CalendarFields normal = platform::normalisedCalendar(fields);
    return dateWithYearMonthDayHoursMinutesSeconds(normal.year, normal.month, normal.day, normal.hours,
                                                   normal.minutes, normal.seconds);
}

DVFrameCaptureDateTimeRef DVFrameCaptureDateTime::dateWithNSDate(const platform::Date& date) {
    return dateWithCalendarDate(platform::calendarFromDate(date));
}

DVFrameCaptureDateTimeRef DVFrameCaptureDateTime::copy() const {
    auto result = std::make_shared<DVFrameCaptureDateTime>();
    if (m_isDateSet)
        result->setDateWithYearMonthDay(m_year, m_month, m_day);
    if (m_isTimeSet)
        result->setTimeWithHoursMinutesSeconds(m_hours, m_minutes, m_seconds);
    return result;
}

void DVFrameCaptureDateTime::setDateWithYearMonthDay(int year, int month, int day) {
    m_year = year;
    m_month = month;
    m_day = day;
    m_isDateSet = true;
}

void DVFrameCaptureDateTime::setTimeWithHoursMinutesSeconds(int hours, int minutes, int seconds) {
    m_hours = hours;
    m_minutes = minutes;
    m_seconds = seconds;
    m_isTimeSet = true;
}

void DVFrameCaptureDateTime::setTimeFrom(const DVFrameCaptureDateTime* other) {
    if (other == nullptr)
        return;
    m_hours = other->m_hours;
    m_minutes = other->m_minutes;
    m_seconds = other->m_seconds;
    m_isTimeSet = other->m_isTimeSet;
}

void DVFrameCaptureDateTime::setDateFrom(const DVFrameCaptureDateTime* other) {
    if (other == nullptr) {
        m_isDateSet = false;
        return;
    }
    m_year = other->m_year;
    // The month takes the other's day: a host that sets dates this way has them archived and hashed so, and
    // its stored values would no longer be found if the month were taken.
    m_month = other->m_day;
    m_day = other->m_day;
    m_isDateSet = other->m_isDateSet;
}

platform::DateRef DVFrameCaptureDateTime::date() const {
    if (!isFullySet())
        return nullptr;
    return platform::dateFromCalendar({m_year, m_month, m_day, m_hours, m_minutes, m_seconds});
}

platform::DateRef DVFrameCaptureDateTime::dateReference() const {
    return m_isDateSet ? platform::dateFromCalendar({m_year, m_month, m_day, 10, 0, 0}) : nullptr;
}

platform::DateRef DVFrameCaptureDateTime::timeReference() const {
    return m_isTimeSet ? platform::dateFromCalendar({2001, 1, 1, m_hours, m_minutes, m_seconds}) : nullptr;
}

DVFrameCaptureDateTimeRef DVFrameCaptureDateTime::dateByAddingYearsMonthsDaysHoursMinutesSeconds(
    int years, int months, int days, int hours, int minutes, int seconds) const {
    const platform::DateRef start = date();
    if (!start)
        return nullptr;
    platform::CalendarFields fields = platform::calendarFromDate(*start);
    fields.year += years;
    fields.month += months;
    fields.day += days;
    fields.hours += hours;
    fields.minutes += minutes;
    fields.seconds += seconds;
    return dateWithNSDate(*platform::dateFromCalendar(fields));
}

double DVFrameCaptureDateTime::timeIntervalSinceCaptureDateTime(const DVFrameCaptureDateTime* other) const {
    if (other == nullptr || !isFullySet() || !other->isFullySet())
        return -10000.0;
    return date()->timeIntervalSinceDate(*other->date());
}

bool DVFrameCaptureDateTime::isEqual(const DVFrameCaptureDateTime& other) const {
    return m_year == other.m_year && m_month == other.m_month && m_day == other.m_day &&
           m_hours == other.m_hours && m_minutes == other.m_minutes && m_seconds == other.m_seconds;
}

std::uint32_t DVFrameCaptureDateTime::hash() const {
    std::uint32_t result = 0;
    for (const int number : {m_year, m_month, m_day, m_hours, m_minutes, m_seconds})
        result = result * 31 + static_cast<std::uint32_t>(number);
    return result;
}

void DVFrameCaptureDateTime::encodeWithCoder(SequentialEncoder& coder) const {
    for (const int number : {m_year, m_month, m_day, m_hours, m_minutes, m_seconds})
        coder.encodeInt(number);
    coder.encodeChar(m_isDateSet ? 1 : 0);
    coder.encodeChar(m_isTimeSet ? 1 : 0);
}

DVFrameCaptureDateTimeRef DVFrameCaptureDateTime::initWithCoder(SequentialDecoder& coder) {
    auto result = std::make_shared<DVFrameCaptureDateTime>();
    for (int* number : {&result->m_year, &result->m_month, &result->m_day, &result->m_hours,
                        &result->m_minutes, &result->m_seconds}) {
        const auto value = coder.decodeInt();
        if (!value)
            return nullptr;
        *number = *value;
    }
    for (bool* flag : {&result->m_isDateSet, &result->m_isTimeSet}) {
        const auto value = coder.decodeChar();
        if (!value)
            return nullptr;
        *flag = *value != 0;
    }
    return result;
}

std::string DVFrameCaptureDateTime::description(const platform::Localization& localization,
                                                const platform::UserDefaults& defaults,
                                                DateDescriptionOrder& order) const {
    const bool isMonthFirst = order.isMonthFirst(defaults);
    const int first = isMonthFirst ? m_month : m_day;
    const int second = isMonthFirst ? m_day : m_month;
    if (isFullySet())
        return formatNumbers("%02d/%02d/%04d - %02d:%02d:%02d",
                             {first, second, m_year, m_hours, m_minutes, m_seconds});
    if (m_isDateSet)
        return formatNumbers(localization.text("%02d/%02d/%04d - time unknown", kDescriptionTable),
                             {first, second, m_year});
    if (m_isTimeSet)
        return formatNumbers(localization.text("date unknown - %02d:%02d:%02d", kDescriptionTable),
                             {m_hours, m_minutes, m_seconds});
    return localization.text("Undefined date and time", kDescriptionTable);
}

} // namespace merro
