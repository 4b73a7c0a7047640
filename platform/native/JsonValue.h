// Values as JSON, both ways, without loss.
//
// Booleans, numbers, texts, arrays and dictionaries are JSON's own; what JSON lacks is an object with one
// key:
//   {"$data": "base64"}                              bytes
//   {"$date": "2005-03-17T13:03:22.000000Z"}         an instant, UTC; null where there is no date object
//   {"$timecode": {"hours": 1, "minutes": 2, …}}     all nine fields; null where the timecode is missing
//   {"$text": "base64"}                              a text that is not UTF-8
//   {"$number": "nan"}                               "nan", "inf" or "-inf"
//   {"$dictionary": {…}}                             a dictionary whose only key begins with a dollar sign
// Plain functions, any thread.
#pragma once

#include "platform/Value.h"

#include <nlohmann/json.hpp>

namespace merro::platform::native {

[[nodiscard]] nlohmann::json jsonFromValue(const Value& value);

/// Throws std::invalid_argument, saying what is wrong, for JSON that stands for no value.
[[nodiscard]] Value valueFromJson(const nlohmann::json& json);

} // namespace merro::platform::native
