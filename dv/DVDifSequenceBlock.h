// A light view of one 80-byte DIF block of a frame (IEC 61834-2, SMPTE 314M: three ID bytes, then data).
//
// Belongs to the thread that made it. Holds a reference to the frame's bytes, so it may outlive whoever
// handed them in.
#pragma once

#include "platform/FrameBytes.h"

#include <cstdint>

namespace merro {

/// Section types: bits 7 to 5 of a block's first ID byte.
enum DIFSectionType : int {
    kDIFSectionHeader = 0,
    kDIFSectionSubcode = 1,
    kDIFSectionVaux = 2,
    kDIFSectionAudio = 3,
    kDIFSectionVideo = 4,
};

class DVDifSequenceBlock {
public:
    /// The block at `blockIndex` (0 to 149) of the sequence at `sequenceIndex`, its header decoded. Throws
    /// std::out_of_range when its ID bytes are not inside the frame. A null frame is allowed: all fields read
    /// 0.
    [[nodiscard]] static DVDifSequenceBlock initWithDataForSequenceIndexBlockIndex(platform::FrameBytes data,
                                                                                   unsigned sequenceIndex,
                                                                                   unsigned blockIndex);

    /// Looks at another frame, and decodes the block's header again also when it is the same one. Throws as
    /// above.
    void setData(platform::FrameBytes data);

    /// Reads the three ID bytes. Throws as above.
    void decodeBlock();
    void decodeHeader();

    /// Copies `length` bytes from byte `start` of the block (0 is its first ID byte); they may lie past the
    /// block's end. Throws std::out_of_range when they are not all inside the frame.
    void getBytesStartLength(std::uint8_t* destination, unsigned start, unsigned length) const;

    [[nodiscard]] int sectionType() const { return m_sectionType; }
    [[nodiscard]] unsigned blockNumber() const { return m_blockNumber; }       ///< as the block itself says
    [[nodiscard]] unsigned sequenceNumber() const { return m_sequenceNumber; } ///< as the block itself says
    [[nodiscard]] unsigned sequenceChannel() const { return m_sequenceChannel; }
    [[nodiscard]] unsigned sequenceIndex() const { return m_sequenceIndex; } ///< as given
    [[nodiscard]] unsigned blockIndex() const { return m_blockIndex; }       ///< as given
    [[nodiscard]] unsigned offset() const { return m_offset; }               ///< bytes from the frame's start

private:
    DVDifSequenceBlock(unsigned sequenceIndex, unsigned blockIndex)
        : m_sequenceIndex(sequenceIndex), m_blockIndex(blockIndex) {}

    platform::FrameBytes m_data;
    int m_sectionType = 0;
    unsigned m_blockNumber = 0;
    unsigned m_sequenceNumber = 0;
    unsigned m_sequenceChannel = 0;
    unsigned m_sequenceIndex = 0;
    unsigned m_blockIndex = 0;
    unsigned m_offset = 0;
};

} // namespace merro
