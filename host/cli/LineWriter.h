// Lines on standard output or standard error, written in the background: a reader that does not read, or a
// terminal that is held, stops nobody.
#pragma once

#include "host/shared/BackgroundWorker.h"

#include <string>
#include <string_view>

namespace merro::host {

/// Any thread.
class LineWriter {
public:
    /// The descriptor stays the caller's.
    explicit LineWriter(int descriptor) : m_descriptor(descriptor) {}

    /// `text` and a line break.
    void line(std::string text);

    /// Text as it is, line breaks included.
    void text(std::string text);

    /// A line that the next one of its kind replaces, and that stays below everything else; empty for none.
    void bar(std::string text);

    /// Returns when all is written; the bar is gone then. Nothing is written afterwards.
    void finish();

private:
    void write(std::string_view text);
    void writeAboveBar(const std::string& text);

    const int m_descriptor;
    std::string m_bar;       ///< the worker's thread only
    bool m_isBroken = false; ///< the worker's thread only: nobody reads any more
    BackgroundWorker m_worker;
};

} // namespace merro::host
