// Runs a test in a time zone of its own.
#pragma once

#include <cstdlib>
#include <optional>
#include <string>

namespace merro::test {

/// Sets TZ for its lifetime. For tests of one thread.
class TimeZone {
public:
    explicit TimeZone(const char* name) {
        if (const char* before = std::getenv("TZ")) // NOLINT(concurrency-mt-unsafe)
            m_before = before;
        setenv("TZ", name, 1); // NOLINT(concurrency-mt-unsafe)
    }
    TimeZone(const TimeZone&) = delete;
    TimeZone& operator=(const TimeZone&) = delete;
    ~TimeZone() {
        if (m_before)
            setenv("TZ", m_before->c_str(), 1); // NOLINT(concurrency-mt-unsafe)
        else
            unsetenv("TZ"); // NOLINT(concurrency-mt-unsafe)
    }

private:
    std::optional<std::string> m_before;
};

} // namespace merro::test
