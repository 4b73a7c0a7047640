#include "host/shared/ScenarioFile.h"

#include "host/shared/Failure.h"
#include "tests/host/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace merro::host::test {
namespace {

using namespace platform::ffmpeg;
using platform::CalendarFields;
using testing::ElementsAre;
using testing::HasSubstr;

struct ScenarioFileTest : testing::Test {
    TemporaryFolder folder;
    std::string path = folder / "scenario.json";

    TapeScenario read(const std::string& json) {
        writeFile(path, json);
        return readScenarioFile(path);
    }
    std::string complaint(const std::string& json) {
        try {
            (void)read(json);
        } catch (const Failure& failure) {
            return std::string(failure.what()).substr(path.size());
        }
        return "none";
    }
    std::string complaintOfTake(const std::string& entries) {
        return complaint(R"({"takes": [{"seconds": 1}, {"seconds": 1, )" + entries + "}]}");
    }
};

TEST_F(ScenarioFileTest, EveryEntryIsRead) {
    const TapeScenario scenario = read(R"({"system": "525/60", "tailBytes": 5000, "takes": [{
        "frames": 90, "picture": "testsrc2", "label": "Garden",
        "sound": {"kind": "tone", "frequency": 440}, "aspect": "16:9",
        "recordingDate": "2005-03-17T14:03:22", "dateStandsStill": true,
        "timecode": "01:02:03;04", "dropFrame": true, "repeatPicturesAfter": 30,
        "faults": [{"kind": "wrongDate", "frames": [3, 7], "sequences": [0, 11], "date": "1999-13-00T25:61:61"}],
        "junkBytesAfter": 777, "system": "625/50"}]})");
    EXPECT_EQ(scenario.system, TapeSystem::System525_60);
    EXPECT_EQ(scenario.tailBytes, 5000);
    ASSERT_EQ(scenario.takes.size(), 1U);
    const Take& take = scenario.takes[0];
    EXPECT_EQ(take.frames, 90);
    EXPECT_EQ(take.picture, "testsrc2");
    EXPECT_EQ(take.label, "Garden");
    EXPECT_EQ(take.sound.kind, TakeSoundKind::Tone);
    EXPECT_EQ(take.sound.frequencyInHertz, 440);
    EXPECT_EQ(take.aspect, TapeAspect::Aspect16By9);
    EXPECT_EQ(take.dateCourse, DateCourse::StandsStill);
    EXPECT_EQ(take.recordingDate, (CalendarFields{2005, 3, 17, 14, 3, 22}));
    EXPECT_EQ(take.timecodeCourse, TimecodeCourse::StartsAt);
    EXPECT_EQ(take.timecode.hours, 1);
    EXPECT_EQ(take.timecode.frames, 4);
    EXPECT_TRUE(take.dropFrame);
    EXPECT_EQ(take.repeatPicturesAfterInFrame, 30);
    EXPECT_EQ(take.junkBytesAfter, 777);
    EXPECT_EQ(take.system, TapeSystem::System625_50);
    ASSERT_EQ(take.faults.size(), 1U);
    EXPECT_EQ(take.faults[0].kind, TakeFaultKind::WrongDate);
    EXPECT_EQ(take.faults[0].firstFrame, 3);
    EXPECT_EQ(take.faults[0].lastFrame, 7);
    EXPECT_THAT(take.faults[0].sequences, ElementsAre(0, 11));
    EXPECT_EQ(take.faults[0].date, (CalendarFields{1999, 13, 0, 25, 61, 61})); // tapes say such things
}

TEST_F(ScenarioFileTest, WhatIsLeftOutRunsOn) {
    const Take take = read(R"({"takes": [{"seconds": 2.5}]})").takes.at(0);
    EXPECT_EQ(take.seconds, 2.5);
    EXPECT_EQ(take.dateCourse, DateCourse::Runs);
    EXPECT_FALSE(take.recordingDate);
    EXPECT_EQ(take.timecodeCourse, TimecodeCourse::RunsOn);
}

