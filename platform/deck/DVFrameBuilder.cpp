#include "platform/deck/DVFrameBuilder.h"

#include "dv/DVConstants.h"
#include "dv/DVDifSequenceBlock.h"

#include <algorithm>
#include <stdexcept>

namespace merro::platform::deck {
namespace {

// Pack types of IEC 61834-4. The audio section has date and time packs of its own.
constexpr std::uint8_t timecodeType = 0x13;
constexpr std::uint8_t audioSourceType = 0x50;
constexpr std::uint8_t audioDateType = 0x52;
constexpr std::uint8_t audioTimeType = 0x53;
constexpr std::uint8_t videoSourceType = 0x60;
constexpr std::uint8_t videoSourceControlType = 0x61;
constexpr std::uint8_t recordingDateType = 0x62;
constexpr std::uint8_t recordingTimeType = 0x63;

// A sequence: header, two subcode blocks, three of VAUX, then nine times one audio block and 15 video blocks.
constexpr unsigned firstSubcodeBlock = 1;
constexpr unsigned firstVauxBlock = 3;
constexpr unsigned firstAudioBlock = 6;
constexpr unsigned audioBlocks = 9;
constexpr unsigned videoBlocksPerAudioBlock = 15;
constexpr unsigned videoBlocks = audioBlocks * videoBlocksPerAudioBlock;

constexpr unsigned syncBlocksPerBlock = 6;
constexpr unsigned syncBlocks = 12;
constexpr unsigned syncBlockSize = 8;
constexpr unsigned idSize = 3;
constexpr unsigned packSize = 5;
constexpr unsigned packsPerVauxBlock = 15;
constexpr unsigned vauxPacks = 3 * packsPerVauxBlock;

constexpr unsigned audioBlockIndex(unsigned audioBlock) {
    return firstAudioBlock + audioBlock * (1 + videoBlocksPerAudioBlock);
}

constexpr unsigned videoBlockIndex(unsigned videoBlock) {
    return audioBlockIndex(videoBlock / videoBlocksPerAudioBlock) + 1 + videoBlock % videoBlocksPerAudioBlock;
}

/// Where a sequence's VAUX has source, source control, date and time (packs 0 to 3 of these): the start of
/// its first block in odd sequences, from pack 39 (of 45) on in even ones.
struct VauxPlace {
    unsigned block;
    unsigned byte;
};
constexpr VauxPlace vauxPlace(unsigned sequence, unsigned pack) {
    return sequence % 2 == 1 ? VauxPlace{firstVauxBlock, idSize + packSize * pack}
                             : VauxPlace{firstVauxBlock + 2, idSize + packSize * (9 + pack)};
}

/// The audio block whose pack is source, source control, date and time (0 to 3 of these).
constexpr unsigned audioBlockOfPack(unsigned sequence, unsigned pack) {
    return audioBlockIndex((sequence % 2 == 1 ? 0U : 3U) + pack);
}

std::uint8_t byteOf(unsigned value) {
    return static_cast<std::uint8_t>(value);
}

/// Two decimal digits, the tens in the bits that `tensMask` names; the bits of `flags` above them.
std::uint8_t decimal(int number, unsigned tensMask, unsigned flags) {
    const auto digits = static_cast<unsigned>(((number % 100) + 100) % 100);
    return byteOf(flags | ((digits / 10) & tensMask) << 4 | digits % 10);
}

void write(std::span<std::uint8_t> destination, const DVPack& pack) {
    std::ranges::copy(pack, destination.begin());
}

void writeId(std::span<std::uint8_t> block, int sectionType, unsigned sequence, unsigned blockNumber) {
    constexpr unsigned reservedAndNoCount = 0x1F;
    block[0] = byteOf(static_cast<unsigned>(sectionType) << 5 | reservedAndNoCount);
    block[1] = byteOf(sequence << 4 | 0x07);
    block[2] = byteOf(blockNumber);
}

/// A mid-grey macroblock: in each of its six DCT blocks a DC of 0 and the end of the block (SMPTE 314M).
void writeGreyPicture(std::span<std::uint8_t> block) {
    constexpr std::array<unsigned, 6> dctBlockStarts{4, 18, 32, 46, 60, 70};
    constexpr std::uint8_t goodAndFineQuantiser = 0x0F;
    block[3] = goodAndFineQuantiser;
    for (const unsigned start : dctBlockStarts) {
        block[start] = 0x00;
        block[start + 1] = 0x06;
    }
}

} // namespace

DVFrameBuilder::DVFrameBuilder(DVSystem system)
    : m_system(system),
      m_bytes(system == DVSystem::System525_60 ? FRAME_SIZE_525_60 : FRAME_SIZE_625_50, std::uint8_t{0xFF}) {
    for (unsigned sequence = 0; sequence < sequenceCount(); ++sequence)
        writeEmptySequence(sequence);
}

DVFrameBuilder::DVFrameBuilder(std::span<const std::uint8_t> frame)
    : m_system(frame.size() == FRAME_SIZE_525_60 ? DVSystem::System525_60 : DVSystem::System625_50),
      m_bytes(frame.begin(), frame.end()) {
    if (frame.size() != FRAME_SIZE_525_60 && frame.size() != FRAME_SIZE_625_50)
        throw std::out_of_range("a DV frame has 120000 or 144000 bytes");
}

unsigned DVFrameBuilder::sequenceCount() const {
    return static_cast<unsigned>(m_system == DVSystem::System525_60 ? DIF_SEQ_COUNT_525_60
                                                                    : DIF_SEQ_COUNT_625_50);
}

std::span<std::uint8_t> DVFrameBuilder::block(unsigned sequence, unsigned blockIndex) {
    if (sequence >= sequenceCount() || blockIndex >= BLOCKS_PER_SEQUENCE)
        throw std::out_of_range("a DV frame has no such block");
    const std::size_t index = std::size_t{sequence} * BLOCKS_PER_SEQUENCE + blockIndex;
    return std::span(m_bytes).subspan(index * BLOCKS_SIZE, BLOCKS_SIZE);
}

std::span<std::uint8_t> DVFrameBuilder::syncBlockPack(unsigned sequence, unsigned syncBlock) {
    if (syncBlock >= syncBlocks)
        throw std::out_of_range("a DIF sequence has no such subcode sync block");
    const unsigned start = idSize + 3 + syncBlockSize * (syncBlock % syncBlocksPerBlock);
    return block(sequence, firstSubcodeBlock + syncBlock / syncBlocksPerBlock).subspan(start, packSize);
}

std::span<std::uint8_t> DVFrameBuilder::vauxPack(unsigned sequence, unsigned index) {
    const unsigned start = idSize + packSize * (index % packsPerVauxBlock);
    return block(sequence, firstVauxBlock + index / packsPerVauxBlock).subspan(start, packSize);
}

void DVFrameBuilder::writeEmptySequence(unsigned sequence) {
    const auto header = block(sequence, 0);
    writeId(header, kDIFSectionHeader, sequence, 0);
    header[3] = m_system == DVSystem::System525_60 ? 0x3F : 0xBF;
    std::ranges::fill(header.subspan(4, 4), std::uint8_t{0x78}); // consumer format, all areas transmitted

    for (unsigned index = 0; index < 2; ++index)
        writeId(block(sequence, firstSubcodeBlock + index), kDIFSectionSubcode, sequence, index);
    for (unsigned index = 0; index < syncBlocks; ++index) {
        // The sync block's ID: first half of the frame, application 0 where one is named, no track number,
        // its number.
        const std::span<std::uint8_t> pack = syncBlockPack(sequence, index);
        std::uint8_t* const id = pack.data() - 3;
        const bool namesApplication = index == 0 || index == 6 || index == 11;
        id[0] = byteOf((isSecondHalf(sequence) ? 0x00U : 0x80U) | (namesApplication ? 0x0FU : 0x7FU));
        id[1] = byteOf(0xF0U | index);
    }
    for (unsigned index = 0; index < 3; ++index)
        writeId(block(sequence, firstVauxBlock + index), kDIFSectionVaux, sequence, index);
    for (unsigned index = 0; index < audioBlocks; ++index) {
        const auto audio = block(sequence, audioBlockIndex(index));
        writeId(audio, kDIFSectionAudio, sequence, index);
        std::ranges::fill(audio.subspan(idSize + packSize), std::uint8_t{0});
    }
    for (unsigned index = 0; index < videoBlocks; ++index) {
        const auto video = block(sequence, videoBlockIndex(index));
        writeId(video, kDIFSectionVideo, sequence, index);
        writeGreyPicture(video);
    }
}

void DVFrameBuilder::setTimecode(const SMPTETime& timecode, DVTimecodeFlags flags) {
    constexpr std::array<unsigned, DIF_SEQ_COUNT_MAX> all{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11};
    setTimecodeInSequences(timecode, std::span(all).first(sequenceCount()), flags);
}

void DVFrameBuilder::setTimecodeInSequences(const SMPTETime& timecode, std::span<const unsigned> sequences,
                                            DVTimecodeFlags flags) {
    const DVPack pack{
        timecodeType,
        decimal(timecode.mFrames, 3, (flags.colourFrame ? 0x80U : 0U) | (flags.dropFrame ? 0x40U : 0U)),
        decimal(timecode.mSeconds, 7, flags.fieldBit ? 0x80U : 0U), decimal(timecode.mMinutes, 7, 0),
        decimal(timecode.mHours, 3, 0)};
    for (const unsigned sequence : sequences)
        writeTimecode(sequence, pack);
}

void DVFrameBuilder::writeTimecode(unsigned sequence, const DVPack& pack) {
    for (unsigned index = 0; index < syncBlocks; ++index) {
        const auto destination = syncBlockPack(sequence, index);
        const bool isMain = index % 3 == 0;
        const bool isFree = !isSecondHalf(sequence) && destination[0] == emptyPack[0];
        if (isMain || isFree || destination[0] == timecodeType)
            write(destination, pack);
    }
}

void DVFrameBuilder::setRecordingDateTime(const CalendarFields& fields, DateSequences sequences) {
    setRecordingDate(fields.year, fields.month, fields.day, sequences);
    setRecordingTime(fields.hours, fields.minutes, fields.seconds, sequences);
}

void DVFrameBuilder::setRecordingDate(int year, int month, int day, DateSequences sequences) {
    // No time zone; the day of the week left open.
    replaceDatePacks(
        {recordingDateType, 0xFF, decimal(day, 3, 0xC0), decimal(month, 1, 0xE0), decimal(year, 0x0F, 0)},
        sequences);
}

void DVFrameBuilder::setRecordingTime(int hours, int minutes, int seconds, DateSequences sequences) {
    replaceDatePacks({recordingTimeType, 0xFF, decimal(seconds, 7, 0x80), decimal(minutes, 7, 0x80),
                      decimal(hours, 3, 0xC0)},
                     sequences);
}

void DVFrameBuilder::replaceDatePacks(const DVPack& pack, DateSequences sequences) {
    const bool isDate = pack[0] == recordingDateType;
    const unsigned place = isDate ? 2 : 3;
    DVPack audioPack = pack;
    audioPack[0] = isDate ? audioDateType : audioTimeType;

    for (unsigned sequence = 0; sequence < sequenceCount(); ++sequence) {
        const bool hasDate = sequences == DateSequences::All || isSecondHalf(sequence);
        for (unsigned index = 0; index < syncBlocks; ++index) {
            const auto destination = syncBlockPack(sequence, index);
            if (hasDate && index % 3 == place - 1)
                write(destination, pack);
            else if (destination[0] == pack[0])
                write(destination, emptyPack);
        }
        replaceVauxPacks(sequence, place, pack);
        const bool hasSound = block(sequence, audioBlockOfPack(sequence, 0))[idSize] == audioSourceType;
        for (unsigned index = 0; index < audioBlocks; ++index) {
            const auto destination = block(sequence, audioBlockIndex(index)).subspan(idSize);
            const bool isPlace = audioBlockIndex(index) == audioBlockOfPack(sequence, place);
            if ((hasSound && isPlace) || destination[0] == audioPack[0])
                write(destination, audioPack);
        }
    }
}

void DVFrameBuilder::replaceVauxPacks(unsigned sequence, unsigned place, const DVPack& pack) {
    const auto [vauxBlock, vauxByte] = vauxPlace(sequence, place);
    write(block(sequence, vauxBlock).subspan(vauxByte), pack);
    // Encoders repeat the packs in places of their own; players differ in which they read.
    for (unsigned index = 0; index < vauxPacks; ++index) {
        const auto destination = vauxPack(sequence, index);
        if (destination[0] == pack[0])
            write(destination, pack);
    }
}

void DVFrameBuilder::setPicture(const DVPicture& picture) {
    const unsigned fiftyHertz = m_system == DVSystem::System625_50 ? 0x20 : 0x00;
    const DVPack source{videoSourceType, 0xFF, 0xFF, byteOf(fiftyHertz), 0xFF}; // a camera, 25 Mb/s, colour
    const DVPack control{
        videoSourceControlType, 0x3F, // copying free, an original recording
        byteOf((picture.startsRecording ? 0x00U : 0x80U) | 0x48U | (picture.isWide ? 2U : 0U)),
        byteOf(0xCCU | (picture.isStill ? 0x00U : 0x20U) | (picture.isInterlaced ? 0x10U : 0U)), 0xFF};
    for (unsigned sequence = 0; sequence < sequenceCount(); ++sequence) {
        replaceVauxPacks(sequence, 0, source);
        replaceVauxPacks(sequence, 1, control);
    }
}

void DVFrameBuilder::clearTimecode() {
    emptyPacks(std::array{timecodeType});
}

void DVFrameBuilder::clearRecordingDateTime() {
    emptyPacks(std::array{recordingDateType, recordingTimeType, audioDateType, audioTimeType});
}

void DVFrameBuilder::emptyPacks(std::span<const std::uint8_t> types) {
    const auto empty = [types](std::span<std::uint8_t> pack) {
        if (std::ranges::find(types, pack[0]) != types.end())
            write(pack, emptyPack);
    };
    for (unsigned sequence = 0; sequence < sequenceCount(); ++sequence) {
        for (unsigned index = 0; index < syncBlocks; ++index)
            empty(syncBlockPack(sequence, index));
        for (unsigned index = 0; index < vauxPacks; ++index)
            empty(vauxPack(sequence, index));
        for (unsigned index = 0; index < audioBlocks; ++index)
            empty(block(sequence, audioBlockIndex(index)).subspan(idSize, packSize));
    }
}

void DVFrameBuilder::setFrameCount(unsigned count) {
    for (unsigned sequence = 0; sequence < sequenceCount(); ++sequence) {
        for (unsigned index = firstVauxBlock; index < BLOCKS_PER_SEQUENCE; ++index) {
            std::uint8_t& id = block(sequence, index)[0];
            id = byteOf((id & 0xF0U) | (count & 0x0FU));
        }
    }
}

DVPack DVFrameBuilder::subcodePack(unsigned sequence, unsigned syncBlock) {
    DVPack pack{};
    std::ranges::copy(syncBlockPack(sequence, syncBlock), pack.begin());
    return pack;
}

void DVFrameBuilder::setSubcodePack(unsigned sequence, unsigned syncBlock, const DVPack& pack) {
    write(syncBlockPack(sequence, syncBlock), pack);
}

void DVFrameBuilder::overwriteBlock(unsigned sequence, unsigned blockIndex, std::uint8_t value) {
    std::ranges::fill(block(sequence, blockIndex), value);
}

void DVFrameBuilder::renumberHeader(unsigned sequence, unsigned claimedNumber) {
    std::uint8_t& id = block(sequence, 0)[1];
    id = byteOf((id & 0x0FU) | (claimedNumber & 0x0FU) << 4);
}

void DVFrameBuilder::concealVideoBlocks(unsigned sequence, unsigned firstVideoBlock, unsigned count,
                                        unsigned status) {
    if (firstVideoBlock > videoBlocks || count > videoBlocks - firstVideoBlock)
        throw std::out_of_range("a DIF sequence has no such video block");
    for (unsigned index = firstVideoBlock; index < firstVideoBlock + count; ++index) {
        std::uint8_t& errorStatus = block(sequence, videoBlockIndex(index))[3];
        errorStatus = byteOf((errorStatus & 0x0FU) | (status & 0x0FU) << 4);
    }
}

} // namespace merro::platform::deck
