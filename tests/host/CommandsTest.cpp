// inspect, export, preset, devices, tape make: the program as it is installed.
#include "tests/host/Program.h"
#include "tests/host/TemporaryFolder.h"
#include "tests/host/TestTape.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <sstream>

namespace merro::host::test {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using testing::Not;

struct CommandsTest : testing::Test {
    TemporaryFolder home;
    std::string tape = home / "tape.dv";
    std::string folder = home / "clips";

    Ended run(const std::vector<std::string>& arguments) { return runProgram(arguments, home.path()); }

    static std::vector<json> lines(const std::string& out) {
        std::vector<json> values;
        std::istringstream stream(out);
        for (std::string line; std::getline(stream, line);)
            values.push_back(json::parse(line));
        return values;
    }
};

TEST_F(CommandsTest, InspectTellsOfEachFrameWhatItSays) {
    writeFile(tape, tapeOfTwoTakes());
    const Ended ended = run({"inspect", tape, "--json", "--frames", "29-30"});
    EXPECT_EQ(ended.status, 0);
    const auto frames = lines(ended.out);
    ASSERT_EQ(frames.size(), 2U);
    EXPECT_EQ(frames[0], (json{{"frame", 29},
                               {"offset", 29 * 144000},
                               {"size", 144000},
                               {"system", "625/50"},
                               {"timecode", "00:00:01:04"},
                               {"timecodeType", 1}, // 25 frames a second
                               {"recordingDate", "2005-03-17"},
                               {"recordingTime", "14:03:23"},
                               {"aspectRatio", 1},
                               {"stillPicture", frames[0]["stillPicture"]},
                               {"interlaced", frames[0]["interlaced"]},
                               {"pixelSampling", frames[0]["pixelSampling"]},
                               {"sequence", 6}})); // the first of the second half of 12
    EXPECT_EQ(frames[1]["recordingTime"], "15:00:00");
}

TEST_F(CommandsTest, InspectSaysNullWhereATapeSaysNothing) {
    writeFile(tape, testTape({{1, std::nullopt, std::nullopt}}, DVSystem::System525_60));
    const auto frame = lines(run({"inspect", tape, "--json"}).out).at(0);
    for (const char* key : {"timecode", "timecodeType", "recordingDate", "recordingTime"})
        EXPECT_TRUE(frame[key].is_null()) << key;
    EXPECT_EQ(frame["system"], "525/60");
    EXPECT_EQ(frame["sequence"], 9); // the last one searched
}

TEST_F(CommandsTest, InspectGoesToTheEndOfTheTapeAndNoFurther) {
    writeFile(tape, tapeOfTwoTakes());
    EXPECT_EQ(lines(run({"inspect", tape, "--json"}).out).size(), 40U);
    EXPECT_EQ(lines(run({"inspect", tape, "--json", "--frames", "38-1000"}).out).size(), 2U);
    EXPECT_EQ(lines(run({"inspect", tape, "--json", "--frames", "38-"}).out).size(), 2U);
    EXPECT_EQ(run({"inspect", tape, "--frames", "40-50"}).status, 1);
    EXPECT_EQ(run({"inspect", tape, "--frames", "9-8"}).status, 2);
    EXPECT_EQ(run({"inspect", tape, "--frames", "x"}).status, 2);
}

TEST_F(CommandsTest, ExportGivesWhatTheReportFileHasAndASpreadsheet) {
    writeFile(tape, tapeOfTwoTakes());
    ASSERT_EQ(run({"log", tape, "--into", folder, "--movies", "off"}).status, 0);
    EXPECT_EQ(run({"export", folder, "--format", "json"}).out, readFile(folder + "/clips.json"));
    const std::string file = home / "clips.csv";
    ASSERT_EQ(run({"export", folder, "--format", "csv", "--output", file}).status, 0);
    EXPECT_THAT(readFile(file), HasSubstr("tape,0002,2005-03-17T15:00:00,00:00:01:05,"));
}

TEST_F(CommandsTest, AnExportNeverReplacesAFileOfTheClips) {
    writeFile(tape, tapeOfTwoTakes());
    ASSERT_EQ(run({"log", tape, "--into", folder, "--movies", "off"}).status, 0);
    const std::string before = readFile(folder + "/0001.thumbnails");
    EXPECT_EQ(run({"export", folder, "--replace", "--output", folder + "/0001.thumbnails"}).status, 1);
    EXPECT_EQ(readFile(folder + "/0001.thumbnails"), before);
}

TEST_F(CommandsTest, AnExportReplacesAnotherFileOnlyWhenAsked) {
    writeFile(tape, tapeOfTwoTakes());
    ASSERT_EQ(run({"log", tape, "--into", folder, "--movies", "off"}).status, 0);
    const std::string file = home / "mine.json";
    writeFile(file, "mine");
    EXPECT_EQ(run({"export", folder, "--output", file}).status, 1);
    EXPECT_EQ(readFile(file), "mine");
    EXPECT_EQ(run({"export", folder, "--output", file, "--replace"}).status, 0);
    EXPECT_EQ(readFile(file), readFile(folder + "/clips.json"));
}

TEST_F(CommandsTest, PresetsAreKeptShownUsedAndForgotten) {
    EXPECT_EQ(run({"preset", "save", "one clip", "--scenes", "off", "--sample-every", "20"}).status, 0);
    EXPECT_EQ(run({"preset", "save", "another"}).status, 0);
    EXPECT_EQ(run({"preset", "list"}).out, "another\none clip\n");
    const json preset = json::parse(run({"preset", "show", "one clip"}).out);
    EXPECT_EQ(preset["optionsName"], "one clip");
    EXPECT_EQ(preset["detectScenes"], false);
    EXPECT_EQ(preset["samplingIntervalInSecs"], 20);

    writeFile(tape, tapeOfTwoTakes());
    ASSERT_EQ(run({"log", tape, "--into", folder, "--preset", "one clip", "--movies", "off"}).status, 0);
    EXPECT_EQ(json::parse(readFile(folder + "/clips.json"))["clips"].size(), 1U);
    // Neither saving nor using a preset has changed the stored settings.
    ASSERT_EQ(run({"log", tape, "--into", home / "again", "--movies", "off"}).status, 0);
    EXPECT_EQ(json::parse(readFile(home / "again/clips.json"))["clips"].size(), 2U);

    EXPECT_EQ(run({"preset", "delete", "one clip"}).status, 0);
    EXPECT_EQ(run({"preset", "list"}).out, "another\n");
    EXPECT_EQ(run({"preset", "delete", "one clip"}).status, 1);
    EXPECT_EQ(run({"preset", "show", "one clip"}).status, 1);
}

TEST_F(CommandsTest, AnOptionGoesBeforeThePreset) {
    ASSERT_EQ(run({"preset", "save", "one", "--scenes", "off"}).status, 0);
    writeFile(tape, tapeOfTwoTakes());
    ASSERT_EQ(
        run({"log", tape, "--into", folder, "--preset", "one", "--scenes", "on", "--movies", "off"}).status,
        0);
    EXPECT_EQ(json::parse(readFile(folder + "/clips.json"))["clips"].size(), 2U);
}

TEST_F(CommandsTest, PresetsLieBesideTheSettingsFileThatIsNamed) {
    ASSERT_EQ(run({"preset", "save", "one", "--defaults-file", home / "mine.json"}).status, 0);
    EXPECT_TRUE(std::filesystem::exists(home / "mine.presets.sqlite"));
    EXPECT_EQ(run({"preset", "list"}).out, "");
    EXPECT_EQ(run({"preset", "list", "--defaults-file", home / "mine.json"}).out, "one\n");
}

TEST_F(CommandsTest, DevicesSaysWhyThereIsNoneAndThatFilesCanBeLogged) {
    const Ended people = run({"devices"});
    EXPECT_EQ(people.status, 0);
    EXPECT_THAT(people.err, HasSubstr("merro log FILE"));
    const json report = json::parse(run({"devices", "--json"}).out);
    EXPECT_TRUE(report["devices"].empty());
    EXPECT_TRUE(report["firewire"].contains("why"));
}

TEST_F(CommandsTest, ATapeIsMadeFromAScenarioAndCanBeLogged) {
    writeFile(home / "s.json", R"({"takes": [
        {"frames": 10, "recordingDate": "2005-03-17T14:03:22", "timecode": "01:00:00:00"},
        {"frames": 5, "recordingDate": "2005-03-17T16:00:00", "aspect": "16:9"}]})");
    ASSERT_EQ(run({"tape", "make", home / "s.json", tape}).status, 0);
    ASSERT_EQ(run({"log", tape, "--into", folder}).status, 0);
    const json clips = json::parse(readFile(folder + "/clips.json"))["clips"];
    ASSERT_EQ(clips.size(), 2U);
    EXPECT_EQ(clips[0]["clipStartTimecode"], "01:00:00:00");
    EXPECT_EQ(clips[1]["clipStartTimecode"], "01:00:00:10");
    EXPECT_EQ(clips[1]["clipAspectRatio"], 0);

    const std::string made = readFile(tape);
    EXPECT_EQ(run({"tape", "make", home / "s.json", tape}).status, 1) << "a file that is there is kept";
    EXPECT_EQ(readFile(tape), made);
    EXPECT_EQ(run({"tape", "make", home / "s.json", tape, "--replace"}).status, 0);
}

TEST_F(CommandsTest, ABrokenScenarioIsToldWithItsPlace) {
    writeFile(home / "s.json", R"({"takes": [{"seconds": 1}, {"seconds": "two"}]})");
    const Ended ended = run({"tape", "make", home / "s.json", tape});
    EXPECT_EQ(ended.status, 1);
    EXPECT_THAT(ended.err, HasSubstr("takes[1].seconds: a number is wanted here"));
    EXPECT_FALSE(std::filesystem::exists(tape));
}

TEST_F(CommandsTest, HelpTeachesEachCommandWithExamples) {
    const std::vector<std::vector<std::string>> commands{{},         {"log"},     {"inspect"},     {"export"},
                                                         {"preset"}, {"devices"}, {"tape", "make"}};
    for (std::vector<std::string> command : commands) {
        command.emplace_back("--help");
        const Ended ended = run(command);
        EXPECT_EQ(ended.status, 0);
        EXPECT_THAT(ended.out, HasSubstr("Examples:")) << command.front();
        EXPECT_EQ(ended.err, "");
    }
    EXPECT_THAT(run({"--version"}).out, testing::MatchesRegex("merro [0-9.]+\n"));
}

} // namespace
} // namespace merro::host::test
