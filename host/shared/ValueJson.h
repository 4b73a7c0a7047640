// Presets and other dictionaries as JSON text.
//
// Pure functions; any thread.
#pragma once

#include "platform/Value.h"

#include <nlohmann/json_fwd.hpp>

#include <string>

namespace merro::host {

/// Timecodes and dates are written as reports write them; data as {"data": "0A0B…"}.
[[nodiscard]] nlohmann::ordered_json jsonFromValue(const platform::Value& value);

/// Compact JSON.
[[nodiscard]] std::string jsonFromDictionary(const platform::Dictionary& dictionary);

/// Reads what jsonFromDictionary wrote; dates and timecodes come back as texts. Throws Failure when `text` is
/// no JSON object or holds a null.
[[nodiscard]] platform::Dictionary dictionaryFromJson(const std::string& text);

} // namespace merro::host
