#include "platform/native/JsonValue.h"

#include "platform/native/Base64.h"

#include <cmath>
#include <cstdio>
#include <stdexcept>

namespace merro::platform::native {

namespace {

using Json = nlohmann::json;

bool isUtf8(const std::string& text) {
    try {
        (void)Json(text).dump();
        return true;
    } catch (const Json::type_error&) {
        return false;
    }
}

Json jsonFromText(const std::string& text) {
    if (isUtf8(text))
        return text;
    return Json{{"$text", base64(Data(text.begin(), text.end()))}};
}

Json jsonFromNumber(double number) {
    if (std::isfinite(number))
        return number;
    return Json{{"$number", std::isnan(number) ? "nan" : number > 0 ? "inf" : "-inf"}};
}

double numberFromWord(const std::string& word) {
    if (word == "nan")
        return std::nan("");
    if (word == "inf" || word == "-inf")
        return word == "inf" ? HUGE_VAL : -HUGE_VAL;
    throw std::invalid_argument("\"" + word + "\" is no number");
}

Json jsonFromDate(const DateRef& date) {
    if (!date)
        return Json{{"$date", nullptr}};
    using namespace std::chrono;
    const auto day = floor<days>(date->instant());
    const year_month_day ymd(day);
    const hh_mm_ss time(date->instant() - day);
    char text[64];
    (void)std::snprintf(text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02d.%06dZ",
                        static_cast<int>(ymd.year()), static_cast<unsigned>(ymd.month()),
                        static_cast<unsigned>(ymd.day()), static_cast<int>(time.hours().count()),
                        static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()),
                        static_cast<int>(time.subseconds().count()));
    return Json{{"$date", text}};
}

DateRef dateFromJson(const Json& json) {
    if (json.is_null())
        return nullptr;
    using namespace std::chrono;
    const auto text = json.get<std::string>();
    int y = 0;
    unsigned mo = 0;
    unsigned d = 0;
    int h = 0;
    int mi = 0;
    int s = 0;
    int fraction = 0;
    (void)std::sscanf(text.c_str(), "%5d-%2u-%2uT%2d:%2d:%2d.%6dZ", &y, &mo, &d, &h, &mi, &s, &fraction);
    const sys_days date = year{y} / month{mo} / day{d};
    auto result =
        std::make_shared<const Date>(date + hours{h} + minutes{mi} + seconds{s} + microseconds{fraction});
    if (jsonFromDate(result).at("$date") != text)
        throw std::invalid_argument("\"" + text + "\" is no date");
    return result;
}

Json jsonFromTimecode(const TimecodeValue& value) {
    if (!value)
        return Json{{"$timecode", nullptr}};
    const SMPTETime time = value.SMPTETimeValue();
    return Json{{"$timecode",
                 {{"subframes", time.mSubframes},
                  {"subframeDivisor", time.mSubframeDivisor},
                  {"counter", time.mCounter},
                  {"type", time.mType},
                  {"flags", time.mFlags},
                  {"hours", time.mHours},
                  {"minutes", time.mMinutes},
                  {"seconds", time.mSeconds},
                  {"frames", time.mFrames}}}};
}

TimecodeValue timecodeFromJson(const Json& json) {
    if (json.is_null())
        return {};
    SMPTETime time;
    time.mSubframes = json.at("subframes").get<std::int16_t>();
    time.mSubframeDivisor = json.at("subframeDivisor").get<std::int16_t>();
    time.mCounter = json.at("counter").get<std::uint32_t>();
    time.mType = json.at("type").get<std::uint32_t>();
    time.mFlags = json.at("flags").get<std::uint32_t>();
    time.mHours = json.at("hours").get<std::int16_t>();
    time.mMinutes = json.at("minutes").get<std::int16_t>();
    time.mSeconds = json.at("seconds").get<std::int16_t>();
    time.mFrames = json.at("frames").get<std::int16_t>();
    return TimecodeValue::valueWithSMPTETime(time);
}

Json jsonFromDictionary(const Dictionary& dictionary) {
    Json object = Json::object();
    for (const auto& [key, value] : dictionary)
        object[key] = jsonFromValue(value);
    const bool looksSpecial = dictionary.size() == 1 && dictionary.begin()->first.starts_with('$');
    return looksSpecial ? Json{{"$dictionary", object}} : object;
}

Value dictionaryFromJson(const Json& json) {
    Dictionary dictionary;
    for (const auto& [key, value] : json.items())
        dictionary.emplace(key, valueFromJson(value));
    return dictionary;
}

Value valueFromObject(const Json& json) {
    if (json.size() != 1 || !json.begin().key().starts_with('$'))
        return dictionaryFromJson(json);
    const auto& kind = json.begin().key();
    const auto& content = json.begin().value();
    if (kind == "$data")
        return dataFromBase64(content.get<std::string>());
    if (kind == "$date")
        return dateFromJson(content);
    if (kind == "$timecode")
        return timecodeFromJson(content);
    if (kind == "$number")
        return numberFromWord(content.get<std::string>());
    if (kind == "$text") {
        const Data bytes = dataFromBase64(content.get<std::string>());
        return std::string(bytes.begin(), bytes.end());
    }
    if (kind == "$dictionary")
        return dictionaryFromJson(content);
    throw std::invalid_argument("\"" + kind + "\" is no kind of value");
}

struct ToJson {
    Json operator()(bool boolean) const { return boolean; }
    Json operator()(std::int64_t integer) const { return integer; }
    Json operator()(double number) const { return jsonFromNumber(number); }
    Json operator()(const std::string& text) const { return jsonFromText(text); }
    Json operator()(const Data& data) const { return Json{{"$data", base64(data)}}; }
    Json operator()(const DateRef& date) const { return jsonFromDate(date); }
    Json operator()(const TimecodeValue& timecode) const { return jsonFromTimecode(timecode); }
    Json operator()(const Array& array) const {
        Json json = Json::array();
        for (const auto& value : array)
            json.push_back(jsonFromValue(value));
        return json;
    }
    Json operator()(const Dictionary& dictionary) const { return jsonFromDictionary(dictionary); }
};

} // namespace

Json jsonFromValue(const Value& value) {
    return std::visit(ToJson{}, value.variant());
}

Value valueFromJson(const Json& json) {
    try {
        switch (json.type()) {
        case Json::value_t::boolean:
            return json.get<bool>();
        case Json::value_t::number_integer:
            return json.get<std::int64_t>();
        case Json::value_t::number_unsigned:
            if (json.get<std::uint64_t>() > std::uint64_t{INT64_MAX})
                return json.get<double>();
            return json.get<std::int64_t>();
        case Json::value_t::number_float:
            return json.get<double>();
        case Json::value_t::string:
            return json.get<std::string>();
        case Json::value_t::object:
            return valueFromObject(json);
        case Json::value_t::array: {
            Array array;
            for (const auto& each : json)
                array.push_back(valueFromJson(each));
            return array;
        }
        default:
            throw std::invalid_argument("null is no value");
        }
    } catch (const Json::exception& wrong) {
        throw std::invalid_argument(wrong.what());
    }
}

} // namespace merro::platform::native
