// The small pieces: settings of a run, devices, time zone, progress bar, table.
#include "capture/CaptureDefaults.h"
#include "host/cli/ClipTable.h"
#include "host/cli/ProgressBar.h"
#include "host/shared/DeviceReport.h"
#include "host/shared/Failure.h"
#include "host/shared/RunSettings.h"
#include "host/shared/TapeText.h"
#include "platform/native/MemoryUserDefaults.h"
#include "tests/host/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace merro::host::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// --- Settings of a run ---

TEST(RunSettingsTest, OptionsBecomeTheSettingsThatTheControllerReads) {
    platform::native::MemoryUserDefaults defaults;
    SettingOptions options;
    options.scenes = false;
    options.dropFrames = 7;
    options.sampleEverySeconds = 5;
    options.movies = false;
    options.endOfTapeSeconds = 4;
    options.after = AfterRecord::Stop;
    applyOptions(options, defaults);
    EXPECT_FALSE(defaults.boolForKey(BXMCDetectScene));
    EXPECT_EQ(defaults.integerForKey(BXMCNbDropFrame), 7);
    EXPECT_TRUE(defaults.boolForKey(BXMCFrameSampling));
    EXPECT_EQ(defaults.integerForKey(BXMCSampleInterval), 2); // 5 s stands third in 1, 2, 5, 10, 20
    EXPECT_FALSE(defaults.boolForKey(BXMCCaptureMovie));
    EXPECT_TRUE(defaults.boolForKey(BXMCDetectEndTape));
    EXPECT_EQ(defaults.integerForKey(BXMCDetectEndTapeSecond), 4);
    EXPECT_EQ(defaults.integerForKey(BXMCActionAfterRecord), 1);
}

TEST(RunSettingsTest, OffLeavesTheNumbersOfASettingAlone) {
    platform::native::MemoryUserDefaults defaults(
        {{std::string(BXMCSampleInterval), 3}, {std::string(BXMCDetectEndTapeSecond), 9}});
    SettingOptions options;
    options.sampleEverySeconds = 0;
    options.endOfTapeSeconds = -1;
    applyOptions(options, defaults);
    EXPECT_FALSE(defaults.boolForKey(BXMCFrameSampling));
    EXPECT_FALSE(defaults.boolForKey(BXMCDetectEndTape));
    EXPECT_EQ(defaults.integerForKey(BXMCSampleInterval), 3);
    EXPECT_EQ(defaults.integerForKey(BXMCDetectEndTapeSecond), 9);
}

TEST(RunSettingsTest, WhatIsChangedInARunIsNotStored) {
    platform::native::MemoryUserDefaults stored({{std::string(BXMCDetectScene), true}});
    platform::native::OverriddenUserDefaults ofRun(stored);
    holdSettingsForThisRun(ofRun);
    EXPECT_TRUE(ofRun.boolForKey(BXMCDetectScene));
    EXPECT_FALSE(ofRun.objectForKey(BXMCCaptureCompressionData));
    ofRun.setObjectForKey(false, BXMCDetectScene);
    ofRun.setObjectForKey(platform::Data{1}, BXMCCaptureCompressionData);
    EXPECT_TRUE(stored.boolForKey(BXMCDetectScene));
    EXPECT_FALSE(stored.objectForKey(BXMCCaptureCompressionData));
}

TEST(RunSettingsTest, OneFrameLessThanASecondMayBeDropped) {
    platform::native::MemoryUserDefaults defaults({{std::string(BXMCNbDropFrame), 24}});
    EXPECT_NO_THROW(requireSensibleDropFrames(defaults, 25));
    EXPECT_THROW(requireSensibleDropFrames(defaults, 24), Failure);
    defaults.setObjectForKey(-1, BXMCNbDropFrame);
    EXPECT_THROW(requireSensibleDropFrames(defaults, 25), Failure);
}

// --- Devices ---

struct DeviceReportTest : testing::Test {
    TemporaryFolder folder;
    FireWirePlaces places{folder / "bus", folder / "dev"};

    void addNode(const std::string& name, const std::string& isLocal, const std::string& model = "") {
        const std::string entry = places.bus + "/devices/" + name;
        std::filesystem::create_directories(entry);
        writeFile(entry + "/is_local", isLocal + "\n");
        writeFile(entry + "/guid", "0x0800460103c2a5b1\n");
        writeFile(entry + "/vendor_name", "Sony\n");
        writeFile(entry + "/model_name", model + "\n");
    }
};

TEST_F(DeviceReportTest, NoBusIsAMissingPortOrModule) {
    const DeviceReport report = reportDevices(places);
    EXPECT_EQ(report.fireWire, FireWireState::NoBus);
    EXPECT_THAT(describeDevices(report), HasSubstr("firewire_ohci"));
    EXPECT_THAT(describeDevices(report), HasSubstr("merro log FILE"));
}

