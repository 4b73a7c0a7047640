// One variant type for everything that travels in string-keyed dictionaries: presets, clip reports,
// attributes.
//
// Values are copied by content (data, dates by reference). Not synchronised: a Value belongs to one thread at
// a time.
#pragma once

#include "platform/Date.h"
#include "platform/SMPTETime.h"

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace merro::platform {

class Value;
using Data = std::vector<std::uint8_t>;
using Array = std::vector<Value>;
using Dictionary = std::map<std::string, Value, std::less<>>;

class Value {
public:
    using Variant = std::variant<bool, std::int64_t, double, std::string, Data, DateRef, TimecodeValue, Array,
                                 Dictionary>;

    Value(bool value) : m_value(value) {}                     // NOLINT(google-explicit-constructor)
    Value(int value) : m_value(std::int64_t{value}) {}        // NOLINT(google-explicit-constructor)
    Value(std::int64_t value) : m_value(value) {}             // NOLINT(google-explicit-constructor)
    Value(double value) : m_value(value) {}                   // NOLINT(google-explicit-constructor)
    Value(const char* value) : m_value(std::string(value)) {} // NOLINT(google-explicit-constructor)
    Value(std::string value) : m_value(std::move(value)) {}   // NOLINT(google-explicit-constructor)
    Value(Data value) : m_value(std::move(value)) {}          // NOLINT(google-explicit-constructor)
    Value(DateRef value) : m_value(std::move(value)) {}       // NOLINT(google-explicit-constructor)
    Value(TimecodeValue value) : m_value(value) {}            // NOLINT(google-explicit-constructor)
    Value(Array value) : m_value(std::move(value)) {}         // NOLINT(google-explicit-constructor)
    Value(Dictionary value) : m_value(std::move(value)) {}    // NOLINT(google-explicit-constructor)

    template <typename T>
    [[nodiscard]] const T* getIf() const {
        return std::get_if<T>(&m_value);
    }

    [[nodiscard]] const Variant& variant() const { return m_value; }

    /// The lenient readings of the platform's number objects: a boolean reads as 0 or 1, a double is cut, a
    /// text is read as far as it is a number, anything else is 0 / false / "".
    [[nodiscard]] std::int64_t integerValue() const;
    [[nodiscard]] double doubleValue() const;
    [[nodiscard]] bool boolValue() const;
    [[nodiscard]] std::string stringValue() const;

    friend bool operator==(const Value&, const Value&) = default;

private:
    Variant m_value;
};

/// The entry under `key`, or null.
[[nodiscard]] inline const Value* find(const Dictionary& dictionary, std::string_view key) {
    const auto found = dictionary.find(key);
    return found == dictionary.end() ? nullptr : &found->second;
}

} // namespace merro::platform
