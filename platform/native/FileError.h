// What to tell the user when the file system says no.
#pragma once

#include "platform/Error.h"

#include <string>

namespace merro::platform::native {

/// "Cannot `action` `path`: <reason>", and what to do about it where that is known. `systemCode` is an errno.
[[nodiscard]] Error fileError(const std::string& action, const std::string& path, int systemCode);

} // namespace merro::platform::native
