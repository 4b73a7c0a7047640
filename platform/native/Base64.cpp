#include "platform/native/Base64.h"

#include <stdexcept>

namespace merro::platform::native {

namespace {
constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
} // namespace

std::string base64(const Data& bytes) {
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t group = 0;
        for (std::size_t j = i; j < i + 3; ++j)
            group = group << 8 | (j < bytes.size() ? bytes[j] : 0U);
        for (int shift = 18; shift >= 0; shift -= 6)
            text += kDigits[group >> shift & 63U];
    }
    for (std::size_t missing = (3 - bytes.size() % 3) % 3; missing > 0; --missing)
        text[text.size() - missing] = '=';
    return text;
}

Data dataFromBase64(std::string_view text) {
    Data bytes;
    std::uint32_t group = 0;
    const auto end = text.find('=');
    const auto digits = text.substr(0, end);
    for (std::size_t i = 0; i < digits.size(); ++i) {
        const auto digit = kDigits.find(digits[i]);
        if (digit == std::string_view::npos)
            throw std::invalid_argument("base64 text with a character that does not belong there");
        group = group << 6 | static_cast<std::uint32_t>(digit);
        if (i % 4 != 0)
            bytes.push_back(static_cast<std::uint8_t>(group >> (6 - 2 * (i % 4))));
    }
    if (base64(bytes) != text)
        throw std::invalid_argument("base64 text that is cut short");
    return bytes;
}

} // namespace merro::platform::native
