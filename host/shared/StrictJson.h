// Reads JSON that people write by hand: what is unknown, missing or of the wrong kind is told with its place.
//
// One thread at a time. A StrictJson refers to the document it was made from, which must outlive it.
#pragma once

#include <nlohmann/json.hpp>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace merro::host {

/// One value of a document, and where it stands ("takes[2].sound"). Every operation throws Failure with a
/// line that names the document and the place.
class StrictJson {
public:
    /// `document` is the name used in messages: the file's path.
    StrictJson(const nlohmann::json& value, std::string document);

    /// Requires an object that has no other keys than these.
    void requireKeys(const std::vector<std::string_view>& allowed) const;

    [[nodiscard]] bool has(std::string_view key) const;
    [[nodiscard]] StrictJson at(std::string_view key) const; ///< the entry must be there
    [[nodiscard]] std::vector<StrictJson> elements() const;  ///< requires an array
    [[nodiscard]] bool isObject() const { return m_value->is_object(); }
    [[nodiscard]] bool isText() const { return m_value->is_string(); }

    [[nodiscard]] std::string text() const;
    [[nodiscard]] bool boolean() const;
    [[nodiscard]] double number(double atLeast, double atMost) const;
    [[nodiscard]] std::int64_t integer(std::int64_t atLeast, std::int64_t atMost) const;

    /// The text must be one of `choices`; answers which.
    [[nodiscard]] std::size_t choice(const std::vector<std::string>& choices) const;

    [[noreturn]] void fail(const std::string& what) const;

private:
    StrictJson(const nlohmann::json& value, std::string document, std::string path);

    const nlohmann::json* m_value;
    std::string m_document;
    std::string m_path;
};

/// Reads and parses the file. Throws Failure when it cannot be read or is no JSON, with line and column.
[[nodiscard]] nlohmann::json readJsonFile(const std::string& path);

} // namespace merro::host
