#include "dv/DVDifSequence.h"

#include "dv/DVConstants.h"
#include "platform/Log.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace merro {
namespace {

// Pack types of IEC 61834-4.
constexpr std::uint8_t kTimecodePack = 0x13;
constexpr std::uint8_t kRecordingDatePack = 0x62;
constexpr std::uint8_t kRecordingTimePack = 0x63;

constexpr std::size_t kPacksPerSubcodeBlock = 6;
constexpr unsigned kFirstSubcodePackByte = 6;
constexpr std::size_t kSyncBlockSize = 8;

using Pack = std::array<std::uint8_t, 5>;

Pack packAt(const DVDifSequenceBlock& block, unsigned byteOffset) {
    Pack pack{};
    block.getBytesStartLength(pack.data(), byteOffset, static_cast<unsigned>(pack.size()));
    return pack;
}

/// The packs of a subcode block's six sync blocks.
class SubcodePacks {
public:
    explicit SubcodePacks(const DVDifSequenceBlock& block) {
        block.getBytesStartLength(m_bytes.data(), kFirstSubcodePackByte,
                                  static_cast<unsigned>(m_bytes.size()));
    }

    [[nodiscard]] const std::uint8_t* at(std::size_t index) const {
        return m_bytes.data() + kSyncBlockSize * index;
    }

private:
    std::array<std::uint8_t, kSyncBlockSize*(kPacksPerSubcodeBlock - 1) + sizeof(Pack)> m_bytes{};
};

/// Two decimal digits; the bits of the tens that `tensMask` leaves out are flags.
int decimal(std::uint8_t byte, unsigned tensMask) {
    return static_cast<int>((byte & 0x0FU) + 10 * ((byte >> 4U) & tensMask));
}

int hoursOf(const std::uint8_t* pack) {
    return decimal(pack[4], 3);
}
int minutesOf(const std::uint8_t* pack) {
    return decimal(pack[3], 7);
}
int secondsOf(const std::uint8_t* pack) {
    return decimal(pack[2], 7);
}

void logTwoNumbers(const char* format, int first, int second) {
    std::array<char, 128> line{};
    std::snprintf(line.data(), line.size(), format, first, second);
    platform::processLog().line(line.data());
}

/// Where VAUX holds source and source control: the first packs of its first block in odd sequences, packs 39
/// and 40 (of 45) in even ones.
struct VauxPlaces {
    unsigned block;
    unsigned sourceControlByte;
    unsigned sourceByte;
};
constexpr VauxPlaces kPlacesInOddSequence{3, 8, 3};
constexpr VauxPlaces kPlacesInEvenSequence{5, 53, 48};

} // namespace

DVDifSequence::DVDifSequence(platform::FrameBytes data, unsigned sequenceIndex) {
    setSequenceIndex(sequenceIndex);
    setData(std::move(data));
}

std::shared_ptr<DVDifSequence> DVDifSequence::difSequenceWithDataForSequenceIndex(platform::FrameBytes data,
                                                                                  unsigned sequenceIndex) {
    return std::make_shared<DVDifSequence>(std::move(data), sequenceIndex);
}

void DVDifSequence::setSequenceIndex(unsigned sequenceIndex) {
    m_sequenceIndex = sequenceIndex;
    m_offset = sequenceIndex * BLOCKS_PER_SEQUENCE * BLOCKS_SIZE;
}

void DVDifSequence::setData(platform::FrameBytes data) {
    if (data.isSameBuffer(m_data))
        return;
    m_data = std::move(data);
    m_decoded = false;
}

void DVDifSequence::decodeSequence() {
    if (m_data.isNull()) {
        m_decoded = false;
        return;
    }
    if (m_decoded)
        return;
    decodeSequenceBasics();
    decodeSubCodeSection();
    decodeVauxSection();
    m_decoded = true;
}

void DVDifSequence::decodeTimecode() {
    if (m_data.isNull())
        return;
    decodeSequenceBasics();
    readLastTimecodePack();
}

