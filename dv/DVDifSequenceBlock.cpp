#include "dv/DVDifSequenceBlock.h"

#include "dv/DVConstants.h"

#include <array>
#include <utility>

namespace merro {

DVDifSequenceBlock DVDifSequenceBlock::initWithDataForSequenceIndexBlockIndex(platform::FrameBytes data,
                                                                              unsigned sequenceIndex,
                                                                              unsigned blockIndex) {
    DVDifSequenceBlock block(sequenceIndex, blockIndex);
    block.setData(std::move(data));
    return block;
}

void DVDifSequenceBlock::setData(platform::FrameBytes data) {
    m_data = std::move(data);
    decodeBlock();
}

void DVDifSequenceBlock::decodeBlock() {
    decodeHeader();
}

void DVDifSequenceBlock::decodeHeader() {
    m_offset = (BLOCKS_PER_SEQUENCE * m_sequenceIndex + m_blockIndex) * BLOCKS_SIZE;
    if (m_data.isNull())
        return;
    std::array<std::uint8_t, 3> id{};
    m_data.getBytes(id.data(), m_offset, id.size());
    m_sectionType = id[0] >> 5;
    m_sequenceChannel = (id[1] & 0x08U) >> 3;
    m_sequenceNumber = id[1] >> 4;
    m_blockNumber = id[2];
}

void DVDifSequenceBlock::getBytesStartLength(std::uint8_t* destination, unsigned start,
                                             unsigned length) const {
    m_data.getBytes(destination, std::size_t{m_offset} + start, length);
}

} // namespace merro
