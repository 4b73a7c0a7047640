#include "host/shared/FrameInspector.h"

#include "dv/DVConstants.h"
#include "dv/FrameDate.h"
#include "dv/FrameTimecode.h"
#include "host/shared/Failure.h"
#include "host/shared/TapeSource.h"
#include "host/shared/TapeText.h"

#include <fmt/format.h>

#include <charconv>
#include <optional>

namespace merro::host {

namespace {

/// What is shown of a frame, worked out once for both forms.
struct FrameFacts {
    explicit FrameFacts(const platform::deck::TapeFrame& frame)
        : timecode(frameTimecode(frame.bytes)), found(findFrameDate(frame.bytes)) {
        const DVFrameCaptureDateTimeRef& when = found.captureDateTime;
        if (when && when->isDateSet())
            date = fmt::format("{:04}-{:02}-{:02}", when->year(), when->monthOfYear(), when->dayOfMonth());
        if (when && when->isTimeSet())
            time = fmt::format("{:02}:{:02}:{:02}", when->hourOfDay(), when->minuteOfHour(),
                               when->secondOfMinute());
    }

    TimecodeValue timecode;
    FrameDate found;
    std::optional<std::string> date;
    std::optional<std::string> time;
};

/// The texts here need no escaping: digits, colons and dashes.
std::string quotedOrNull(const std::optional<std::string>& text) {
    return text ? fmt::format("\"{}\"", *text) : "null";
}

std::optional<std::int64_t> parseNumber(std::string_view text) {
    std::int64_t number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    if (read.ec != std::errc() || read.ptr != text.data() + text.size() || number < 0)
        return std::nullopt;
    return number;
}

} // namespace

FrameRange parseFrameRange(const std::string& text) {
    const auto dash = text.find('-');
    const std::string_view whole(text);
    const auto first = parseNumber(whole.substr(0, dash));
    std::optional<std::int64_t> last = first;
    if (dash != std::string::npos)
        last = dash + 1 == text.size() ? std::optional(INT64_MAX) : parseNumber(whole.substr(dash + 1));
    if (!first || !last || *last < *first)
        throw Failure(
            fmt::format("\"{}\" is no range of frames: A-B, A- or A is wanted, counted from 0", text),
            ExitStatus::Usage);
    return {*first, *last};
}

std::string frameJson(std::int64_t index, const platform::deck::TapeFrame& frame) {
    const FrameFacts facts(frame);
    const FrameDate& found = facts.found;
    return fmt::format(
        R"({{"frame": {}, "offset": {}, "size": {}, "system": "{}", "timecode": {}, "timecodeType": {}, )"
        R"("recordingDate": {}, "recordingTime": {}, "aspectRatio": {}, "stillPicture": {}, "interlaced": {}, )"
        R"("pixelSampling": {}, "sequence": {}}})",
        index, frame.offsetBytes < 0 ? "null" : fmt::format("{}", frame.offsetBytes), frame.bytes.size(),
        systemOfFrame(frame.bytes.size()), quotedOrNull(timecodeText(facts.timecode)),
        facts.timecode ? fmt::format("{}", facts.timecode.SMPTETimeValue().mType) : "null",
        quotedOrNull(facts.date), quotedOrNull(facts.time), found.aspectRatio, found.stillPicture,
        found.interlaced, found.pixelSampling,
        found.sequenceIndex < 0 ? "null" : fmt::format("{}", found.sequenceIndex));
}

std::string headingForPeople() {
    return fmt::format("{:>8}  {:>14}  {:<6}  {:<11}  {:<10}  {:<8}  {}", "frame", "offset", "system",
                       "timecode", "date", "time", "aspect");
}

std::string frameLine(std::int64_t index, const platform::deck::TapeFrame& frame) {
    const FrameFacts facts(frame);
    return fmt::format("{:>8}  {:>14}  {:<6}  {:<11}  {:<10}  {:<8}  {}", index, frame.offsetBytes,
                       systemOfFrame(frame.bytes.size()), timecodeText(facts.timecode).value_or("-"),
                       facts.date.value_or("-"), facts.time.value_or("-"),
                       DVAspectRatioNameForRatio(facts.found.aspectRatio));
}

std::int64_t
forEachFrame(platform::deck::Tape& tape, const FrameRange& range,
             const std::function<bool(std::int64_t, const platform::deck::TapeFrame&)>& receiver) {
    std::int64_t count = 0;
    for (std::int64_t index = range.first; index <= range.last; ++index) {
        const auto frame = tape.frameAt(index);
        if (!frame)
            break;
        if (frame->bytes.isNull())
            continue;
        ++count;
        if (!receiver(index, *frame))
            break;
    }
    return count;
}

} // namespace merro::host
