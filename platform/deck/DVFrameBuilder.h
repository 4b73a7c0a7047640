// Makes and stamps DV frames (25 Mb/s, IEC 61834 / SMPTE 314M): real DIF structure for tapes made in memory
// and for tape files.
//
// A builder works on bytes of its own and belongs to one thread; frame() hands out copies of them. It stamps
// frames that it made itself, that an encoder made, or that come from a camera. Sequences are counted from 0
// to 9 (525/60) or 11 (625/50); a sequence, block or sync block that does not exist is std::out_of_range.
#pragma once

#include "platform/Date.h"
#include "platform/FrameBytes.h"
#include "platform/SMPTETime.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace merro::platform::deck {

enum class DVSystem { System525_60, System625_50 };

/// Which sequences carry recording date and time in their subcode.
enum class DateSequences {
    SecondHalf, ///< as cameras do: 5 to 9 of 10, 6 to 11 of 12
    All,
};

/// A pack: its type, then four bytes.
using DVPack = std::array<std::uint8_t, 5>;
inline constexpr DVPack emptyPack{0xFF, 0xFF, 0xFF, 0xFF, 0xFF};

/// The bits above a timecode's digits.
struct DVTimecodeFlags {
    bool dropFrame = false;
    bool colourFrame = false;
    bool fieldBit = false; ///< bit 7 of the seconds byte
};

/// What VAUX source (60) and source control (61) say.
struct DVPicture {
    bool isWide = false;          ///< 16:9 (full format), else 4:3
    bool isStill = false;         ///< the same picture as the frame before
    bool isInterlaced = true;     ///< by the standard; DVDifSequence::interlaced is the inverse
    bool startsRecording = false; ///< the frame is the first of a recording
};

class DVFrameBuilder {
public:
    /// A frame with the IDs of all blocks right, a grey picture, silence, and every pack empty.
    explicit DVFrameBuilder(DVSystem system);

    /// A copy of a frame of 120000 or 144000 bytes; any other length is std::out_of_range.
    explicit DVFrameBuilder(std::span<const std::uint8_t> frame);

    [[nodiscard]] DVSystem system() const { return m_system; }
    [[nodiscard]] unsigned sequenceCount() const;
    [[nodiscard]] const std::vector<std::uint8_t>& bytes() const { return m_bytes; }
    [[nodiscard]] FrameBytes frame() const { return FrameBytes::taking(m_bytes); }

    /// Writes the timecode into the subcode of every sequence: all twelve sync blocks of the first half,
    /// every third one of the second, as cameras do. Packs of another kind in the first half stay. Only
    /// hours, minutes, seconds and frames are used, as two decimal digits each.
    void setTimecode(const SMPTETime& timecode, DVTimecodeFlags flags = {});
    /// The same in some sequences only: a stray timecode.
    void setTimecodeInSequences(const SMPTETime& timecode, std::span<const unsigned> sequences,
                                DVTimecodeFlags flags = {});

    /// Replaces every recording date and time of the frame: in the subcode of `sequences`, in the VAUX of
    /// every sequence, and in AAUX where the frame has sound. The year is cut to two digits, the rest to what
    /// a pack can say (day 0 and month 0 can be said).
    void setRecordingDateTime(const CalendarFields& fields,
                              DateSequences sequences = DateSequences::SecondHalf);
    /// One half of it; the other half stays as it is.
    void setRecordingDate(int year, int month, int day, DateSequences sequences = DateSequences::SecondHalf);
    void setRecordingTime(int hours, int minutes, int seconds,
                          DateSequences sequences = DateSequences::SecondHalf);

    /// Writes VAUX source and source control of every sequence, and replaces them where the frame repeats
    /// them.
    void setPicture(const DVPicture& picture);

    /// Empties every timecode pack, every recording date and time pack.
    void clearTimecode();
    void clearRecordingDateTime();

    /// The count that grows by one from frame to frame, 0 to 11 and over again; 15 for none. In the first ID
    /// byte of every VAUX, audio and video block.
    void setFrameCount(unsigned count);

    /// The pack of a subcode sync block, 0 to 11 within a sequence.
    [[nodiscard]] DVPack subcodePack(unsigned sequence, unsigned syncBlock);
    void setSubcodePack(unsigned sequence, unsigned syncBlock, const DVPack& pack);

    // Damage.

    /// Fills a whole block (0 is the header block), ID bytes included.
    void overwriteBlock(unsigned sequence, unsigned blockIndex, std::uint8_t value = 0xFF);
    /// Makes the header block of a sequence say that it is another one (0 to 15).
    void renumberHeader(unsigned sequence, unsigned claimedNumber);
    /// Marks `count` video blocks of a sequence (135 of them) as concealed, from `firstVideoBlock` on: the
    /// error status `status` (0 to 15) into the high nibble of byte 3. Their pictures stay.
    void concealVideoBlocks(unsigned sequence, unsigned firstVideoBlock, unsigned count, unsigned status);

private:
    [[nodiscard]] std::span<std::uint8_t> block(unsigned sequence, unsigned blockIndex);
    [[nodiscard]] std::span<std::uint8_t> syncBlockPack(unsigned sequence, unsigned syncBlock);
    [[nodiscard]] std::span<std::uint8_t> vauxPack(unsigned sequence, unsigned index);
    [[nodiscard]] bool isSecondHalf(unsigned sequence) const { return sequence >= sequenceCount() / 2; }
    void writeEmptySequence(unsigned sequence);
    void writeTimecode(unsigned sequence, const DVPack& pack);
    void replaceDatePacks(const DVPack& pack, DateSequences sequences);
    void replaceVauxPacks(unsigned sequence, unsigned place, const DVPack& pack);
    void emptyPacks(std::span<const std::uint8_t> types);

    DVSystem m_system;
    std::vector<std::uint8_t> m_bytes;
};

} // namespace merro::platform::deck
