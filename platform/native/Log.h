// The log of a program: standard error, or a file.
#pragma once

#include "platform/Log.h"

#include <mutex>
#include <string>

namespace merro::platform::native {

/// Any thread. Every line goes out whole, in one write.
class Log final : public platform::Log {
public:
    Log() = default; ///< standard error

    /// Lines go to the end of the file at `path`; to standard error, after a line that says why, when it
    /// cannot be opened.
    explicit Log(const std::string& path);
    ~Log() override;
    Log(const Log&) = delete;
    Log& operator=(const Log&) = delete;

    /// Line breaks inside `text` become spaces.
    void line(std::string_view text) override;

private:
    std::mutex m_mutex;
    int m_descriptor = 2;
};

} // namespace merro::platform::native
