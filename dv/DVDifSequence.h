// One DIF sequence of a DV frame (25 Mb/s, IEC 61834 / SMPTE 314M), decoded: tape timecode, recording date
// and time, television system, and what the VAUX section says about the picture.
//
// Made for one frame and one index, decoded once and thrown away, all on one thread. The recording date-time
// object is shared with whoever asks for it. Blocks of a wrong section type cost one log line and leave their
// fields as they were; the only thing thrown is std::out_of_range, for reading past the end of the frame.
#pragma once

#include "dv/DVDifSequenceBlock.h"
#include "platform/Date.h"
#include "platform/FrameBytes.h"
#include "platform/SMPTETime.h"
#include "timecode/DVFrameCaptureDateTime.h"

#include <memory>
#include <string_view>

namespace merro {

class DVDifSequence {
public:
    /// Nothing is decoded yet. The frame may be null.
    DVDifSequence(platform::FrameBytes data, unsigned sequenceIndex);

    [[nodiscard]] static std::shared_ptr<DVDifSequence>
    difSequenceWithDataForSequenceIndex(platform::FrameBytes data, unsigned sequenceIndex);

    /// Moves to another sequence of the frame; what has been decoded stays.
    void setSequenceIndex(unsigned sequenceIndex);

    /// A frame in another buffer makes the next decodeSequence run again; the same buffer changes nothing.
    void setData(platform::FrameBytes data);

    /// Reads header, subcode and VAUX, once; later calls do nothing. Does nothing on a null frame. Throws
    /// std::out_of_range when the sequence, or the one its header block names, is not inside the frame;
    /// decoded() is false then.
    void decodeSequence();

    /// As far as the tape timecode goes, decodeSequence without its log lines and without making a recording
    /// date: sets timeCode, timecodeOk, systemOk and the header's fields. Allocates nothing. Throws as
    /// decodeSequence.
    void decodeTimecode();

    /// Forgets the recording date and makes the next decodeSequence run again. The other fields stay.
    void setUndecoded();
    void reDecodeSequence();

    /// Whether the blocks, up to 150 or as many as the frame holds, have the section types of a DIF sequence:
    /// header, two of subcode, three of VAUX, then audio and video. They are taken, and may throw, as by
    /// getBlockAt.
    [[nodiscard]] bool containsExpectedSections() const;

    /// The block at a position of the sequence whose number the header block gave (0 before decoding). Throws
    /// std::out_of_range when it is not inside the frame.
    [[nodiscard]] DVDifSequenceBlock getBlockAt(unsigned blockIndex) const;

    // The steps of decodeSequence, in its order. Each throws std::out_of_range past the frame's end.
    void decodeSequenceBasics();
    void decodeSubCodeSection();
    void decodeVauxSection();
    void decodeSubCodeSection(const DVDifSequenceBlock& block);
    void decodeVauxSourceControlPackAtByteOffset(const DVDifSequenceBlock& block, unsigned byteOffset);
    void decodeVauxSourcePackAtByteOffset(const DVDifSequenceBlock& block, unsigned byteOffset);

    [[nodiscard]] unsigned sequenceIndex() const { return m_sequenceIndex; }
    [[nodiscard]] unsigned offset() const { return m_offset; }      ///< bytes from the frame's start
    [[nodiscard]] int sectionType() const { return m_sectionType; } ///< of the first block; 0 is right
    [[nodiscard]] unsigned sequenceChannel() const { return m_sequenceChannel; }
    [[nodiscard]] unsigned sequenceNumber() const { return m_sequenceNumber; } ///< as the header block says
    [[nodiscard]] unsigned sequenceFlag() const { return m_sequenceFlag; }     ///< 0: 525/60, 1: 625/50

    [[nodiscard]] SMPTETime timeCode() const { return m_timeCode; }
    [[nodiscard]] bool timecodeOk() const { return m_timecodeOk; } ///< a timecode pack was found
    [[nodiscard]] bool systemOk() const { return m_systemOk; }     ///< timeCode().mType tells the system

    /// Recording date and time, either of which may be missing; null when both are.
    [[nodiscard]] const DVFrameCaptureDateTimeRef& captureDateTime() const { return m_captureDateTime; }
    void setCaptureDateTime(DVFrameCaptureDateTimeRef captureDateTime);

    /// The instant of captureDateTime in the system time zone; null unless both date and time were found.
    [[nodiscard]] platform::DateRef date() const;

    [[nodiscard]] int aspectRatio() const { return m_aspectRatio; } ///< 0: 16/9, 1: 4/3
    [[nodiscard]] int pixelSampling() const {
        return m_pixelSampling;
    } ///< 0: 25 Mb/s, 4: 50 Mb/s, -1 unknown
    [[nodiscard]] bool stillPicture() const { return m_stillPicture; }
    [[nodiscard]] bool interlaced() const { return m_interlaced; } ///< the inverse of the pack's flag
    [[nodiscard]] bool decoded() const { return m_decoded; }
    [[nodiscard]] std::string_view sectionCode() const { return "UNSET"; }

private:
    void readLastTimecodePack();
    void readTimecodePack(const std::uint8_t* pack);
    void readRecordingDatePack(const std::uint8_t* pack);
    void readRecordingTimePack(const std::uint8_t* pack);

    platform::FrameBytes m_data;
    int m_sectionType = 0;
    unsigned m_sequenceChannel = 0;
    unsigned m_sequenceNumber = 0;
    unsigned m_sequenceFlag = 0;
    unsigned m_sequenceIndex = 0;
    unsigned m_offset = 0;
    SMPTETime m_timeCode;
    bool m_timecodeOk = false;
    bool m_systemOk = false;
    DVFrameCaptureDateTimeRef m_captureDateTime;
    int m_pixelSampling = -1;
    int m_aspectRatio = 0;
    bool m_stillPicture = false;
    bool m_interlaced = false;
    bool m_decoded = false;
};

} // namespace merro
