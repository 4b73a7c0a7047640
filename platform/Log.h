// One line at a time for programmers and support.
#pragma once

#include <string_view>

namespace merro::platform {

class Log {
public:
    virtual ~Log() = default;

    /// Writes one line; lines of different threads never mix. Any thread; never fails.
    virtual void line(std::string_view text) = 0;
};

/// The log of code that is handed no surroundings (the DIF decoder). Lines go to standard error until it is
/// set. The caller keeps `log` alive until it sets another one, or null.
void setProcessLog(Log* log);
Log& processLog();

} // namespace merro::platform
