// Whole runs of `merro log`, the program as it is installed.
#include "tests/host/Program.h"
#include "tests/host/TemporaryFolder.h"
#include "tests/host/TestTape.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <sstream>

namespace merro::host::test {
namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr std::size_t kFrame625 = 144000;

struct LogProgramTest : testing::Test {
    TemporaryFolder home;
    std::string tape = home / "tape.dv";
    std::string folder = home / "clips";

    Ended log(std::vector<std::string> more = {}) {
        std::vector<std::string> arguments{"log", tape, "--into", folder};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return runProgram(arguments, home.path());
    }
    json clipsJson() { return json::parse(readFile(folder + "/clips.json")); }
    std::vector<std::string> names() {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.push_back(entry.path().filename().string());
        std::sort(names.begin(), names.end());
        return names;
    }
    static std::vector<json> eventsOf(const std::string& out) {
        std::vector<json> events;
        std::istringstream lines(out);
        for (std::string line; std::getline(lines, line);)
            events.push_back(json::parse(line));
        return events;
    }
    static std::vector<std::string> kindsOf(const std::vector<json>& events) {
        std::vector<std::string> kinds;
        for (const json& event : events)
            if (event["event"].get<std::string>().ends_with("Record"))
                kinds.push_back(event["event"].get<std::string>() +
                                (event.contains("clipId") ? " " + event["clipId"].get<std::string>() : ""));
        return kinds;
    }
};

TEST_F(LogProgramTest, ATapeOfTwoTakesBecomesTwoClipsWithAllTheirFiles) {
    writeFile(tape, tapeOfTwoTakes());
    const Ended ended = log();
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_THAT(names(), ElementsAre("0001.mov", "0001.png", "0001.thumbnails", "0002.mov", "0002.png",
                                     "0002.thumbnails", "catalogue.sqlite", "clips.json"));
    const json report = clipsJson();
    EXPECT_EQ(report["tape"],
              (json{{"name", "tape"}, {"source", tape}, {"system", "625/50"}, {"frames", 40}}));
    ASSERT_EQ(report["clips"].size(), 2U);
    EXPECT_EQ(report["clips"][0], (json{{"clipId", "0001"},
                                        {"clipRecordingDate", "2005-03-17T14:03:22"},
                                        {"clipStartTimecode", "00:00:00:00"},
                                        {"clipEndTimecode", "00:00:01:04"},
                                        {"clipDuration", "00:00:01:04"},
                                        {"clipAspectRatio", 1},
                                        {"moviePath", "0001.mov"},
                                        {"thumbnailPath", "0001.thumbnails"},
                                        {"posterPath", "0001.png"},
                                        {"framesLost", 0}}));
    EXPECT_EQ(report["clips"][1]["clipStartTimecode"], "00:00:01:05");
    EXPECT_EQ(report["clips"][1]["clipEndTimecode"], "00:00:01:14");
}

TEST_F(LogProgramTest, TheFirstAndTheLastFrameOfEachTakeAreInItsThumbnails) {
    const std::string bytes = tapeOfTwoTakes();
    writeFile(tape, bytes);
    EXPECT_EQ(log({"--movies", "off", "--sample-every", "off", "--posters", "off"}).status, 0);
    EXPECT_EQ(readFile(folder + "/0001.thumbnails"),
              bytes.substr(0, kFrame625) + bytes.substr(29 * kFrame625, kFrame625));
    EXPECT_EQ(readFile(folder + "/0002.thumbnails"),
              bytes.substr(30 * kFrame625, kFrame625) + bytes.substr(39 * kFrame625, kFrame625));
    EXPECT_THAT(names(), ElementsAre("0001.thumbnails", "0002.thumbnails", "catalogue.sqlite", "clips.json"));
    EXPECT_TRUE(clipsJson()["clips"][0]["moviePath"].is_null());
    EXPECT_TRUE(clipsJson()["clips"][0]["posterPath"].is_null());
}

TEST_F(LogProgramTest, InRealTimeTheFirstFrameOfTheTapeIsInTheFirstClipToo) {
    const std::string bytes = testTape({{5, CalendarFields{2005, 3, 17, 14, 3, 22}, 0}});
    writeFile(tape, bytes);
    const Ended ended = log({"--realtime", "--sample-every", "off"});
    EXPECT_EQ(ended.status, 0) << ended.err;
    EXPECT_EQ(readFile(folder + "/0001.thumbnails").substr(0, kFrame625), bytes.substr(0, kFrame625));
    EXPECT_EQ(clipsJson()["clips"][0]["clipStartTimecode"], "00:00:00:00");
}

TEST_F(LogProgramTest, ASecondRunGoesOnCountingAndOverwritesNothing) {
    writeFile(tape, tapeOfTwoTakes());
    ASSERT_EQ(log({"--movies", "off"}).status, 0);
    const std::string first = readFile(folder + "/0001.thumbnails");
    writeFile(folder + "/0007.txt", "notes of mine"); // a file of the user's that carries a number
    ASSERT_EQ(log({"--movies", "off", "--scenes", "off"}).status, 0);
    EXPECT_EQ(readFile(folder + "/0001.thumbnails"), first);
    EXPECT_EQ(readFile(folder + "/0007.txt"), "notes of mine");
    ASSERT_EQ(clipsJson()["clips"].size(), 3U);
    EXPECT_EQ(clipsJson()["clips"][2]["clipId"], "0008");
}

TEST_F(LogProgramTest, EventsTellEveryMessageInOrderAndNothingElseIsOnStandardOutput) {
    writeFile(tape, tapeOfTwoTakes());
    const Ended ended = log({"--events"});
    const std::vector<json> events = eventsOf(ended.out);
    EXPECT_THAT(kindsOf(events), ElementsAre("beginRecord", "willRecord 0001", "didRecord", "willRecord 0002",
                                             "didRecord", "endRecord"));
    EXPECT_EQ(events.back()["event"], "progress");
    EXPECT_EQ(events.back()["frame"], 40);
    EXPECT_EQ(events.back()["clips"], 2);
    EXPECT_THAT(ended.err, HasSubstr("0002.mov"));
}

TEST_F(LogProgramTest, TheTableIsOnStandardOutputAndABarOnlyOnRequest) {
    writeFile(tape, tapeOfTwoTakes());
    const Ended quiet = log();
    EXPECT_THAT(quiet.out, HasSubstr("0001    2005-03-17 14:03:22  00:00:00:00"));
    EXPECT_THAT(quiet.err, testing::Not(HasSubstr("\x1b")));
}

TEST_F(LogProgramTest, ABarThatIsAskedForShowsThePositionOnTheTape) {
    writeFile(tape, testTape({{10, CalendarFields{2005, 3, 17, 14, 3, 22}, 0}}));
    const Ended ended =
        log({"--realtime", "--progress", "always", "--movies", "off"}); // 10 frames last 0.4 s
    EXPECT_THAT(ended.err, HasSubstr("["));
    EXPECT_THAT(ended.err, HasSubstr("of 0:00"));
    EXPECT_THAT(ended.err, testing::Not(testing::EndsWith("\x1b[K")));
}

TEST_F(LogProgramTest, ScenesOffMakesOneClipOfTheTape) {
    writeFile(tape, tapeOfTwoTakes());
    ASSERT_EQ(log({"--scenes", "off", "--movies", "off"}).status, 0);
    ASSERT_EQ(clipsJson()["clips"].size(), 1U);
    EXPECT_EQ(clipsJson()["clips"][0]["clipEndTimecode"], "00:00:01:14");
}

TEST_F(LogProgramTest, DroppedFramesBelongToNoClip) {
    writeFile(tape, tapeOfTwoTakes());
    ASSERT_EQ(log({"--drop-frames", "3", "--movies", "off"}).status, 0);
    EXPECT_EQ(clipsJson()["clips"][1]["clipStartTimecode"], "00:00:01:08"); // 30 + 3 frames
}

TEST_F(LogProgramTest, ASecondOfDroppedFramesIsRefusedWithTheReason) {
    writeFile(tape, testTape({{2, std::nullopt, 0}}));
    const Ended pal = log({"--drop-frames", "25"});
    EXPECT_EQ(pal.status, 2);
    EXPECT_THAT(pal.err, HasSubstr("the recording date has moved on by more than a second"));
    EXPECT_FALSE(std::filesystem::exists(folder));
    EXPECT_EQ(log({"--drop-frames", "24"}).status, 0);

    writeFile(tape, testTape({{2, std::nullopt, 0}}, DVSystem::System525_60));
    EXPECT_EQ(log({"--drop-frames", "29"}).status, 0);
    EXPECT_EQ(log({"--drop-frames", "30"}).status, 2);
}

TEST_F(LogProgramTest, ATapeWithoutTimecodeIsLoggedByItsDates) {
    writeFile(tape, testTape({{5, CalendarFields{2005, 3, 17, 14, 3, 22}, std::nullopt}}));
    EXPECT_EQ(log().status, 0);
    const json clip = clipsJson()["clips"].at(0);
    EXPECT_EQ(clip["clipRecordingDate"], "2005-03-17T14:03:22");
    EXPECT_TRUE(clip["clipStartTimecode"].is_null());
    EXPECT_TRUE(clip["clipEndTimecode"].is_null());
    EXPECT_TRUE(clip["clipDuration"].is_null());
    EXPECT_EQ(readFile(folder + "/0001.thumbnails").size(), 2 * kFrame625);
}

TEST_F(LogProgramTest, BytesThatAreNoFrameAreSkippedAndToldWithTheirPlace) {
    const std::string two = testTape({{2, CalendarFields{2005, 3, 17, 14, 3, 22}, 0}});
    writeFile(tape, two + std::string(777, 'x') + testTape({{2, CalendarFields{2005, 3, 17, 14, 3, 22}, 2}}));
    const Ended ended = log({"--movies", "off"});
    EXPECT_EQ(ended.status, 0);
    EXPECT_THAT(ended.err, HasSubstr("At byte 288000: 777 bytes skipped"));
    EXPECT_EQ(clipsJson()["tape"]["frames"], 4);
    EXPECT_EQ(clipsJson()["clips"][0]["clipEndTimecode"], "00:00:00:03");
}

TEST_F(LogProgramTest, OptionsLeaveTheStoredSettingsAlone) {
    writeFile(tape, tapeOfTwoTakes());
    const std::string settings = home / "mine.json";
    ASSERT_EQ(log({"--defaults-file", settings, "--movies", "off"}).status, 0);
    const std::string stored = readFile(settings);
    EXPECT_THAT(stored, HasSubstr("detectScene"));
    ASSERT_EQ(log({"--defaults-file", settings, "--scenes", "off", "--movies", "off"}).status, 0);
    EXPECT_EQ(readFile(settings), stored);
}

TEST_F(LogProgramTest, TheTimeZoneOfTheCameraDecidesWhetherTheNightOfTheChangeIsACut) {
    // 01:59:59 to 02:00:00 on the night on which clocks in Berlin go from 02:00 to 03:00.
    writeFile(tape, testTape({{25, CalendarFields{2005, 3, 27, 1, 59, 59}, 0},
                              {25, CalendarFields{2005, 3, 27, 3, 0, 0}, 25}}));
    ASSERT_EQ(log({"--movies", "off"}).status, 0);
    EXPECT_EQ(clipsJson()["clips"].size(), 2U) << "without daylight saving an hour is missing";
    folder = home / "berlin";
    ASSERT_EQ(log({"--movies", "off", "--time-zone", "Europe/Berlin"}).status, 0);
    EXPECT_EQ(clipsJson()["clips"].size(), 1U);
    EXPECT_EQ(log({"--time-zone", "Europe/Atlantis"}).status, 2);
}

TEST_F(LogProgramTest, InterruptingClosesAndReportsTheLastClip) {
    writeFile(tape, testTape({{100, CalendarFields{2005, 3, 17, 14, 3, 22}, 0}}));
    for (const int signal : {SIGINT, SIGTERM}) {
        folder = home / ("clips" + std::to_string(signal));
        Program program({"log", tape, "--into", folder, "--realtime", "--events"}, home.path());
        ASSERT_TRUE(program.waitForOutput("\"progress\""));
        program.sendSignal(signal);
        const Ended ended = program.wait();
        EXPECT_EQ(ended.status, 130);
        EXPECT_THAT(ended.out, HasSubstr("endRecord"));
        ASSERT_EQ(clipsJson()["clips"].size(), 1U);
        EXPECT_EQ(clipsJson()["clips"][0]["moviePath"], "0001.mov");
        EXPECT_LT(clipsJson()["tape"]["frames"], 100);
        EXPECT_EQ(names().size(), 5U); // movie, poster, thumbnails, catalogue, report: nothing half made
    }
}

} // namespace
} // namespace merro::host::test
