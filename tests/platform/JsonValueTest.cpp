// Values as JSON.
#include "platform/native/JsonValue.h"

#include "platform/native/Base64.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace merro::platform::native {
namespace {

using Json = nlohmann::json;

Value thereAndBack(const Value& value) {
    return valueFromJson(Json::parse(jsonFromValue(value).dump()));
}

TEST(Base64, agreesWithTheStandardsExamples) { // RFC 4648, section 10
    const std::pair<std::string, std::string> examples[] = {{"", ""},
                                                            {"f", "Zg=="},
                                                            {"fo", "Zm8="},
                                                            {"foo", "Zm9v"},
                                                            {"foob", "Zm9vYg=="},
                                                            {"fooba", "Zm9vYmE="},
                                                            {"foobar", "Zm9vYmFy"}};
    for (const auto& [plain, text] : examples) {
        EXPECT_EQ(base64(Data(plain.begin(), plain.end())), text);
        EXPECT_EQ(dataFromBase64(text), Data(plain.begin(), plain.end()));
    }
}

TEST(Base64, refusesWhatItDoesNotMake) {
    for (const char* const text : {"Z", "Zg", "Zg=", "Zg==Zg==", "Z g=", "Zh==", "Zm9v\n", "===="})
        EXPECT_THROW((void)dataFromBase64(text), std::invalid_argument) << text;
}

TEST(JsonValue, plainValuesAreJsonsOwn) {
    EXPECT_EQ(jsonFromValue(true), Json(true));
    EXPECT_EQ(jsonFromValue(12), Json(12));
    EXPECT_EQ(jsonFromValue(0.5), Json(0.5));
    EXPECT_EQ(jsonFromValue("Évry"), Json("Évry"));
    EXPECT_EQ(jsonFromValue(Array{1, "two"}), Json::parse(R"([1, "two"])"));
    EXPECT_EQ(jsonFromValue(Dictionary{{"detectScenes", true}, {"nbDropFrame", 2}}),
              Json::parse(R"({"detectScenes": true, "nbDropFrame": 2})"));
}

TEST(JsonValue, whatJsonLacksIsAnObjectThatNamesIt) {
    EXPECT_EQ(jsonFromValue(Data{0, 1, 255}), Json::parse(R"({"$data": "AAH/"})"));
    // 1111064602 s after 1970-01-01 is 2005-03-17 13:03:22 UTC (date -u -d @1111064602)
    const auto date =
        std::make_shared<const Date>(Date::Instant(std::chrono::microseconds(1111064602000007)));
    EXPECT_EQ(jsonFromValue(DateRef(date)), Json::parse(R"({"$date": "2005-03-17T13:03:22.000007Z"})"));
    EXPECT_EQ(jsonFromValue(DateRef()), Json::parse(R"({"$date": null})"));
    EXPECT_EQ(jsonFromValue(TimecodeValue()), Json::parse(R"({"$timecode": null})"));
    SMPTETime time;
    time.mHours = 1;
    time.mType = kSMPTETimeType25;
    EXPECT_EQ(jsonFromValue(TimecodeValue::valueWithSMPTETime(time)),
              Json::parse(R"({"$timecode": {"subframes": 0, "subframeDivisor": 0, "counter": 0, "type": 1,
                  "flags": 0, "hours": 1, "minutes": 0, "seconds": 0, "frames": 0}})"));
}

TEST(JsonValue, everyValueComesBackAsItWas) {
    SMPTETime time{-1, 2, 4000000000U, kSMPTETimeType2997Drop, 7, 25, 61, -3, 29};
    const Value values[] = {false,
                            std::numeric_limits<std::int64_t>::min(),
                            1.0,
                            0.1,
                            -std::numeric_limits<double>::infinity(),
                            "",
                            std::string("\xff\xfe is no UTF-8"),
                            Data{},
                            TimecodeValue(),
                            TimecodeValue::valueWithSMPTETime(time),
                            Array{Data{1, 2}, Array{}, Dictionary{}},
                            Dictionary{{"$data", "a text"}},
                            Dictionary{{"$dictionary", Dictionary{{"$x", 1}}}},
                            Dictionary{{"$one", 1}, {"$two", 2}}};
    for (const auto& value : values)
        EXPECT_EQ(thereAndBack(value), value) << jsonFromValue(value);
    EXPECT_TRUE(std::isnan(thereAndBack(std::nan("")).doubleValue()));
}

TEST(JsonValue, datesComeBackToTheMicrosecond) {
    for (const std::int64_t microseconds : {INT64_C(0), INT64_C(-1), INT64_C(1111064602123456)}) {
        const auto date =
            std::make_shared<const Date>(Date::Instant(std::chrono::microseconds(microseconds)));
        const Value back = thereAndBack(DateRef(date));
        ASSERT_TRUE(back.getIf<DateRef>());
        EXPECT_EQ((*back.getIf<DateRef>())->instant(), date->instant());
    }
}

TEST(JsonValue, whatStandsForNoValueIsRefused) {
    for (const char* const text :
         {"null", "[null]", R"({"$unknown": 1})", R"({"$data": 1})", R"({"$date": "yesterday"})",
          R"({"$date": "2005-02-30T00:00:00.000000Z"})", R"({"$date": "2005-03-17T25:00:00.000000Z"})",
          R"({"$timecode": {"hours": 1}})", R"({"$number": "one"})", R"({"$dictionary": {"x": null}})"})
        EXPECT_THROW((void)valueFromJson(Json::parse(text)), std::invalid_argument) << text;
}

} // namespace
} // namespace merro::platform::native
