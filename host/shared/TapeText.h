// How timecodes and dates of the tape are written in reports.
//
// Pure functions; any thread.
#pragma once

#include "platform/Date.h"
#include "platform/SMPTETime.h"

#include <optional>
#include <string>

namespace merro::host {

/// "01:02:03:04": hours, minutes, seconds and frames, two digits each or more, whatever the frame rate.
/// Missing when the timecode is missing.
[[nodiscard]] std::optional<std::string> timecodeText(const TimecodeValue& timecode);

/// "2005-03-17T14:03:22": what the camera's clock showed, in the time zone in which the date was made.
[[nodiscard]] std::optional<std::string> wallClockText(const platform::DateRef& date);

/// The same for calendar fields, which are brought into range first.
[[nodiscard]] std::string wallClockText(const platform::CalendarFields& fields);

/// "1:02:03" or "2:03" for a length of time in whole seconds; negative lengths read as zero.
[[nodiscard]] std::string durationText(double seconds);

} // namespace merro::host
