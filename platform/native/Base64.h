// Bytes as text (RFC 4648, section 4).
#pragma once

#include "platform/Value.h"

#include <string>
#include <string_view>

namespace merro::platform::native {

/// With padding, without line breaks.
[[nodiscard]] std::string base64(const Data& bytes);

/// Throws std::invalid_argument for a text that base64() does not make.
[[nodiscard]] Data dataFromBase64(std::string_view text);

} // namespace merro::platform::native
