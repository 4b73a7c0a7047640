#include "timecode/NumberFormat.h"

#include <algorithm>
#include <cstdlib>

namespace merro {
namespace {

std::string padded(int number, bool withZeros, std::size_t width) {
    std::string digits = std::to_string(std::abs(static_cast<long long>(number)));
    const std::string sign = number < 0 ? "-" : "";
    const std::size_t length = sign.size() + digits.size();
    const std::string padding(width > length ? width - length : 0, withZeros ? '0' : ' ');
    return withZeros ? sign + padding + digits : padding + sign + digits;
}

} // namespace

std::string formatNumbers(std::string_view format, std::initializer_list<int> numbers) {
    std::string result;
    const int* next = numbers.begin();
    while (!format.empty()) {
        const std::size_t plain = std::min(format.find('%'), format.size());
        result += format.substr(0, plain);
        format.remove_prefix(plain);
        if (format.starts_with("%%")) {
            result += '%';
            format.remove_prefix(2);
            continue;
        }
        const std::size_t conversion = format.find_first_not_of("0123456789", 1);
        if (conversion < 4 && format[conversion] == 'd' && next != numbers.end()) {
            const std::string width(format.substr(1, conversion - 1));
            result += padded(*next++, width.starts_with('0'), std::strtoul(width.c_str(), nullptr, 10));
            format.remove_prefix(conversion + 1);
        } else if (!format.empty()) {
            result += format.front();
            format.remove_prefix(1);
        }
    }
    return result;
}

} // namespace merro
