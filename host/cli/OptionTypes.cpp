#include "host/cli/OptionTypes.h"

#include <algorithm>
#include <charconv>

namespace merro::host {

namespace {

constexpr int kMostSeconds = 24 * 60 * 60;

/// None when `text` is no number from 0 to a day of seconds.
std::optional<int> parseSeconds(const std::string& text) {
    int number = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
    if (read.ec != std::errc() || read.ptr != text.data() + text.size() || number < 0 ||
        number > kMostSeconds)
        return std::nullopt;
    return number;
}

} // namespace

void addNumberOrOff(CLI::App& command, const std::string& name, const std::vector<int>& numbers,
                    const std::string& description, std::optional<int>& value, int off) {
    const std::string form = numbers.empty() ? "SECONDS|off" : CLI::detail::join(numbers, "|") + "|off";
    const auto check = [numbers, form](const std::string& text) -> std::string {
        const auto number = parseSeconds(text);
        const bool isListed = number && (numbers.empty() ||
                                         std::find(numbers.begin(), numbers.end(), *number) != numbers.end());
        return text == "off" || isListed ? std::string() : text + " is not " + form;
    };
    command
        .add_option_function<std::string>(
            name, [&value, off](const std::string& text) { value = parseSeconds(text).value_or(off); },
            description)
        ->type_name(form)
        ->check(check);
}

} // namespace merro::host