TEST_F(DeviceReportTest, APortAloneMeansThatNothingIsConnected) {
    addNode("fw0", "1");
    const DeviceReport report = reportDevices(places);
    EXPECT_EQ(report.fireWire, FireWireState::NothingThere);
    EXPECT_TRUE(report.units.empty());
}

TEST_F(DeviceReportTest, ADeviceThatMayNotBeOpenedIsAMatterOfPermission) {
    addNode("fw0", "1");
    addNode("fw1", "0", "DSR-11"); // its /dev/fw1 is not there to be opened
    addNode("fw1.0", "0");         // a unit within the device
    const DeviceReport report = reportDevices(places);
    EXPECT_EQ(report.fireWire, FireWireState::NoPermission);
    ASSERT_EQ(report.units.size(), 1U);
    EXPECT_EQ(report.units[0].name, "Sony DSR-11");
    EXPECT_EQ(report.units[0].guid, "0x0800460103c2a5b1");
    EXPECT_THAT(describeDevices(report), HasSubstr("group video"));
}

TEST_F(DeviceReportTest, ADeviceThatCouldBeOpenedIsNotSupportedHere) {
    addNode("fw1", "0", "DSR-11");
    std::filesystem::create_directories(places.deviceNodes);
    writeFile(places.deviceNodes + "/fw1", "");
    const DeviceReport report = reportDevices(places);
    EXPECT_EQ(report.fireWire, FireWireState::NotBuiltIn);
    EXPECT_EQ(devicesJson(report)["firewire"]["units"][0]["readable"], true);
    EXPECT_THAT(describeDevices(report), HasSubstr("without support for FireWire"));
}

// --- Progress bar ---

Progress halfWay() {
    Progress progress;
    progress.done = 0.5;
    progress.tapeSeconds = 600;
    progress.tapeSecondsInAll = 1200;
    progress.recordingDate = "2005-03-17T14:03:22";
    progress.clips = 3;
    progress.elapsedSeconds = 5;
    return progress;
}

TEST(ProgressBarTest, ShowsPositionDateClipsSpeedAndTimeLeft) {
    const std::string bar = progressBar(halfWay(), 120);
    EXPECT_THAT(bar, StartsWith("[####################--------------------]"));
    for (const char* part :
         {" 50%", "10:00 of 20:00", "2005-03-17 14:03:22", "3 clips", "120x", "0:05 left"}) // 600 s in 5 s
        EXPECT_THAT(bar, HasSubstr(part));
}

TEST(ProgressBarTest, IsNeverWiderThanTheTerminalAndDropsTheLeastImportantFirst) {
    for (int columns = 0; columns < 130; ++columns)
        EXPECT_LE(progressBar(halfWay(), columns).size(), static_cast<std::size_t>(std::max(columns - 1, 0)));
    EXPECT_THAT(progressBar(halfWay(), 40), HasSubstr("50%"));
    EXPECT_THAT(progressBar(halfWay(), 40), Not(HasSubstr("2005")));
}

TEST(ProgressBarTest, AtTheStartNothingIsDividedByZero) {
    Progress progress;
    EXPECT_FALSE(progress.secondsLeft());
    EXPECT_THAT(progressBar(progress, 80), HasSubstr("0%"));
}

TEST(TapeTextTest, LengthsOfTimeAreWrittenAsClocksShowThem) {
    EXPECT_EQ(durationText(0), "0:00");
    EXPECT_EQ(durationText(59.9), "0:59");
    EXPECT_EQ(durationText(3723), "1:02:03");
    EXPECT_EQ(durationText(-5), "0:00");
}

// --- What is shown at the end ---

TEST(ClipTableTest, ShowsADashWhereAClipHasNothing) {
    RunResult result;
    ClipEntry clip;
    clip.number = 4;
    clip.duration = "00:00:01:00"; // means nothing without an end
    clip.framesLost = 9;
    result.clips = {clip};
    const std::string table = clipTable(result);
    const std::string row = table.substr(table.find('\n') + 1);
    EXPECT_EQ(row, "0004    -                    -            -            -                 9  -\n");
}

TEST(ClipTableTest, FindingsBeyondTheFirstFewAreCounted) {
    TapeEntry tape;
    for (std::int64_t at = 0; at < 7; ++at)
        tape.findings.push_back({at * 1000, 10, "bytes that are no DV frame"});
    const std::string summary = findingsSummary(tape);
    EXPECT_THAT(summary, HasSubstr("At byte 4000: 10 bytes skipped"));
    EXPECT_THAT(summary, Not(HasSubstr("At byte 5000")));
    EXPECT_THAT(summary, HasSubstr("and 2 more places"));
    EXPECT_EQ(findingsSummary({}), "");
}

} // namespace
} // namespace merro::host::test
