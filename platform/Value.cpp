#include "platform/Value.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace merro::platform {

namespace {

/// `text` from its first character that can begin a number: spaces and a plus sign are passed over.
std::string_view numberAtStart(std::string_view text) {
    const auto start = text.find_first_not_of(" \t\n\r\f\v");
    text = start == std::string_view::npos ? std::string_view{} : text.substr(start);
    if (text.size() > 1 && text[0] == '+' && text[1] != '-')
        text.remove_prefix(1);
    return text;
}

std::int64_t integerInText(std::string_view text) {
    text = numberAtStart(text);
    std::int64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec == std::errc::result_out_of_range)
        return text.front() == '-' ? std::numeric_limits<std::int64_t>::min()
                                   : std::numeric_limits<std::int64_t>::max();
    return number;
}

double doubleInText(std::string_view text) {
    text = numberAtStart(text);
    double number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    return result.ec == std::errc{} && std::isfinite(number) ? number : 0; // "inf" and "nan" are words
}

std::int64_t cut(double number) {
    constexpr double kLimit = 9223372036854775808.0; // 2^63, the first number that does not fit
    if (std::isnan(number))
        return 0;
    if (number >= kLimit)
        return std::numeric_limits<std::int64_t>::max();
    if (number < -kLimit)
        return std::numeric_limits<std::int64_t>::min();
    return static_cast<std::int64_t>(number);
}

std::string shortestText(double number) {
    char text[32];
    const auto result = std::to_chars(std::begin(text), std::end(text), number);
    return {std::begin(text), result.ptr};
}

} // namespace

std::int64_t Value::integerValue() const {
    if (const auto* boolean = getIf<bool>())
        return *boolean ? 1 : 0;
    if (const auto* integer = getIf<std::int64_t>())
        return *integer;
    if (const auto* number = getIf<double>())
        return cut(*number);
    if (const auto* text = getIf<std::string>())
        return integerInText(*text);
    return 0;
}

double Value::doubleValue() const {
    if (const auto* number = getIf<double>())
        return *number;
    if (const auto* text = getIf<std::string>())
        return doubleInText(*text);
    return static_cast<double>(integerValue());
}

bool Value::boolValue() const {
    return doubleValue() != 0;
}

std::string Value::stringValue() const {
    if (const auto* text = getIf<std::string>())
        return *text;
    if (const auto* number = getIf<double>())
        return shortestText(*number);
    if (getIf<bool>() || getIf<std::int64_t>())
        return std::to_string(integerValue());
    return {};
}

} // namespace merro::platform
