#include "host/shared/ValueJson.h"

#include "host/shared/Failure.h"
#include "host/shared/TapeText.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <charconv>

namespace merro::host {

using nlohmann::ordered_json;
using platform::Value;

namespace {

constexpr const char* kDataKey = "data";

ordered_json jsonOrNull(const std::optional<std::string>& text) {
    return text ? ordered_json(*text) : ordered_json(nullptr);
}

struct Writer {
    ordered_json operator()(bool value) const { return value; }
    ordered_json operator()(std::int64_t value) const { return value; }
    ordered_json operator()(double value) const { return value; }
    ordered_json operator()(const std::string& value) const { return value; }
    ordered_json operator()(const platform::DateRef& value) const { return jsonOrNull(wallClockText(value)); }
    ordered_json operator()(const TimecodeValue& value) const { return jsonOrNull(timecodeText(value)); }
    ordered_json operator()(const platform::Data& value) const {
        std::string digits;
        digits.reserve(value.size() * 2);
        for (const std::uint8_t byte : value)
            digits += fmt::format("{:02X}", byte);
        return {{kDataKey, digits}};
    }
    ordered_json operator()(const platform::Array& value) const {
        ordered_json array = ordered_json::array();
        for (const Value& element : value)
            array.push_back(jsonFromValue(element));
        return array;
    }
    ordered_json operator()(const platform::Dictionary& value) const {
        ordered_json object = ordered_json::object();
        for (const auto& [key, element] : value)
            object[key] = jsonFromValue(element);
        return object;
    }
};

platform::Data dataFromDigits(const std::string& digits) {
    platform::Data data;
    for (std::size_t at = 0; at + 1 < digits.size(); at += 2) {
        std::uint8_t byte = 0;
        const char* first = digits.data() + at;
        if (std::from_chars(first, first + 2, byte, 16).ptr != first + 2)
            throw Failure("A preset holds data that is damaged");
        data.push_back(byte);
    }
    return data;
}

Value valueFromJson(const ordered_json& json) {
    if (json.is_boolean())
        return json.get<bool>();
    if (json.is_number_integer())
        return json.get<std::int64_t>();
    if (json.is_number())
        return json.get<double>();
    if (json.is_string())
        return json.get<std::string>();
    if (json.is_array()) {
        platform::Array array;
        for (const ordered_json& element : json)
            array.push_back(valueFromJson(element));
        return array;
    }
    if (json.is_object()) {
        if (json.size() == 1 && json.contains(kDataKey) && json.at(kDataKey).is_string())
            return dataFromDigits(json.at(kDataKey).get<std::string>());
        platform::Dictionary dictionary;
        for (const auto& [key, element] : json.items())
            dictionary.emplace(key, valueFromJson(element));
        return dictionary;
    }
    throw Failure("A preset holds a null");
}

} // namespace

ordered_json jsonFromValue(const Value& value) {
    return std::visit(Writer{}, value.variant());
}

std::string jsonFromDictionary(const platform::Dictionary& dictionary) {
    return Writer{}(dictionary).dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

platform::Dictionary dictionaryFromJson(const std::string& text) {
    const ordered_json json = ordered_json::parse(text, nullptr, false);
    if (!json.is_object())
        throw Failure("A preset is damaged: it is no JSON object");
    platform::Dictionary dictionary;
    for (const auto& [key, element] : json.items())
        dictionary.emplace(key, valueFromJson(element));
    return dictionary;
}

} // namespace merro::host
