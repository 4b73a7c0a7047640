// Archiving of typed values one after the other: what is read must be asked for in the order in which it was
// written.
//
// Form: for each value one byte with its type ('i' or 'c'), then its bytes, the most significant first. Each
// coder belongs to one thread.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace merro {

class SequentialEncoder {
public:
    void encodeInt(std::int32_t value) { append('i', static_cast<std::uint32_t>(value), 4); }
    void encodeChar(signed char value) { append('c', static_cast<std::uint8_t>(value), 1); }

    [[nodiscard]] const std::vector<std::uint8_t>& bytes() const { return m_bytes; }

private:
    void append(char type, std::uint32_t value, int size) {
        m_bytes.push_back(static_cast<std::uint8_t>(type));
        for (int shift = 8 * (size - 1); shift >= 0; shift -= 8)
            m_bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }

    std::vector<std::uint8_t> m_bytes;
};

/// Reads what a SequentialEncoder wrote; `bytes` must outlive it.
class SequentialDecoder {
public:
    explicit SequentialDecoder(std::span<const std::uint8_t> bytes) : m_bytes(bytes) {}

    /// The next value; none when the archive ends or holds a value of another type there.
    [[nodiscard]] std::optional<std::int32_t> decodeInt() {
        const auto value = take('i', 4);
        return value ? std::optional(static_cast<std::int32_t>(*value)) : std::nullopt;
    }
    [[nodiscard]] std::optional<signed char> decodeChar() {
        const auto value = take('c', 1);
        return value ? std::optional(static_cast<signed char>(*value)) : std::nullopt;
    }

private:
    std::optional<std::uint32_t> take(char type, std::size_t size) {
        if (m_bytes.size() < size + 1 || m_bytes.front() != static_cast<std::uint8_t>(type))
            return std::nullopt;
        std::uint32_t value = 0;
        for (const std::uint8_t byte : m_bytes.subspan(1, size))
            value = value << 8 | byte;
        m_bytes = m_bytes.subspan(size + 1);
        return value;
    }

    std::span<const std::uint8_t> m_bytes;
};

} // namespace merro
