// Texts that are recognisable as localised: every key comes back with a mark.
#pragma once

#include "platform/Localization.h"

#include <chrono>
#include <string>

namespace merro::test {

class PlainLocalization : public platform::Localization {
public:
    explicit PlainLocalization(std::string mark = {}) : m_mark(std::move(mark)) {}

    [[nodiscard]] std::string text(std::string_view key, std::string_view table) const override {
        return m_mark + (table.empty() ? std::string() : std::string(table) + "/") + std::string(key);
    }

    /// "date S", S being the seconds since 1970.
    [[nodiscard]] std::string mediumDateAndTime(const platform::Date& date) const override {
        const auto since = std::chrono::floor<std::chrono::seconds>(date.instant().time_since_epoch());
        return "date " + std::to_string(since.count());
    }

private:
    std::string m_mark;
};

} // namespace merro::test