void DVDifSequence::setUndecoded() {
    m_captureDateTime = nullptr;
    m_decoded = false;
}

void DVDifSequence::reDecodeSequence() {
    setUndecoded();
    decodeSequence();
}

bool DVDifSequence::containsExpectedSections() const {
    const auto blocks = static_cast<unsigned>(
        std::min<std::size_t>(m_data.size() / BLOCKS_SIZE, static_cast<std::size_t>(BLOCKS_PER_SEQUENCE)));
    if (m_data.isNull() || blocks == 0)
        return false;
    const auto isExpected = [](unsigned index, int type) {
        if (index == 0)
            return type == kDIFSectionHeader;
        if (index < 3)
            return type == kDIFSectionSubcode;
        if (index < 6)
            return type == kDIFSectionVaux;
        return type == kDIFSectionAudio || type == kDIFSectionVideo;
    };
    for (unsigned index = 0; index < blocks; ++index) {
        if (!isExpected(index, getBlockAt(index).sectionType()))
            return false;
    }
    return true;
}

// The number that the header block gave, not sequenceIndex: where a damaged header names another sequence, a
// host sees the timecode and date of that other sequence.
DVDifSequenceBlock DVDifSequence::getBlockAt(unsigned blockIndex) const {
    return DVDifSequenceBlock::initWithDataForSequenceIndexBlockIndex(m_data, m_sequenceNumber, blockIndex);
}

void DVDifSequence::decodeSequenceBasics() {
    std::array<std::uint8_t, 4> start{};
    m_data.getBytes(start.data(), m_offset, start.size());
    m_sectionType = (start[0] & 0xE0) >> 5;
    m_sequenceChannel = (start[1] & 0x08U) >> 3;
    m_sequenceNumber = (start[1] & 0xF0U) >> 4;
    m_sequenceFlag = start[3] >> 7;
    m_timeCode.mType = m_sequenceFlag == 0 ? kSMPTETimeType30Drop : kSMPTETimeType25;
    m_systemOk = true;
}

void DVDifSequence::decodeSubCodeSection() {
    const DVDifSequenceBlock first = getBlockAt(1);
    const DVDifSequenceBlock second = getBlockAt(2);
    if (first.sectionType() == kDIFSectionSubcode && second.sectionType() == kDIFSectionSubcode) {
        decodeSubCodeSection(first);
        decodeSubCodeSection(second);
    } else {
        logTwoNumbers("Cannot decode subcode for SC0 and SC1 of type %d and %d", first.sectionType(),
                      second.sectionType());
    }
}

void DVDifSequence::decodeSubCodeSection(const DVDifSequenceBlock& block) {
    const SubcodePacks packs(block);
    for (std::size_t index = 0; index < kPacksPerSubcodeBlock; ++index) {
        const std::uint8_t* const pack = packs.at(index);
        if (pack[0] == kTimecodePack)
            readTimecodePack(pack);
        else if (pack[0] == kRecordingDatePack)
            readRecordingDatePack(pack);
        else if (pack[0] == kRecordingTimePack)
            readRecordingTimePack(pack);
    }
}

// Backwards: the last timecode pack of the section is the one that stays.
void DVDifSequence::readLastTimecodePack() {
    const std::array blocks{getBlockAt(1), getBlockAt(2)};
    if (blocks[0].sectionType() != kDIFSectionSubcode || blocks[1].sectionType() != kDIFSectionSubcode)
        return;
    for (std::size_t block = blocks.size(); block-- > 0;) {
        const SubcodePacks packs(blocks[block]);
        for (std::size_t index = kPacksPerSubcodeBlock; index-- > 0;) {
            if (packs.at(index)[0] == kTimecodePack)
                return readTimecodePack(packs.at(index));
        }
    }
}

