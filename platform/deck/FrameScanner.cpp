#include "platform/deck/FrameScanner.h"

#include "dv/DVConstants.h"

#include <algorithm>

namespace merro::platform::deck {

namespace {

constexpr std::size_t blockSize = BLOCKS_SIZE;
constexpr std::size_t sequenceSize = SEQUENCE_SIZE;
constexpr std::size_t size525 = FRAME_SIZE_525_60;
constexpr std::size_t size625 = FRAME_SIZE_625_50;

/// Blocks whose IDs make a frame's start.
constexpr std::size_t startBlocks = 6;

constexpr std::uint8_t headerSection = 0;
constexpr std::uint8_t subcodeSection = 1;
constexpr std::uint8_t vauxSection = 2;

/// Whether the block at `block` has this section type and this number within the section, in sequence
/// `sequence`. The channel bit and the reserved bits may be anything.
bool hasId(const std::uint8_t* block, std::uint8_t section, unsigned sequence, std::uint8_t number) {
    return block[0] >> 5 == section && block[1] >> 4 == sequence && block[2] == number;
}

/// DSF, the bit that tells the systems apart.
std::size_t sizeByHeader(const std::uint8_t* headerBlock) {
    return (headerBlock[3] & 0x80) != 0 ? size625 : size525;
}

std::size_t otherSize(std::size_t size) {
    return size == size525 ? size625 : size525;
}

struct Sequences {
    unsigned inPlace = 0;
    unsigned of625 = 0;
};

/// Looks at the header blocks of the sequences 1 to 9, which both systems have. Nine in a row at their
/// distance, each with its number, are no accident, so a frame is known by them even where all its other
/// packs are gone.
Sequences sequencesInPlace(std::span<const std::uint8_t> bytes, std::size_t offset) {
    Sequences found;
    for (unsigned sequence = 1; sequence < DIF_SEQ_COUNT_MIN; ++sequence) {
        const std::size_t start = offset + sequence * sequenceSize;
        if (start + blockSize > bytes.size())
            break;
        const std::uint8_t* const header = bytes.data() + start;
        if (!hasId(header, headerSection, sequence, 0))
            continue;
        ++found.inPlace;
        if (sizeByHeader(header) == size625)
            ++found.of625;
    }
    return found;
}

bool areMost(unsigned sequences) {
    return 2 * sequences > DIF_SEQ_COUNT_MIN - 1;
}

/// How much of a long search passes between two reports of progress.
constexpr std::size_t searchStretch = std::size_t{8} << 20;

} // namespace

bool isFrameStart(std::span<const std::uint8_t> bytes, std::size_t offset) {
    if (bytes.size() < startBlocks * blockSize || offset > bytes.size() - startBlocks * blockSize)
        return false;
    const std::uint8_t* const block = bytes.data() + offset;
    return hasId(block, headerSection, 0, 0) && hasId(block + blockSize, subcodeSection, 0, 0) &&
           hasId(block + 2 * blockSize, subcodeSection, 0, 1) &&
           hasId(block + 3 * blockSize, vauxSection, 0, 0) &&
           hasId(block + 4 * blockSize, vauxSection, 0, 1) && hasId(block + 5 * blockSize, vauxSection, 0, 2);
}

std::size_t findFrameStart(std::span<const std::uint8_t> bytes, std::size_t from, std::size_t to) {
    if (bytes.size() < startBlocks * blockSize)
        return to;
    const std::size_t last = std::min(to, bytes.size() - startBlocks * blockSize + 1);
    const std::uint8_t* const data = bytes.data();
    for (std::size_t offset = from; offset < last; ++offset) {
        // The cheapest test that turns nearly every place away, long runs of zeros included.
        if (data[offset + 2] == 0 && data[offset + blockSize] >> 5 == subcodeSection &&
            isFrameStart(bytes, offset))
            return offset;
    }
    return to;
}

std::optional<ScannedFrame> FrameScanner::next() {
    while (m_position < m_bytes.size()) {
        const bool isGoodStart = m_position == m_knownStart || isFrameStart(m_bytes, m_position);
        const std::size_t start = m_position;
        const std::optional<std::size_t> size =
            isGoodStart ? frameSizeAtGoodStart(start) : frameSizeAtDamagedStart(start);
        if (size) {
            m_position = start + *size;
            m_lastSize = *size;
            return ScannedFrame{start, *size};
        }
        skip(search(start + 1, m_bytes.size()),
             isGoodStart ? "a frame that is cut short" : "bytes that are no DV frame");
    }
    return std::nullopt;
}

std::optional<std::size_t> FrameScanner::frameSizeAtGoodStart(std::size_t offset) {
    const std::size_t size = sizeByHeader(m_bytes.data() + offset);
    if (frameFollows(offset, size))
        return size;
    // One wrong bit in the header makes a frame of the other system.
    if (frameFollows(offset, otherSize(size)))
        return otherSize(size);
    if (offset + size > m_bytes.size())
        return std::nullopt;
    if (areMost(sequencesInPlace(m_bytes, offset).inPlace))
        return size;
    const bool isCutShort = search(offset + 1, offset + size) < offset + size;
    return isCutShort ? std::nullopt : std::optional(size);
}

std::optional<std::size_t> FrameScanner::frameSizeAtDamagedStart(std::size_t offset) const {
    const auto fits = [&](std::size_t size) { return offset + size <= m_bytes.size(); };
    const Sequences sequences = sequencesInPlace(m_bytes, offset);
    if (areMost(sequences.inPlace)) {
        const std::size_t size = 2 * sequences.of625 > sequences.inPlace ? size625 : size525;
        return fits(size) ? std::optional(size) : std::nullopt;
    }
    const bool goodFrameFollows = m_lastSize != 0 && isFrameStart(m_bytes, offset + m_lastSize);
    return goodFrameFollows ? std::optional(m_lastSize) : std::nullopt;
}

// Whether the bytes end, or another frame starts, where a frame of `size` ends.
bool FrameScanner::frameFollows(std::size_t offset, std::size_t size) {
    const std::size_t end = offset + size;
    if (isFrameStart(m_bytes, end)) {
        m_knownStart = end;
        return true;
    }
    return end == m_bytes.size();
}

std::size_t FrameScanner::search(std::size_t from, std::size_t to) const {
    to = std::min(to, m_bytes.size());
    while (from < to) {
        const std::size_t stretchEnd = std::min(from + searchStretch, to);
        const std::size_t found = findFrameStart(m_bytes, from, stretchEnd);
        if (found < stretchEnd)
            return found;
        from = stretchEnd;
        if (m_progress)
            m_progress(from);
    }
    return to;
}

void FrameScanner::skip(std::size_t to, std::string_view what) {
    if (m_finding)
        m_finding(m_position, to - m_position, what);
    m_position = to;
}

} // namespace merro::platform::deck
