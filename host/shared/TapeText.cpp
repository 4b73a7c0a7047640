#include "host/shared/TapeText.h"

#include <fmt/format.h>

namespace merro::host {

std::optional<std::string> timecodeText(const TimecodeValue& timecode) {
    if (!timecode)
        return std::nullopt;
    const SMPTETime time = timecode.SMPTETimeValue();
    return fmt::format("{:02}:{:02}:{:02}:{:02}", time.mHours, time.mMinutes, time.mSeconds, time.mFrames);
}

std::optional<std::string> wallClockText(const platform::DateRef& date) {
    if (!date)
        return std::nullopt;
    return wallClockText(platform::calendarFromDate(*date));
}

std::string wallClockText(const platform::CalendarFields& fields) {
    const platform::CalendarFields shown = platform::normalisedCalendar(fields);
    return fmt::format("{:04}-{:02}-{:02}T{:02}:{:02}:{:02}", shown.year, shown.month, shown.day, shown.hours,
                       shown.minutes, shown.seconds);
}

std::string durationText(double seconds) {
    const auto whole = seconds > 0 ? static_cast<long long>(seconds) : 0;
    if (whole >= 3600)
        return fmt::format("{}:{:02}:{:02}", whole / 3600, whole / 60 % 60, whole % 60);
    return fmt::format("{}:{:02}", whole / 60, whole % 60);
}

} // namespace merro::host
