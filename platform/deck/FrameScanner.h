// Splits a stretch of bytes into DV frames of 25 Mb/s (IEC 61834-2, SMPTE 314M).
//
// Where frames follow one another as they should, it looks at the IDs of the first six blocks of each frame
// and at nothing else. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>

namespace merro::platform::deck {

/// Whether the first six blocks of sequence 0 have the IDs of a frame's start: header, two of subcode, three
/// of VAUX.
[[nodiscard]] bool isFrameStart(std::span<const std::uint8_t> bytes, std::size_t offset);

/// The first frame start at or after `from` and before `to`, looking at every byte; `to` when there is none.
[[nodiscard]] std::size_t findFrameStart(std::span<const std::uint8_t> bytes, std::size_t from,
                                         std::size_t to);

struct ScannedFrame {
    std::size_t offset = 0;
    std::size_t size = 0; ///< 120000 or 144000
};

class FrameScanner {
public:
    /// Told of each stretch that is no frame, in order.
    using Finding = std::function<void(std::size_t offset, std::size_t length, std::string_view what)>;
    /// Told, on a long search, how far it has come.
    using Progress = std::function<void(std::size_t offset)>;

    FrameScanner(std::span<const std::uint8_t> bytes, Finding finding, Progress progress)
        : m_bytes(bytes), m_finding(std::move(finding)), m_progress(std::move(progress)) {}

    /// The next frame, or none when there is no more. A frame that is damaged is still one when its sequences
    /// lie where they belong or a good frame follows where it should; a frame that is cut short is none.
    [[nodiscard]] std::optional<ScannedFrame> next();

    /// Where the next frame is looked for.
    [[nodiscard]] std::size_t position() const { return m_position; }

    /// The bytes end at `size` by now.
    void shorten(std::size_t size) { m_bytes = m_bytes.first(size); }

private:
    [[nodiscard]] std::optional<std::size_t> frameSizeAtGoodStart(std::size_t offset);
    [[nodiscard]] std::optional<std::size_t> frameSizeAtDamagedStart(std::size_t offset) const;
    [[nodiscard]] bool frameFollows(std::size_t offset, std::size_t size);
    [[nodiscard]] std::size_t search(std::size_t from, std::size_t to) const;
    void skip(std::size_t to, std::string_view what);

    std::span<const std::uint8_t> m_bytes;
    Finding m_finding;
    Progress m_progress;
    std::size_t m_position = 0;
    std::size_t m_knownStart =
        static_cast<std::size_t>(-1); ///< a frame start that has been looked at already
    std::size_t m_lastSize = 0;
};

} // namespace merro::platform::deck