TEST_F(ScenarioFileTest, NoneMeansThatTheTapeDoesNotSay) {
    const Take take =
        read(R"({"takes": [{"seconds": 1, "recordingDate": "none", "timecode": "none"}]})").takes.at(0);
    EXPECT_EQ(take.dateCourse, DateCourse::None);
    EXPECT_EQ(take.timecodeCourse, TimecodeCourse::None);
}

TEST_F(ScenarioFileTest, UnknownKeysAreToldWithTheirPlace) {
    EXPECT_THAT(complaint(R"({"takes": [], "colour": 1})"), HasSubstr("unknown key \"colour\""));
    EXPECT_THAT(complaintOfTake(R"("lenght": 1)"), HasSubstr("takes[1]: unknown key \"lenght\""));
    EXPECT_THAT(complaintOfTake(R"("sound": {"kind": "tone", "volume": 3})"),
                HasSubstr("takes[1].sound: unknown key \"volume\""));
}

TEST_F(ScenarioFileTest, ValuesOfTheWrongKindAreToldWithTheirPlace) {
    EXPECT_THAT(complaint("[]"), HasSubstr("an object"));
    EXPECT_THAT(complaint(R"({"takes": {}})"), HasSubstr("takes: a list"));
    EXPECT_THAT(complaint(R"({"takes": [3]})"), HasSubstr("takes[0]: an object"));
    EXPECT_THAT(complaintOfTake(R"("label": 3)"), HasSubstr("takes[1].label: a text"));
    EXPECT_THAT(complaintOfTake(R"("dropFrame": "yes")"), HasSubstr("takes[1].dropFrame: true or false"));
    EXPECT_THAT(complaintOfTake(R"("junkBytesAfter": -1)"),
                HasSubstr("takes[1].junkBytesAfter: a whole number"));
    EXPECT_THAT(complaintOfTake(R"("junkBytesAfter": 1.5)"),
                HasSubstr("takes[1].junkBytesAfter: a whole number"));
    EXPECT_THAT(complaintOfTake(R"("junkBytesAfter": 18446744073709551615)"), HasSubstr("a whole number"));
    EXPECT_THAT(complaintOfTake(R"("aspect": "3:2")"), HasSubstr("\"3:2\" is none of 4:3, 16:9"));
    EXPECT_THAT(complaintOfTake(R"("recordingDate": "17.3.2005")"),
                HasSubstr("takes[1].recordingDate: a date"));
    EXPECT_THAT(complaintOfTake(R"("timecode": "1:2:3:4")"), HasSubstr("takes[1].timecode: a timecode"));
    EXPECT_THAT(complaintOfTake(R"("faults": [{"kind": "noDate", "frames": [7, 3]}])"),
                HasSubstr("takes[1].faults[0].frames[1]: a whole number from 7"));
    EXPECT_THAT(complaintOfTake(R"("faults": [{"kind": "wrongDate", "frames": [3, 7]}])"),
                HasSubstr("\"date\" is missing"));
    EXPECT_THAT(complaintOfTake(R"("faults": [{"kind": "noDate", "frames": [3, 7], "date": "x"}])"),
                HasSubstr("only a fault of kind"));
}

TEST_F(ScenarioFileTest, ATakeHasOneLength) {
    EXPECT_THAT(complaint(R"({"takes": [{}]})"), HasSubstr("either \"seconds\" or \"frames\""));
    EXPECT_THAT(complaint(R"({"takes": [{"seconds": 1, "frames": 25}]})"), HasSubstr("either"));
    EXPECT_THAT(complaint(R"({"takes": []})"), HasSubstr("at least one take"));
    EXPECT_THAT(complaint("{}"), HasSubstr("\"takes\" is missing"));
}

TEST_F(ScenarioFileTest, WhatIsNoJsonIsToldWithLineAndColumn) {
    EXPECT_THAT(complaint("{\n\"takes\": [}"), HasSubstr("line 2, column 11"));
    EXPECT_NE(complaint(""), "none");
    EXPECT_THROW((void)readScenarioFile(folder / "nowhere"), Failure);
}

} // namespace
} // namespace merro::host::test