// Of several timecode packs the last one stays, of several date or time packs the first.
void DVDifSequence::readTimecodePack(const std::uint8_t* pack) {
    m_timeCode.mHours = static_cast<std::int16_t>(hoursOf(pack));
    m_timeCode.mMinutes = static_cast<std::int16_t>(minutesOf(pack));
    m_timeCode.mSeconds = static_cast<std::int16_t>(secondsOf(pack));
    m_timeCode.mFrames = static_cast<std::int16_t>(decimal(pack[1], 3));
    m_timecodeOk = true;
}

void DVDifSequence::readRecordingDatePack(const std::uint8_t* pack) {
    if (m_captureDateTime && m_captureDateTime->isDateSet())
        return;
    const int twoDigitYear = decimal(pack[4], 0x0F);
    // The packs leave the century out. A camera of 2025 reads as 1925; a host that catalogues the tapes of
    // the format's own years sees them right.
    const int year = twoDigitYear < 25 ? 2000 + twoDigitYear : 1900 + twoDigitYear;
    const int month = decimal(pack[3], 1);
    const int day = decimal(pack[2], 3);
    if (m_captureDateTime)
        m_captureDateTime->setDateWithYearMonthDay(year, month, day);
    else
        setCaptureDateTime(DVFrameCaptureDateTime::dateWithYearMonthDay(year, month, day));
}

void DVDifSequence::readRecordingTimePack(const std::uint8_t* pack) {
    if (m_captureDateTime && m_captureDateTime->isTimeSet())
        return;
    const int hours = hoursOf(pack);
    const int minutes = minutesOf(pack);
    const int seconds = secondsOf(pack);
    if (m_captureDateTime)
        m_captureDateTime->setTimeWithHoursMinutesSeconds(hours, minutes, seconds);
    else
        setCaptureDateTime(DVFrameCaptureDateTime::timeWithHoursMinutesSeconds(hours, minutes, seconds));
}

void DVDifSequence::decodeVauxSection() {
    const VauxPlaces& places = m_sequenceIndex % 2 == 1 ? kPlacesInOddSequence : kPlacesInEvenSequence;

    const DVDifSequenceBlock controlBlock = getBlockAt(places.block);
    if (controlBlock.sectionType() == kDIFSectionVaux)
        decodeVauxSourceControlPackAtByteOffset(controlBlock, places.sourceControlByte);
    else
        logTwoNumbers("Cannot decode Vaux Source Control Pack for VA of type %d at block number %d",
                      controlBlock.sectionType(), static_cast<int>(places.block));

    const DVDifSequenceBlock sourceBlock = getBlockAt(places.block);
    if (sourceBlock.sectionType() == kDIFSectionVaux)
        decodeVauxSourcePackAtByteOffset(sourceBlock, places.sourceByte);
    else
        logTwoNumbers("Cannot decode Vaux Source Pack for VA of type %d at block number %d",
                      sourceBlock.sectionType(), static_cast<int>(places.block));
}

void DVDifSequence::decodeVauxSourceControlPackAtByteOffset(const DVDifSequenceBlock& block,
                                                            unsigned byteOffset) {
    const Pack pack = packAt(block, byteOffset);
    m_aspectRatio = (pack[2] & 0x07) == 0 ? 1 : 0;
    if ((pack[3] & 0x20) == 0)
        m_stillPicture = true;
    // The standard's bit says "interlaced" when it is 1. A host that reads this as "progressive" has it right
    // for ordinary tapes, and would see every frame's flag change if the sense were turned round.
    if ((pack[3] & 0x10) == 0)
        m_interlaced = true;
}

void DVDifSequence::decodeVauxSourcePackAtByteOffset(const DVDifSequenceBlock& block, unsigned byteOffset) {
    const int signalType = packAt(block, byteOffset)[3] & 0x1F;
    m_pixelSampling = signalType == 0 || signalType == 4 ? signalType : -1;
}

void DVDifSequence::setCaptureDateTime(DVFrameCaptureDateTimeRef captureDateTime) {
    m_captureDateTime = std::move(captureDateTime);
}

platform::DateRef DVDifSequence::date() const {
    return m_captureDateTime ? m_captureDateTime->date() : nullptr;
}

} // namespace merro
