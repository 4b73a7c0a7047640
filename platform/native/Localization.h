// Texts and dates of a program without translations: the built-in English, and the user's locale for dates.
#pragma once

#include "platform/Localization.h"

#include <locale>

namespace merro::platform::native {

/// Any thread. Dates take the names of months and the form of the time from the locale that the environment
/// (LC_ALL, LC_TIME, LANG) names when this is made, or from the C locale when there is no such locale on the
/// machine.
class Localization final : public platform::Localization {
public:
    Localization();
    explicit Localization(const std::locale& locale) : m_locale(locale) {}

    [[nodiscard]] std::string text(std::string_view key, std::string_view table = {}) const override;

    /// "17 Mar 2005 14:03:22"
    [[nodiscard]] std::string mediumDateAndTime(const Date& date) const override;

private:
    const std::locale m_locale;
};

} // namespace merro::platform::native
