// The settings and presets, as they come out on a whole tape.
#include "capture/CaptureDefaults.h"
#include "tests/scenarios/LoggingWorld.h"

namespace merro::test {
namespace {

/// One take of `seconds`, which is long enough for samples of long intervals.
TapeScript longTake(int seconds) {
    return TapeScript().take({.frames = seconds * 25 + 10, .timecode = "00:00:00:00", .date = "14:00:00"});
}

struct Interval {
    int index;
    std::vector<int> samples; ///< of a take of 21 seconds and 10 frames: 535 frames
};

void PrintTo(const Interval& interval, std::ostream* out) {
    *out << "index " << interval.index;
}

class SamplingInterval : public testing::TestWithParam<Interval> {};

TEST_P(SamplingInterval, isTheDistanceOfTheThumbnails) {
    LoggingWorld world(longTake(21));
    world.set(BXMCSampleInterval, GetParam().index);

    world.log();

    EXPECT_EQ(world.thumbnails("0001"), GetParam().samples);
}

TEST_P(SamplingInterval, withoutSamplingOnlyTheFirstAndTheLastFrameAreKept) {
    LoggingWorld world(longTake(21));
    world.set(BXMCSampleInterval, GetParam().index);
    world.set(BXMCFrameSampling, false);

    world.log();

    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 534}));
}

std::vector<int> everySecond(int step) {
    std::vector<int> samples;
    for (int second = 0; second <= 21; second += step)
        samples.push_back(second * 25);
    samples.push_back(534);
    return samples;
}

INSTANTIATE_TEST_SUITE_P(
    All, SamplingInterval,
    testing::Values(Interval{0, everySecond(1)}, Interval{1, everySecond(2)}, Interval{2, everySecond(5)},
                    Interval{3, everySecond(10)}, Interval{4, everySecond(20)}),
    [](const auto& test) {
        return std::to_string(sampleIntervalValue.at(static_cast<std::size_t>(test.param.index))) + "Seconds";
    });

TEST(Sampling, aTakeShorterThanTheIntervalHasItsFirstAndItsLastFrame) {
    LoggingWorld world(TapeScript().take({.frames = 24, .timecode = "00:00:00:00", .date = "14:00:00"}));

    world.log();

    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 23}));
}

TEST(Sampling, aLastFrameThatIsASampleIsNotWrittenTwice) {
    LoggingWorld world(TapeScript().take({.frames = 51, .timecode = "00:00:00:00", .date = "14:00:00"}));

    world.log();

    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 50}));
}

TEST(Sampling, anIntervalChangedWithinAClipCountsFromTheNextSample) {
    LoggingWorld world(longTake(8));

    world.start();
    world.playTo(60);
    world.set(BXMCSampleInterval, 0);
    world.playToEnd();
    world.stop();

    // The sample at 4 s was set when the one at 2 s was written.
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 50, 100, 125, 150, 175, 200, 209}));
}

TEST(Settings, withoutMoviesThereAreNoneAndTheRestIsAsEver) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 60, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .take({.frames = 60, .timecode = "00:00:02:10", .date = "15:00:00"}));
    world.set(BXMCCaptureMovie, false);

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:02:09", "00:00:02:09"}), "will 0002",
                       did({"0002", "15:00:00", "00:00:02:10", "00:00:04:19", "00:00:02:09"}), "end"}));
    EXPECT_TRUE(world.movies.all().empty());
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 50, 59}));
}

TEST(Settings, moviesSwitchedOffDuringAClipAreOffFromTheNextClipOn) {
    LoggingWorld world(TapeScript()
                           .take({.frames = 60, .timecode = "00:00:00:00", .date = "14:00:00"})
                           .take({.frames = 60, .timecode = "00:00:02:10", .date = "15:00:00"}));

    world.start();
    world.playTo(20);
    world.set(BXMCCaptureMovie, false);
    world.playToEnd();
    world.stop();

    EXPECT_EQ(world.movie("0001"), frames(0, 59));
    EXPECT_EQ(world.movies.all().size(), 1U);
}

