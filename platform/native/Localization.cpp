#include "platform/native/Localization.h"

#include <ctime>
#include <iterator>
#include <sstream>
#include <stdexcept>

namespace merro::platform::native {

namespace {

std::locale userLocale() {
    try {
        return std::locale("");
    } catch (const std::runtime_error&) { // the environment names a locale that is not installed
        return std::locale::classic();
    }
}

} // namespace

Localization::Localization() : m_locale(userLocale()) {}

std::string Localization::text(std::string_view key, std::string_view) const {
    return std::string(key);
}

std::string Localization::mediumDateAndTime(const Date& date) const {
    const CalendarFields fields = calendarFromDate(date);
    std::tm clock{};
    clock.tm_year = fields.year - 1900;
    clock.tm_mon = fields.month - 1;
    clock.tm_mday = fields.day;
    clock.tm_hour = fields.hours;
    clock.tm_min = fields.minutes;
    clock.tm_sec = fields.seconds;

    std::ostringstream rest;
    rest.imbue(m_locale);
    constexpr std::string_view kForm = "%b %Y %X";
    std::use_facet<std::time_put<char>>(m_locale).put(std::ostreambuf_iterator(rest), rest, ' ', &clock,
                                                      kForm.data(), kForm.data() + kForm.size());
    return std::to_string(fields.day) + ' ' + rest.str();
}

} // namespace merro::platform::native
