// A DV frame put together byte by byte, so that tests of the decoder lean on no other code that knows the
// format.
#pragma once

#include "platform/FrameBytes.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <vector>

namespace merro::test {

using PackBytes = std::array<std::uint8_t, 5>;

class HandMadeFrame {
public:
    static constexpr std::size_t size525 = 120000;
    static constexpr std::size_t size625 = 144000;

    /// Empty (FF) but for the ID bytes of the blocks 0 to 5 and the system flag of each sequence.
    explicit HandMadeFrame(std::size_t size) : m_bytes(size, std::uint8_t{0xFF}) {
        for (unsigned sequence = 0; sequence < size / 12000; ++sequence) {
            constexpr std::array<std::uint8_t, 6> firstId{0x1F, 0x3F, 0x3F, 0x5F, 0x5F, 0x5F};
            constexpr std::array<std::uint8_t, 6> blockNumber{0, 0, 1, 0, 1, 2};
            for (unsigned block = 0; block < firstId.size(); ++block)
                put(sequence, block, 0,
                    {firstId[block], static_cast<std::uint8_t>(sequence << 4 | 0x07), blockNumber[block]});
            put(sequence, 0, 3, {static_cast<std::uint8_t>(size == size625 ? 0xBF : 0x3F)});
        }
    }

    HandMadeFrame& put(unsigned sequence, unsigned block, unsigned byte,
                       std::initializer_list<std::uint8_t> bytes) {
        const std::size_t start = (std::size_t{sequence} * 150 + block) * 80 + byte;
        std::copy(bytes.begin(), bytes.end(), m_bytes.data() + start);
        return *this;
    }

    /// A pack of subcode sync block 0 to 11.
    HandMadeFrame& putSubcode(unsigned sequence, unsigned syncBlock, const PackBytes& pack) {
        return put(sequence, 1 + syncBlock / 6, 6 + 8 * (syncBlock % 6),
                   {pack[0], pack[1], pack[2], pack[3], pack[4]});
    }

    /// A timecode 00:00:00:`frames` in one sequence; `frames` has one digit.
    HandMadeFrame& putFrameNumber(unsigned sequence, std::uint8_t frames) {
        return putSubcode(sequence, 0, {0x13, frames, 0, 0, 0});
    }

    /// The number that the header block of a sequence claims to have.
    HandMadeFrame& renumber(unsigned sequence, unsigned number) {
        return put(sequence, 0, 1, {static_cast<std::uint8_t>(number << 4 | 0x07)});
    }

    [[nodiscard]] platform::FrameBytes frame() const { return platform::FrameBytes::taking(m_bytes); }
    [[nodiscard]] std::vector<std::uint8_t>& bytes() { return m_bytes; }

private:
    std::vector<std::uint8_t> m_bytes;
};

} // namespace merro::test