TEST(Settings, aFreshProgramHasTheFirstValueOfEachSetting) {
    LoggingWorld world(TapeScript().blank(1));

    EXPECT_TRUE(world.defaults.boolForKey(BXMCDetectScene));
    EXPECT_EQ(world.defaults.integerForKey(BXMCNbDropFrame), 0);
    EXPECT_FALSE(world.defaults.boolForKey(BXMCDetectEndTape));
    EXPECT_EQ(world.defaults.integerForKey(BXMCDetectEndTapeSecond), 1);
    EXPECT_EQ(world.defaults.integerForKey(BXMCActionAfterRecord), 2);
    EXPECT_TRUE(world.defaults.boolForKey(BXMCFrameSampling));
    EXPECT_EQ(world.defaults.integerForKey(BXMCSampleInterval), 1);
    EXPECT_TRUE(world.defaults.boolForKey(BXMCCaptureMovie));
}

/// Settings of somebody who wants few files.
void setUp(LoggingWorld& world) {
    world.set(BXMCDetectScene, true);
    world.set(BXMCNbDropFrame, 5);
    world.set(BXMCDetectEndTape, true);
    world.set(BXMCDetectEndTapeSecond, 3);
    world.set(BXMCActionAfterRecord, 1);
    world.set(BXMCFrameSampling, true);
    world.set(BXMCSampleInterval, 0);
    world.set(BXMCCaptureMovie, false);
}

TEST(Preset, holdsWhatIsSetUnderTheNamesOfPresets) {
    LoggingWorld world(TapeScript().blank(1));
    setUp(world);

    world.controller->saveCurrentConfiguration();

    EXPECT_EQ(world.presetsSaved, (std::vector{platform::Dictionary{{"detectScenes", true},
                                                                    {"nbDropFrame", 5},
                                                                    {"detectEndTape", true},
                                                                    {"detectEndTapeSecond", 3},
                                                                    {"actionAfterRecord", 1},
                                                                    {"grabSamples", true},
                                                                    {"samplingIntervalInSecs", 1},
                                                                    {"grabMovie", false},
                                                                    {"captureMovieCompression", 0},
                                                                    {"fitSizeTag", 2}}}));
}

TEST(Preset, thatIsSavedAndLoadedLaterLogsATapeTheSameWay) {
    const TapeScript script = TapeScript()
                                  .take({.frames = 60, .timecode = "00:00:00:00", .date = "14:00:00"})
                                  .take({.frames = 60, .timecode = "00:00:02:10", .date = "15:00:00"})
                                  .blank(200);
    platform::Dictionary preset;
    {
        LoggingWorld world(script);
        setUp(world);
        world.controller->saveCurrentConfiguration();
        preset = world.presetsSaved.at(0);
        preset.insert_or_assign(std::string(BXMCConfName), "few files");
    }

    LoggingWorld world(script);
    world.controller->setAllConfiguration({preset});
    world.controller->selectConfigurationAtIndex(1);
    world.start();
    world.playToEnd(); // ends by itself

    EXPECT_EQ(
        world.journal(),
        (Entries{"begin", "deck 10000 1", "will 0001", "log START (00:00:00.00)",
                 did({"0001", "14:00:00", "00:00:00:00", "00:00:02:09", "00:00:02:09"}),
                 "log END (00:00:02.09)", "will 0002", "log START (00:00:02.15)",
                 did({"0002", "15:00:00", "00:00:02:15", "00:00:04:19", "00:00:02:04"}), "deck 0 0", "end"}));
    EXPECT_TRUE(world.movies.all().empty());
    EXPECT_EQ(world.thumbnails("0002"), (std::vector{65, 90, 115, 119}));
    EXPECT_EQ(world.controller->allConfiguration(), (std::vector{preset}));
}

TEST(Preset, savingWhatWasLoadedGivesTheSamePresetButForItsNameAndSize) {
    LoggingWorld world(TapeScript().blank(1));
    setUp(world);
    world.controller->saveCurrentConfiguration();
    world.controller->setAllConfiguration(world.presetsSaved);
    world.set(BXMCNbDropFrame, 0);
    world.set(BXMCSampleInterval, 4);
    world.controller->selectConfigurationAtIndex(1);

    world.controller->saveCurrentConfiguration();

    platform::Dictionary expected = world.presetsSaved.at(0);
    expected.insert_or_assign("fitSizeTag", true); // a size is loaded as "some size"
    EXPECT_EQ(world.presetsSaved.at(1), expected);
}

} // namespace
} // namespace merro::test
