// The platform's timecode record and the value that carries it between objects.
//
// Plain values, no ownership, usable on any thread.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>

namespace merro {

/// How many timecode frames make a second. Written into `SMPTETime::mType`.
enum SMPTETimeType : std::uint32_t {
    kSMPTETimeType24 = 0,
    kSMPTETimeType25 = 1,
    kSMPTETimeType30Drop = 2,
    kSMPTETimeType30 = 3,
    kSMPTETimeType2997 = 4,
    kSMPTETimeType2997Drop = 5,
    kSMPTETimeType60 = 6,
    kSMPTETimeType5994 = 7,
};

/// A SMPTE timecode: 24 bytes, fields in this order. No field is range-checked anywhere: a tape may say 25
/// hours.
struct SMPTETime {
    std::int16_t mSubframes = 0;
    std::int16_t mSubframeDivisor = 0;
    std::uint32_t mCounter = 0;
    std::uint32_t mType = 0; ///< a SMPTETimeType; selects the frame rate
    std::uint32_t mFlags = 0;
    std::int16_t mHours = 0;
    std::int16_t mMinutes = 0;
    std::int16_t mSeconds = 0;
    std::int16_t mFrames = 0;

    friend bool operator==(const SMPTETime&, const SMPTETime&) = default;
};
static_assert(sizeof(SMPTETime) == 24);

/// An immutable timecode that may be missing; compared by content. A missing one reads as an all-zero record.
class TimecodeValue {
public:
    TimecodeValue() = default;

    static TimecodeValue valueWithSMPTETime(const SMPTETime& time) {
        TimecodeValue value;
        value.m_time = time;
        return value;
    }

    [[nodiscard]] SMPTETime SMPTETimeValue() const { return m_time ? *m_time : SMPTETime{}; }

    /// Whether there is a timecode at all.
    explicit operator bool() const { return m_time.has_value(); }

    friend bool operator==(const TimecodeValue&, const TimecodeValue&) = default;

private:
    std::optional<SMPTETime> m_time;
};

} // namespace merro
