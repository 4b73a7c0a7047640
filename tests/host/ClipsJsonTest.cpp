#include "host/shared/ClipsJson.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace merro::host::test {
namespace {

ClipEntry fullClip() {
    ClipEntry clip;
    clip.number = 12;
    clip.tapeId = 1;
    clip.recordingDate = "2005-03-17T14:03:22";
    clip.startTimecode = "01:02:03:04";
    clip.endTimecode = "01:02:04:04";
    clip.duration = "00:00:01:00";
    clip.aspectRatio = 1;
    clip.moviePath = "0012.mov";
    clip.framesLost = 2;
    return clip;
}

TEST(ClipsJsonTest, HasExactlyTheKeysOfTheFormatInItsOrder) {
    TapeEntry tape;
    tape.name = "holiday";
    tape.source = "/tapes/holiday.dv";
    tape.system = "625/50";
    tape.frames = 750;
    const std::string expected = R"({
  "tape": {
    "name": "holiday",
    "source": "/tapes/holiday.dv",
    "system": "625/50",
    "frames": 750
  },
  "clips": [
    {
      "clipId": "0012",
      "clipRecordingDate": "2005-03-17T14:03:22",
      "clipStartTimecode": "01:02:03:04",
      "clipEndTimecode": "01:02:04:04",
      "clipDuration": "00:00:01:00",
      "clipAspectRatio": 1,
      "moviePath": "0012.mov",
      "thumbnailPath": null,
      "posterPath": null,
      "framesLost": 2
    }
  ]
}
)";
    EXPECT_EQ(clipsJson(tape, {fullClip()}), expected);
}

TEST(ClipsJsonTest, TheDurationIsNullWhereTheEndTimecodeIsMissing) {
    ClipEntry clip = fullClip();
    clip.endTimecode.reset();
    EXPECT_TRUE(clipAsJson(clip)["clipDuration"].is_null());
    EXPECT_TRUE(clipAsJson(clip)["clipEndTimecode"].is_null());
}

TEST(ClipsJsonTest, NamesThatAreNoUtf8DoNotStopAReport) {
    TapeEntry tape;
    tape.name = "caf\xE9";
    EXPECT_TRUE(nlohmann::json::accept(clipsJson(tape, {})));
}

TEST(ClipsCsvTest, FieldsWithCommasAndQuotesAreQuoted) {
    TapeEntry tape;
    tape.tapeId = 1;
    tape.name = "Rome, \"2005\"";
    EXPECT_EQ(clipsCsv({tape}, {fullClip()}),
              "tape,clipId,clipRecordingDate,clipStartTimecode,clipEndTimecode,clipDuration,clipAspectRatio,"
              "moviePath,thumbnailPath,posterPath,framesLost\r\n"
              "\"Rome, \"\"2005\"\"\",0012,2005-03-17T14:03:22,01:02:03:04,01:02:04:04,00:00:01:00,1,"
              "0012.mov,,,2\r\n");
}

TEST(ClipIdTest, HasFourDigitsOrMore) {
    EXPECT_EQ(clipIdOfNumber(1), "0001");
    EXPECT_EQ(clipIdOfNumber(10000), "10000");
}

} // namespace
} // namespace merro::host::test
