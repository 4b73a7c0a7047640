#include "timecode/BXMCTimecodeUtils.h"

#include <algorithm>
#include <array>
#include <compare>
#include <limits>
#include <stdexcept>

namespace merro {
namespace {

/// The four time fields, computed in 32 bits.
struct Fields {
    std::int32_t hours = 0;
    std::int32_t minutes = 0;
    std::int32_t seconds = 0;
    std::int32_t frames = 0;

    explicit Fields(const SMPTETime& time)
        : hours(time.mHours), minutes(time.mMinutes), seconds(time.mSeconds), frames(time.mFrames) {}

    void storeInto(SMPTETime& time) const {
        time.mHours = static_cast<std::int16_t>(hours);
        time.mMinutes = static_cast<std::int16_t>(minutes);
        time.mSeconds = static_cast<std::int16_t>(seconds);
        time.mFrames = static_cast<std::int16_t>(frames);
    }

    [[nodiscard]] TimecodeValue boxed() const {
        SMPTETime time;
        storeInto(time);
        return TimecodeValue::valueWithSMPTETime(time);
    }
};

void stepSecondForward(Fields& fields) {
    if (++fields.seconds < 60)
        return;
    fields.seconds -= 60;
    if (++fields.minutes < 60)
        return;
    fields.minutes -= 60;
    ++fields.hours;
}

void stepSecondBack(Fields& fields) {
    if (--fields.seconds >= 0)
        return;
    fields.seconds += 60;
    if (--fields.minutes >= 0)
        return;
    fields.minutes += 60;
    --fields.hours;
}

int timebaseOr(int timebase, const SMPTETime& timecode) {
    return timebase != 0 ? timebase : BXMCTimecodeUtils::maxFrameForTimecode(timecode);
}

/// The integer that a text starts with, after blanks and a sign; 0 when there is none.
std::int32_t leadingInteger(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
    const bool isNegative = text.starts_with('-');
    if (isNegative || text.starts_with('+'))
        text.remove_prefix(1);
    std::int64_t value = 0;
    for (const char character : text) {
        if (character < '0' || character > '9')
            break;
        value =
            std::min<std::int64_t>(value * 10 + (character - '0'), std::numeric_limits<std::int32_t>::max());
    }
    return static_cast<std::int32_t>(isNegative ? -value : value);
}

} // namespace

int BXMCTimecodeUtils::maxFrameForTimecode(const SMPTETime& timecode) {
    switch (timecode.mType) {
    case kSMPTETimeType24:
        return 24;
    case kSMPTETimeType25:
        return 25;
    case kSMPTETimeType60:
    case kSMPTETimeType5994:
        return 60;
    default:
        return 30;
    }
}

SMPTETime BXMCTimecodeUtils::addNbFrameToTimecode(int count, const SMPTETime& timecode) {
    const int limit = maxFrameForTimecode(timecode);
    Fields fields(timecode);
    std::int64_t frames = std::int64_t{fields.frames} + count;
    if (frames >= limit) {
        for (; frames >= limit; frames -= limit)
            stepSecondForward(fields);
    } else if (frames < 0) {
        // Up to the limit, not up to 0: a step back over a second ends one second earlier with as many more
        // frames. A host would see recapture preroll points move if this borrowed plainly.
        for (; frames < limit; frames += limit)
            stepSecondBack(fields);
    }
    fields.frames = static_cast<std::int32_t>(frames);
    SMPTETime result = timecode;
    fields.storeInto(result);
    return result;
}

int BXMCTimecodeUtils::timecodeCompareWith(const SMPTETime& first, const SMPTETime& second) {
    const auto fields = [](const SMPTETime& time) {
        return std::array{time.mHours, time.mMinutes, time.mSeconds, time.mFrames};
    };
    const auto order = fields(first) <=> fields(second);
    if (std::is_eq(order))
        return 0;
    return std::is_gt(order) ? 1 : -1;
}

TimecodeValue BXMCTimecodeUtils::generateTimecodeValueWithHourMinuteSecondFrame(std::int16_t hour,
                                                                                std::int16_t minute,
                                                                                std::int16_t second,
                                                                                std::int16_t frame) {
    SMPTETime time;
    time.mHours = hour;
    time.mMinutes = minute;
    time.mSeconds = second;
    time.mFrames = frame;
    return TimecodeValue::valueWithSMPTETime(time);
}

TimecodeValue BXMCTimecodeUtils::generateTimecodeValueWithTimecodeString(std::string_view text) {
    std::array<std::int16_t, 4> components{};
    for (std::size_t index = 0; index < components.size(); ++index) {
        const std::size_t separator = text.find_first_of(":.");
        components[index] = static_cast<std::int16_t>(leadingInteger(text.substr(0, separator)));
        if (separator != std::string_view::npos)
            text.remove_prefix(separator + 1);
        else if (index + 1 < components.size())
            throw std::out_of_range("a timecode text has fewer than four components");
    }
    return generateTimecodeValueWithHourMinuteSecondFrame(components[0], components[1], components[2],
                                                          components[3]);
}

// Not normalised, and hosts show it: the frames are never reduced, and a field that is exactly full carries
// nothing (30 seconds and 30 seconds are 00:00:60:00).
TimecodeValue BXMCTimecodeUtils::addTimecodeToTimecodeWithTimebase(const TimecodeValue& first,
                                                                   const TimecodeValue& second,
                                                                   int timebase) {
    Fields sum(first.SMPTETimeValue());
    const Fields other(second.SMPTETimeValue());
    sum.hours += other.hours;
    sum.minutes += other.minutes;
    sum.seconds += other.seconds;
    sum.frames += other.frames;
    if (sum.frames > timebaseOr(timebase, first.SMPTETimeValue()))
        ++sum.seconds;
    if (sum.seconds > 60) {
        sum.seconds -= 60;
        ++sum.minutes;
    }
    if (sum.minutes > 60) {
        sum.minutes -= 60;
        ++sum.hours;
    }
    return sum.boxed();
}

TimecodeValue BXMCTimecodeUtils::subTimecodeFromTimecodeWithTimebase(const TimecodeValue& first,
                                                                     const TimecodeValue& second,
                                                                     int timebase) {
    Fields difference(second.SMPTETimeValue());
    const Fields other(first.SMPTETimeValue());
    difference.hours -= other.hours;
    difference.minutes -= other.minutes;
    difference.seconds -= other.seconds;
    difference.frames -= other.frames;
    if (difference.frames < 0) {
        difference.frames += timebaseOr(timebase, first.SMPTETimeValue());
        --difference.seconds;
    }
    if (difference.seconds < 0) {
        difference.seconds += 60;
        --difference.minutes;
    }
    if (difference.minutes < 0) {
        difference.minutes += 60;
        --difference.hours;
    }
    return difference.boxed();
}

std::int32_t BXMCTimecodeUtils::timecodeValueAsFramesWithTimebase(const TimecodeValue& value, int timebase) {
    const Fields fields(value.SMPTETimeValue());
    const std::int64_t rate = timebaseOr(timebase, value.SMPTETimeValue());
    const std::int64_t seconds = (std::int64_t{fields.hours} * 60 + fields.minutes) * 60 + fields.seconds;
    return static_cast<std::int32_t>(seconds * rate + fields.frames);
}

} // namespace merro
