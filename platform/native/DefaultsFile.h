// The settings file that several programs share. Part of JsonUserDefaults.
//
// One JSON object: {"format": "BXMerroCapture defaults", "version": 1, "values": {…}}, values as JsonValue.h
// says. A lock file beside it, "<name>.lock", is locked (flock) while a program reads, changes and replaces
// it.
#pragma once

#include "platform/Error.h"
#include "platform/Value.h"

#include <functional>
#include <optional>
#include <string>

namespace merro::platform::native {

/// One thread at a time.
class DefaultsFile {
public:
    explicit DefaultsFile(const std::string& path);

    struct Contents {
        Dictionary values;
        std::optional<Error> error; ///< then there are no values
    };

    /// A file that is not there is empty. One that is damaged or of a newer version is an error.
    [[nodiscard]] Contents read() const;

    /// Under the lock: reads, lets `change` work on the values, and replaces the file when it answers true
    /// (they have changed). The values as they are in the file then. On an error the file is as it was.
    [[nodiscard]] Contents update(const std::function<bool(Dictionary& values)>& change) const;

private:
    [[nodiscard]] std::optional<Error> replaceWith(const std::string& text) const;

    const std::string m_path; ///< where a symbolic link leads, so that the link stays one
};

} // namespace merro::platform::native
