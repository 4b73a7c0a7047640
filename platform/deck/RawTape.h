// A tape in a raw .dv file, split into frames while it is read.
#pragma once

#include "platform/deck/FrameScanner.h"
#include "platform/deck/MappedFile.h"
#include "platform/deck/Tape.h"

#include <memory>
#include <mutex>
#include <string_view>
#include <vector>

namespace merro::platform::deck {

/// Its frames share the mapping of the file and keep it alive. A file that becomes shorter while it is read
/// ends the tape where it is noticed, with a finding; what is cut off under a frame already handed out cannot
/// be helped.
class RawTape final : public Tape {
public:
    explicit RawTape(std::shared_ptr<MappedFile> file);

    [[nodiscard]] std::optional<TapeFrame> frameAt(std::int64_t index) override;
    [[nodiscard]] std::int64_t frameCount() const override;
    [[nodiscard]] bool isFrameCountExact() const override { return m_isRead; }
    [[nodiscard]] std::vector<TapeFinding> findings() const override;

private:
    /// Frames of one size that follow one another without a gap.
    struct Run {
        std::int64_t firstIndex;
        std::size_t offset;
        std::size_t frameSize;
        std::int64_t count;
    };

    [[nodiscard]] bool scanFrame();
    void append(const ScannedFrame& frame);
    void addFinding(std::size_t offset, std::size_t length, std::string_view what);
    void noticeShrinking();

    std::shared_ptr<MappedFile> m_file;
    std::size_t m_size; ///< bytes of the file that can be read
    FrameScanner m_scanner;
    std::vector<Run> m_runs;
    std::int64_t m_scanned = 0;
    bool m_isRead = false; ///< up to the end

    mutable std::mutex m_findingsMutex;
    std::vector<TapeFinding> m_findings;
};

} // namespace merro::platform::deck
