#include "platform/ffmpeg/TapeStamp.h"

#include <algorithm>
#include <array>
#include <numeric>

namespace merro::platform::ffmpeg {

namespace {

constexpr std::size_t kBlockBytes = 80;
constexpr std::size_t kSequenceBytes = 150 * kBlockBytes;
constexpr unsigned kSyncBlocks = 12;
constexpr unsigned kVideoBlocks = 135;
constexpr unsigned kConcealed = 0xE; ///< "concealed, continuity not guaranteed" (IEC 61834-2, STA)
constexpr std::uint8_t kTimecodePack = 0x13;
constexpr std::uint8_t kDatePack = 0x62;
constexpr std::uint8_t kTimePack = 0x63;

std::vector<unsigned> sequencesOf(const TakeFault& fault, const deck::DVFrameBuilder& builder) {
    if (!fault.sequences.empty())
        return {fault.sequences.begin(), fault.sequences.end()};
    std::vector<unsigned> all(builder.sequenceCount());
    std::iota(all.begin(), all.end(), 0U);
    return all;
}

void emptySubcodePacks(deck::DVFrameBuilder& builder, unsigned sequence,
                       std::span<const std::uint8_t> types) {
    for (unsigned sync = 0; sync < kSyncBlocks; ++sync)
        if (std::ranges::find(types, builder.subcodePack(sequence, sync)[0]) != types.end())
            builder.setSubcodePack(sequence, sync, deck::emptyPack);
}

void copySubcodePacks(deck::DVFrameBuilder& from, deck::DVFrameBuilder& to, unsigned sequence) {
    for (unsigned sync = 0; sync < kSyncBlocks; ++sync)
        to.setSubcodePack(sequence, sync, from.subcodePack(sequence, sync));
}

/// Calls `change` with every sound block of the frame: one in sixteen behind the first six of a sequence.
template <typename Change>
void forEachSoundBlock(std::vector<std::uint8_t>& frame, Change change) {
    for (std::size_t sequence = 0; sequence < frame.size(); sequence += kSequenceBytes)
        for (std::size_t block = 6; block < 150; block += 16)
            change(std::span(frame).subspan(sequence + block * kBlockBytes, kBlockBytes));
}

void spoilSound(TakeFaultKind kind, std::vector<std::uint8_t>& frame) {
    if (kind == TakeFaultKind::LostSound)
        forEachSoundBlock(frame, [](std::span<std::uint8_t> block) { // 8000 hex is "no sample" at 16 bits
            for (std::size_t place = 8; place < block.size(); place += 2) {
                block[place] = 0x80;
                block[place + 1] = 0;
            }
        });
    if (kind == TakeFaultKind::NoSound)
        forEachSoundBlock(
            frame, [](std::span<std::uint8_t> block) { std::ranges::fill(block.subspan(3, 5), 0xFF); });
}

} // namespace

void TapeStamp::begin(const Take& take, TapeSystem system) {
    if (take.recordingDate) {
        m_date = *take.recordingDate;
        m_framesSinceDate = 0;
    } else if (system != m_system) {
        m_date = dateNow();
        m_framesSinceDate = 0;
    }
    const bool isFirst = m_take == nullptr;
    m_take = &take;
    m_system = system;
    m_frameOfTake = 0;
    if (isFirst || take.timecodeCourse == TimecodeCourse::StartsAt) {
        m_timecode.mHours = static_cast<std::int16_t>(take.timecode.hours);
        m_timecode.mMinutes = static_cast<std::int16_t>(take.timecode.minutes);
        m_timecode.mSeconds = static_cast<std::int16_t>(take.timecode.seconds);
        m_timecode.mFrames = static_cast<std::int16_t>(take.timecode.frames);
    }
}

void TapeStamp::advanceTimecode() {
    const int framesPerSecond = m_system == TapeSystem::System525_60 ? 30 : 25;
    if (++m_timecode.mFrames < framesPerSecond)
        return;
    m_timecode.mFrames = 0;
    if (++m_timecode.mSeconds < 60)
        return;
    m_timecode.mSeconds = 0;
    if (++m_timecode.mMinutes >= 60) {
        m_timecode.mMinutes = 0;
        m_timecode.mHours = static_cast<std::int16_t>((m_timecode.mHours + 1) % 24);
    }
    // Drop-frame leaves out frames 0 and 1 of every minute but each tenth (SMPTE 12M).
    if (m_take->dropFrame && m_timecode.mMinutes % 10 != 0)
        m_timecode.mFrames = 2;
}

CalendarFields TapeStamp::dateNow() const {
    CalendarFields date = m_date;
    const std::int64_t seconds =
        m_system == TapeSystem::System525_60 ? m_framesSinceDate * 1001 / 30000 : m_framesSinceDate / 25;
    if (seconds == 0)
        return date; // as the scenario has it, even if there is no such day
    date.seconds += static_cast<int>(seconds);
    return normalisedCalendar(date);
}

std::span<const std::uint8_t> TapeStamp::stamp(std::span<const std::uint8_t> frame) {
    deck::DVFrameBuilder builder(frame);
    deck::DVPicture picture;
    picture.isWide = m_take->aspect == TapeAspect::Aspect16By9;
    picture.startsRecording = m_frameOfTake == 0;
    builder.setPicture(picture);
    builder.setFrameCount(static_cast<unsigned>(m_frameOfTape % 12));
    builder.clearTimecode();
    builder.clearRecordingDateTime();
    if (m_take->timecodeCourse != TimecodeCourse::None)
        builder.setTimecode(m_timecode,
                            {.dropFrame = m_take->dropFrame, .colourFrame = false, .fieldBit = false});
    if (m_take->dateCourse != DateCourse::None)
        builder.setRecordingDateTime(m_take->dateCourse == DateCourse::Runs ? dateNow() : m_date);

    std::vector<TakeFaultKind> soundFaults;
    for (const auto& fault : m_take->faults) {
        if (m_frameOfTake < fault.firstFrame || m_frameOfTake > fault.lastFrame)
            continue;
        applyFault(fault, builder);
        soundFaults.push_back(fault.kind);
    }
    m_bytes = builder.bytes();
    for (const auto kind : soundFaults)
        spoilSound(kind, m_bytes);

    if (m_take->timecodeCourse != TimecodeCourse::None)
        advanceTimecode();
    ++m_frameOfTake;
    ++m_frameOfTape;
    ++m_framesSinceDate;
    return m_bytes;
}

void TapeStamp::applyFault(const TakeFault& fault, deck::DVFrameBuilder& builder) const {
    constexpr std::array kTimecodes{kTimecodePack};
    constexpr std::array kDates{kDatePack, kTimePack};
    deck::DVFrameBuilder misdated(builder);
    if (fault.kind == TakeFaultKind::WrongDate)
        misdated.setRecordingDateTime(fault.date);
    if (fault.sequences.empty() && fault.kind == TakeFaultKind::WrongDate)
        builder = misdated; // VAUX and AAUX as well
    if (fault.sequences.empty() && fault.kind == TakeFaultKind::NoDate)
        builder.clearRecordingDateTime();
    for (const unsigned sequence : sequencesOf(fault, builder)) {
        switch (fault.kind) {
        case TakeFaultKind::DamagedSequences:
            for (unsigned block = 1; block <= 5; ++block)
                builder.overwriteBlock(sequence, block);
            break;
        case TakeFaultKind::ConcealedBlocks:
            builder.concealVideoBlocks(sequence, 0, kVideoBlocks, kConcealed);
            break;
        case TakeFaultKind::NoTimecode:
            emptySubcodePacks(builder, sequence, kTimecodes);
            break;
        case TakeFaultKind::NoDate:
            emptySubcodePacks(builder, sequence, kDates);
            break;
        case TakeFaultKind::WrongDate:
            copySubcodePacks(misdated, builder, sequence);
            break;
        case TakeFaultKind::LostSound:
        case TakeFaultKind::NoSound:
            break; // in every sequence, once the packs are in place
        }
    }
}

} // namespace merro::platform::ffmpeg
