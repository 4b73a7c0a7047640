// Numbers set into a translated text.
//
// Pure function, any thread. Unlike printf it cannot be led astray by a translation that asks for too many
// numbers or for numbers of another type.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace merro {

/// `format` with each "%d", "%04d" and the like replaced by the next number and "%%" by "%". What asks for a
/// number when none is left, or for anything else, stays as it stands.
[[nodiscard]] std::string formatNumbers(std::string_view format, std::initializer_list<int> numbers);

} // namespace merro
