// A tape made in memory: frames and blank stretches.
#pragma once

#include "platform/deck/Tape.h"

#include <utility>

namespace merro::platform::deck {

/// Filled before it is put into a deck, read by one thread at a time afterwards.
class MemoryTape final : public Tape {
public:
    MemoryTape() = default;
    explicit MemoryTape(std::vector<FrameBytes> frames) : m_frames(std::move(frames)) {}

    /// Adds a frame at the end. Buffers of other sizes than 120000 and 144000 bytes are kept as they are and
    /// pass as long as the frame before.
    void append(FrameBytes frame) { m_frames.push_back(std::move(frame)); }
    /// Adds `frames` frames of blank tape.
    void appendBlank(std::int64_t frames) {
        m_frames.resize(m_frames.size() + static_cast<std::size_t>(frames));
    }

    [[nodiscard]] std::optional<TapeFrame> frameAt(std::int64_t index) override {
        if (index < 0 || index >= frameCount())
            return std::nullopt;
        return TapeFrame{m_frames[static_cast<std::size_t>(index)], -1};
    }
    [[nodiscard]] std::int64_t frameCount() const override {
        return static_cast<std::int64_t>(m_frames.size());
    }
    [[nodiscard]] bool isFrameCountExact() const override { return true; }

private:
    std::vector<FrameBytes> m_frames;
};

} // namespace merro::platform::deck
