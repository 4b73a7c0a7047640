// How the platform reports that something did not work.
#pragma once

#include <string>

namespace merro::platform {

/// One line for people: `message` says what failed and names the thing (a path, a device); `remedy` says what
/// to do about it and may be empty. No line breaks, no full stop at the end.
struct Error {
    std::string message;
    std::string remedy;
    int systemCode = 0; ///< errno where there was one

    [[nodiscard]] std::string text() const { return remedy.empty() ? message : message + ": " + remedy; }
};

} // namespace merro::platform
