#include "host/shared/StrictJson.h"

#include "host/shared/Failure.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <sstream>
#include <system_error>

namespace merro::host {

using nlohmann::json;

StrictJson::StrictJson(const json& value, std::string document)
    : StrictJson(value, std::move(document), "") {}

StrictJson::StrictJson(const json& value, std::string document, std::string path)
    : m_value(&value), m_document(std::move(document)), m_path(std::move(path)) {}

void StrictJson::fail(const std::string& what) const {
    throw Failure(fmt::format("{}: {}{}{}", m_document, m_path, m_path.empty() ? "" : ": ", what));
}

void StrictJson::requireKeys(const std::vector<std::string_view>& allowed) const {
    if (!m_value->is_object())
        fail("an object {…} is wanted here");
    for (const auto& [key, entry] : m_value->items())
        if (std::find(allowed.begin(), allowed.end(), key) == allowed.end())
            fail(fmt::format("unknown key \"{}\" (known here: {})", key, fmt::join(allowed, ", ")));
}

bool StrictJson::has(std::string_view key) const {
    return m_value->is_object() && m_value->contains(std::string(key));
}

StrictJson StrictJson::at(std::string_view key) const {
    if (!has(key))
        fail(fmt::format("\"{}\" is missing", key));
    const std::string path = m_path.empty() ? std::string(key) : fmt::format("{}.{}", m_path, key);
    return {m_value->at(std::string(key)), m_document, path};
}

std::vector<StrictJson> StrictJson::elements() const {
    if (!m_value->is_array())
        fail("a list […] is wanted here");
    std::vector<StrictJson> elements;
    for (std::size_t at = 0; at < m_value->size(); ++at)
        elements.push_back(StrictJson(m_value->at(at), m_document, fmt::format("{}[{}]", m_path, at)));
    return elements;
}

std::string StrictJson::text() const {
    if (!m_value->is_string())
        fail("a text in quotation marks is wanted here");
    return m_value->get<std::string>();
}

bool StrictJson::boolean() const {
    if (!m_value->is_boolean())
        fail("true or false is wanted here");
    return m_value->get<bool>();
}

double StrictJson::number(double atLeast, double atMost) const {
    if (!m_value->is_number())
        fail("a number is wanted here");
    const auto value = m_value->get<double>();
    if (!(value >= atLeast && value <= atMost))
        fail(fmt::format("a number from {} to {} is wanted here", atLeast, atMost));
    return value;
}

std::int64_t StrictJson::integer(std::int64_t atLeast, std::int64_t atMost) const {
    const bool fits = m_value->is_number_integer() &&
                      (!m_value->is_number_unsigned() ||
                       m_value->get<std::uint64_t>() <= static_cast<std::uint64_t>(INT64_MAX)) &&
                      m_value->get<std::int64_t>() >= atLeast && m_value->get<std::int64_t>() <= atMost;
    if (!fits)
        fail(fmt::format("a whole number from {} to {} is wanted here", atLeast, atMost));
    return m_value->get<std::int64_t>();
}

std::size_t StrictJson::choice(const std::vector<std::string>& choices) const {
    const std::string value = text();
    const auto found = std::find(choices.begin(), choices.end(), value);
    if (found == choices.end())
        fail(fmt::format("\"{}\" is none of {}", value, fmt::join(choices, ", ")));
    return static_cast<std::size_t>(found - choices.begin());
}

json readJsonFile(const std::string& path) {
    std::ifstream file(path);
    std::stringstream text;
    if (!file.is_open() || !(text << file.rdbuf()))
        throw Failure(fmt::format("{} cannot be read: {}", path,
                                  errno != 0 ? std::generic_category().message(errno) : "it is empty"));
    try {
        return json::parse(text.str());
    } catch (const json::parse_error& error) {
        std::string what = error.what();
        if (const auto start = what.find("parse error"); start != std::string::npos)
            what = what.substr(start);
        throw Failure(fmt::format("{} is no JSON: {}", path, what));
    }
}

} // namespace merro::host
