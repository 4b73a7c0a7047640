#include "tests/scenarios/TapeScript.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <numeric>
#include <stdexcept>

namespace merro::test {

namespace {

using platform::CalendarFields;
using platform::FrameBytes;

constexpr int kFramesInMemory = 300;

void require(bool isUnderstood, const std::string& text) {
    if (!isUnderstood)
        throw std::invalid_argument("a tape cannot have \"" + text + "\"");
}

int framesPerSecond(DVSystem system) {
    return system == DVSystem::System625_50 ? 25 : 30;
}

std::optional<CalendarFields> fieldsOf(const std::string& date, int secondsLater) {
    if (date.empty())
        return std::nullopt;
    const std::string full = date.size() == 8 ? "2005-03-17 " + date : date;
    CalendarFields fields;
    require(std::sscanf(full.c_str(), "%d-%d-%d %d:%d:%d", &fields.year, &fields.month, &fields.day,
                        &fields.hours, &fields.minutes, &fields.seconds) == 6,
            date);
    fields.seconds += secondsLater;
    return platform::normalisedCalendar(fields);
}

/// The timecode `frames` frames later, the way tapes count.
SMPTETime countedOn(SMPTETime time, int frames, DVSystem system, bool isDropFrame) {
    const int limit = framesPerSecond(system);
    for (int i = 0; i < frames; ++i) {
        if (++time.mFrames < limit)
            continue;
        time.mFrames = 0;
        if (++time.mSeconds < 60)
            continue;
        time.mSeconds = 0;
        ++time.mMinutes;
        if (isDropFrame && time.mMinutes % 10 != 0)
            time.mFrames = 2;
        if (time.mMinutes < 60)
            continue;
        time.mMinutes = 0;
        time.mHours = static_cast<std::int16_t>((time.mHours + 1) % 24);
    }
    return time;
}

const DVFrameBuilder& emptyFrame(DVSystem system) {
    static const DVFrameBuilder frame625(DVSystem::System625_50);
    static const DVFrameBuilder frame525(DVSystem::System525_60);
    return system == DVSystem::System625_50 ? frame625 : frame525;
}

void writeNumber(std::vector<std::uint8_t>& bytes, int number) {
    for (std::size_t i = 0; i < 4 && bytes.size() >= 4; ++i)
        bytes[bytes.size() - 4 + i] =
            static_cast<std::uint8_t>(static_cast<unsigned>(number) >> (8 * (3 - i)));
}

/// Makes frames when they are read: a long tape takes no memory.
class MadeTape final : public platform::deck::Tape {
public:
    explicit MadeTape(TapeScript script) : m_script(std::move(script)) {}
    [[nodiscard]] std::optional<platform::deck::TapeFrame> frameAt(std::int64_t index) override {
        if (index < 0 || index >= frameCount())
            return std::nullopt;
        return platform::deck::TapeFrame{m_script.bytes(static_cast<int>(index)), -1};
    }
    [[nodiscard]] std::int64_t frameCount() const override { return m_script.length(); }
    [[nodiscard]] bool isFrameCountExact() const override { return true; }

private:
    const TapeScript m_script;
};

} // namespace

TapeScript& TapeScript::take(const Take& take) {
    const SMPTETime first = timecode(take.timecode, take.system).SMPTETimeValue();
    SMPTETime now = first;
    for (int i = 0; i < take.frames; ++i) {
        ScriptFrame frame;
        frame.system = take.system;
        frame.isWide = take.isWide;
        frame.sizeBytes = take.system == DVSystem::System625_50 ? 144'000 : 120'000;
        if (!take.timecode.empty())
            frame.timecode = TimecodeValue::valueWithSMPTETime(take.timecodeStands ? first : now);
        frame.date = fieldsOf(take.date, take.clockStands ? 0 : i / framesPerSecond(take.system));
        m_frames.push_back(std::move(frame));
        now = countedOn(now, 1, take.system, take.isDropFrame);
    }
    return *this;
}

TapeScript& TapeScript::blank(int frames) {
    m_frames.resize(m_frames.size() + static_cast<std::size_t>(frames));
    return *this;
}

TapeScript& TapeScript::foreign(std::size_t sizeBytes) {
    ScriptFrame frame;
    frame.sizeBytes = sizeBytes;
    m_frames.push_back(std::move(frame));
    return *this;
}

TapeScript& TapeScript::damage(int frame, std::function<void(DVFrameBuilder&)> damage) {
    at(frame).damage.push_back(std::move(damage));
    return *this;
}

FrameBytes TapeScript::bytes(int index) const {
    const ScriptFrame& frame = at(index);
    if (frame.sizeBytes == 0)
        return {};
    if (frame.sizeBytes != 144'000 && frame.sizeBytes != 120'000) {
        std::vector<std::uint8_t> bytes(frame.sizeBytes, 0x5A);
        writeNumber(bytes, index);
        return FrameBytes::taking(std::move(bytes));
    }
    DVFrameBuilder builder = emptyFrame(frame.system);
    builder.setFrameCount(static_cast<unsigned>(index % 12));
    builder.setPicture({.isWide = frame.isWide});
    if (frame.timecode)
        builder.setTimecode(frame.timecode.SMPTETimeValue());
    if (frame.date)
        builder.setRecordingDateTime(*frame.date);
    for (const auto& damage : frame.damage)
        damage(builder);
    std::vector<std::uint8_t> bytes = builder.bytes();
    writeNumber(bytes, index);
    return FrameBytes::taking(std::move(bytes));
}

std::unique_ptr<platform::deck::Tape> TapeScript::tape() const {
    if (length() > kFramesInMemory)
        return std::make_unique<MadeTape>(*this);
    auto tape = std::make_unique<platform::deck::MemoryTape>();
    for (int i = 0; i < length(); ++i)
        tape->append(bytes(i));
    return tape;
}

int TapeScript::numberOf(std::span<const std::uint8_t> frame) {
    if (frame.size() < 4)
        return -1;
    std::uint32_t number = 0;
    for (const std::uint8_t byte : frame.last(4))
        number = number << 8 | byte;
    return static_cast<int>(number);
}

std::vector<int> TapeScript::framesIn(std::span<const std::uint8_t> file) const {
    std::vector<int> found;
    while (!file.empty()) {
        int number = -1;
        for (const std::size_t size : {std::size_t{144'000}, std::size_t{120'000}}) {
            if (number >= 0 || file.size() < size)
                continue;
            const int candidate = numberOf(file.first(size));
            if (candidate < 0 || candidate >= length() || at(candidate).sizeBytes != size)
                continue;
            if (std::ranges::equal(bytes(candidate).bytes(), file.first(size)))
                number = candidate;
        }
        found.push_back(number);
        if (number < 0)
            break;
        file = file.subspan(at(number).sizeBytes);
    }
    return found;
}

TimecodeValue timecode(const std::string& text, DVSystem system) {
    if (text.empty())
        return {};
    std::array<int, 4> fields{};
    require(std::sscanf(text.c_str(), "%d:%d:%d:%d", fields.data(), &fields[1], &fields[2], &fields[3]) == 4,
            text);
    SMPTETime time;
    time.mType = system == DVSystem::System625_50 ? kSMPTETimeType25 : kSMPTETimeType30Drop;
    time.mHours = static_cast<std::int16_t>(fields[0]);
    time.mMinutes = static_cast<std::int16_t>(fields[1]);
    time.mSeconds = static_cast<std::int16_t>(fields[2]);
    time.mFrames = static_cast<std::int16_t>(fields[3]);
    return TimecodeValue::valueWithSMPTETime(time);
}

std::string text(const TimecodeValue& value) {
    if (!value)
        return {};
    const SMPTETime time = value.SMPTETimeValue();
    std::array<char, 48> line{};
    (void)std::snprintf(line.data(), line.size(), "%02d:%02d:%02d:%02d", time.mHours, time.mMinutes,
                        time.mSeconds, time.mFrames);
    return line.data();
}

std::vector<int> frames(int first, int last) {
    std::vector<int> numbers(static_cast<std::size_t>(std::max(last - first + 1, 0)));
    std::iota(numbers.begin(), numbers.end(), first);
    return numbers;
}

} // namespace merro::test
