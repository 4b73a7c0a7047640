// The bytes of one frame: immutable and shared.
//
// To copy a FrameBytes is to take a reference; the bytes live as long as anyone holds one. Usable on any
// thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <stdexcept>
#include <utility>
#include <vector>

namespace merro::platform {

class FrameBytes {
public:
    FrameBytes() = default;

    /// Bytes kept alive by `owner` (a mapped file, for instance).
    FrameBytes(std::shared_ptr<const void> owner, std::span<const std::uint8_t> bytes)
        : m_owner(std::move(owner)), m_bytes(bytes) {}

    /// Takes over the bytes of a vector.
    static FrameBytes taking(std::vector<std::uint8_t> bytes) {
        auto owner = std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes));
        const std::span<const std::uint8_t> view(*owner);
        return {std::move(owner), view};
    }

    /// The same bytes without holding them: cheaper to copy, valid only while somebody else holds a
    /// reference.
    [[nodiscard]] FrameBytes borrowed() const {
        return {std::shared_ptr<const void>(std::shared_ptr<const void>(), m_owner.get()), m_bytes};
    }

    [[nodiscard]] std::span<const std::uint8_t> bytes() const { return m_bytes; }
    [[nodiscard]] std::size_t size() const { return m_bytes.size(); }
    [[nodiscard]] bool isNull() const { return m_owner == nullptr; }

    /// Whether both are references to the same buffer.
    [[nodiscard]] bool isSameBuffer(const FrameBytes& other) const {
        return m_owner == other.m_owner && m_bytes.data() == other.m_bytes.data();
    }

    /// Copies `length` bytes from `start`. Throws std::out_of_range when they are not all inside the buffer.
    void getBytes(std::uint8_t* destination, std::size_t start, std::size_t length) const {
        if (start > m_bytes.size() || length > m_bytes.size() - start)
            throw std::out_of_range("read past the end of the frame");
        std::memcpy(destination, m_bytes.data() + start, length);
    }

private:
    std::shared_ptr<const void> m_owner;
    std::span<const std::uint8_t> m_bytes;
};

} // namespace merro::platform
