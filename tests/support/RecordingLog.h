// A log that keeps its lines.
#pragma once

#include "platform/Log.h"
#include "tests/support/Journal.h"

#include <string>

namespace merro::test {

class RecordingLog : public platform::Log {
public:
    void line(std::string_view text) override { m_lines.add(std::string(text)); }
    [[nodiscard]] std::vector<std::string> lines() const { return m_lines.entries(); }

private:
    Journal m_lines;
};

} // namespace merro::test
