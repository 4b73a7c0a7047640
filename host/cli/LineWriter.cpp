#include "host/cli/LineWriter.h"

#include <cerrno>
#include <unistd.h>
#include <utility>

namespace merro::host {

namespace {

constexpr const char* kClearLine = "\r\x1b[K";

} // namespace

void LineWriter::line(std::string text) {
    text += '\n';
    this->text(std::move(text));
}

void LineWriter::text(std::string text) {
    m_worker.post([this, text = std::move(text)] { writeAboveBar(text); });
}

void LineWriter::bar(std::string text) {
    m_worker.post([this, text = std::move(text)] {
        if (text == m_bar)
            return;
        m_bar = text;
        write(kClearLine + m_bar);
    });
}

void LineWriter::finish() {
    bar({});
    m_worker.finish();
}

void LineWriter::writeAboveBar(const std::string& text) {
    if (m_bar.empty())
        write(text);
    else
        write(kClearLine + text + m_bar);
}

void LineWriter::write(std::string_view text) {
    while (!text.empty() && !m_isBroken) {
        const ssize_t written = ::write(m_descriptor, text.data(), text.size());
        if (written < 0 && errno == EINTR)
            continue;
        m_isBroken = written < 0;
        if (!m_isBroken)
            text.remove_prefix(static_cast<std::size_t>(written));
    }
}

} // namespace merro::host
