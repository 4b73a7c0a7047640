// Texts in the user's language.
#pragma once

#include "platform/Date.h"

#include <string>
#include <string_view>

namespace merro::platform {

/// Any thread.
class Localization {
public:
    virtual ~Localization() = default;

    /// The text under `key` in `table`; the key itself (it is the English text) where there is none. The
    /// default table has an empty name.
    [[nodiscard]] virtual std::string text(std::string_view key, std::string_view table = {}) const = 0;

    /// Date and time in the medium style of the user's locale, in the system time zone.
    [[nodiscard]] virtual std::string mediumDateAndTime(const Date& date) const = 0;
};

} // namespace merro::platform
