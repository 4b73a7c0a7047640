#include "platform/deck/RawTape.h"

#include <algorithm>
#include <utility>

namespace merro::platform::deck {

RawTape::RawTape(std::shared_ptr<MappedFile> file)
    : m_file(std::move(file)), m_size(m_file->bytes().size()),
      m_scanner(
          m_file->bytes(),
          [this](std::size_t offset, std::size_t length, std::string_view what) {
              addFinding(offset, length, what);
          },
          [this](std::size_t offset) { m_file->moveTo(offset); }) {}

std::optional<TapeFrame> RawTape::frameAt(std::int64_t index) {
    if (index < m_scanned)
        noticeShrinking();
    while (index >= m_scanned && scanFrame()) {
    }
    if (index < 0 || index >= m_scanned)
        return std::nullopt;
    const Run* run = &m_runs.back();
    if (index < run->firstIndex)
        run = &*std::prev(std::ranges::upper_bound(m_runs, index, {}, &Run::firstIndex));
    const std::size_t offset =
        run->offset + static_cast<std::size_t>(index - run->firstIndex) * run->frameSize;
    m_file->moveTo(offset);
    if (offset + run->frameSize > m_size)
        return std::nullopt;
    return TapeFrame{FrameBytes(m_file, m_file->bytes().subspan(offset, run->frameSize)),
                     static_cast<std::int64_t>(offset)};
}

std::int64_t RawTape::frameCount() const {
    if (m_isRead || m_runs.empty())
        return m_scanned;
    const std::size_t rest = m_size - std::min(m_scanner.position(), m_size);
    return m_scanned + static_cast<std::int64_t>(rest / m_runs.back().frameSize);
}

std::vector<TapeFinding> RawTape::findings() const {
    const std::lock_guard lock(m_findingsMutex);
    return m_findings;
}

bool RawTape::scanFrame() {
    if (m_isRead)
        return false;
    noticeShrinking();
    m_file->moveTo(m_scanner.position());
    const std::optional<ScannedFrame> frame = m_scanner.next();
    m_isRead = !frame;
    if (frame)
        append(*frame);
    return frame.has_value();
}

void RawTape::append(const ScannedFrame& frame) {
    const bool runsOn =
        !m_runs.empty() && m_runs.back().frameSize == frame.size &&
        m_runs.back().offset + static_cast<std::size_t>(m_runs.back().count) * frame.size == frame.offset;
    if (runsOn)
        ++m_runs.back().count;
    else
        m_runs.push_back({m_scanned, frame.offset, frame.size, 1});
    ++m_scanned;
}

void RawTape::addFinding(std::size_t offset, std::size_t length, std::string_view what) {
    const std::lock_guard lock(m_findingsMutex);
    m_findings.push_back(
        {static_cast<std::int64_t>(offset), static_cast<std::int64_t>(length), std::string(what)});
}

void RawTape::noticeShrinking() {
    const std::size_t size = m_file->currentSize();
    if (size >= m_size)
        return;
    addFinding(size, m_size - size, "bytes that were cut off the file while it was read");
    m_size = size;
    m_scanner.shorten(size);
}

} // namespace merro::platform::deck
