#include "capture/CaptureDefaults.h"

#include "platform/KeyValueObserving.h"
#include "platform/native/MemoryUserDefaults.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace merro::test {
namespace {

using platform::Change;
using platform::Data;
using platform::Value;
using platform::native::MemoryUserDefaults;

TEST(CaptureDefaults, EachMissingSettingGetsItsFirstValue) {
    MemoryUserDefaults defaults;

    storeMissingCaptureDefaults(defaults);

    EXPECT_EQ(defaults.dictionary(), (platform::Dictionary{
                                         {"detectScene", true},
                                         {"nbDropFrame", 0},
                                         {"detectEndTape", false},
                                         {"detectEndTapeSecond", 1},
                                         {"actionAfterRecord", 2},
                                         {"frameSampling", true},
                                         {"sampleInterval", 1},
                                         {"captureMovie", true},
                                         {"captureMovieCompression", 0},
                                         {"fitSizeTag", 2},
                                     }));
}

TEST(CaptureDefaults, TheyAreStoredInAFixedOrder) {
    MemoryUserDefaults defaults;
    std::vector<std::string> stored;
    std::vector<platform::Observation> observations;
    for (const char* key :
         {"fitSizeTag", "captureMovieCompression", "captureMovie", "sampleInterval", "frameSampling",
          "actionAfterRecord", "detectEndTapeSecond", "detectEndTape", "nbDropFrame", "detectScene"})
        observations.push_back(defaults.addObserver(key, [&](const std::string& k) { stored.push_back(k); }));

    storeMissingCaptureDefaults(defaults);

    EXPECT_EQ(stored,
              (std::vector<std::string>{"detectScene", "nbDropFrame", "detectEndTape", "detectEndTapeSecond",
                                        "actionAfterRecord", "frameSampling", "sampleInterval",
                                        "captureMovie", "captureMovieCompression", "fitSizeTag"}));
}

TEST(CaptureDefaults, WhatIsStoredAlreadyIsLeftAlone) {
    const platform::Dictionary all{{"detectScene", false},         {"nbDropFrame", 3},
                                   {"detectEndTape", true},        {"detectEndTapeSecond", 9},
                                   {"actionAfterRecord", 0},       {"frameSampling", false},
                                   {"sampleInterval", 4},          {"captureMovie", false},
                                   {"captureMovieCompression", 2}, {"fitSizeTag", true}};
    MemoryUserDefaults defaults(all);

    storeMissingCaptureDefaults(defaults);

    EXPECT_EQ(defaults.dictionary(), all);
}

TEST(CaptureDefaults, TheSampleIntervalTableHoldsSeconds) {
    EXPECT_EQ(sampleIntervalValue, (std::array<std::int32_t, 5>{1, 2, 5, 10, 20}));
}

TEST(CaptureDefaults, TheStoredIntervalIsAnIndexAndAWrongOneReadsAsTheNearest) {
    MemoryUserDefaults defaults;
    EXPECT_EQ(storedSampleInterval(defaults), 1);
    defaults.setObjectForKey(3, BXMCSampleInterval);
    EXPECT_EQ(storedSampleInterval(defaults), 10);
    defaults.setObjectForKey(4, BXMCSampleInterval);
    EXPECT_EQ(storedSampleInterval(defaults), 20);
    defaults.setObjectForKey(5, BXMCSampleInterval);
    EXPECT_EQ(storedSampleInterval(defaults), 20);
    defaults.setObjectForKey(-1, BXMCSampleInterval);
    EXPECT_EQ(storedSampleInterval(defaults), 1);
}

TEST(CaptureDefaults, PropertiesThatHangOnTheDeviceOrTheChoiceChangeWithIt) {
    platform::KeyValueObserving announcements;
    std::vector<std::string> changed;
    const auto observation = announcements.addObserver({}, [&](const std::string& key, Change change) {
        if (change == Change::Did)
            changed.push_back(key);
    });

    declareCaptureDependentKeys(announcements);
    announcements.didChangeValueForKey("selectedVideoDevice");
    announcements.didChangeValueForKey("videoCompressionOptions");

    EXPECT_EQ(changed, (std::vector<std::string>{"selectedVideoDevice", "hasRecordingDevice",
                                                 "controllableDevice", "videoDeviceInput",
                                                 "videoCompressionOptions", "customVideoCompression"}));
}

TEST(CaptureDefaults, TheKeysAreSpelledAsHostsAndStoredPresetsSpellThem) {
    EXPECT_EQ(BXMCConfName, "optionsName");
    EXPECT_EQ(BXMCConfDetectScene, "detectScenes");
    EXPECT_EQ(BXMCConfNbDropFrame, "nbDropFrame");
    EXPECT_EQ(BXMCConfDetectEndTape, "detectEndTape");
    EXPECT_EQ(BXMCConfDetectEndTapeSecond, "detectEndTapeSecond");
    EXPECT_EQ(BXMCConfActionAfterRecord, "actionAfterRecord");
    EXPECT_EQ(BXMCConfFrameSampling, "grabSamples");
    EXPECT_EQ(BXMCConfSampleInterval, "samplingIntervalInSecs");
    EXPECT_EQ(BXMCConfCaptureMovie, "grabMovie");
    EXPECT_EQ(BXMCConfCompression, "captureMovieCompression");
    EXPECT_EQ(BXMCConfCompressionData, "captureMovieCompressionData");
    EXPECT_EQ(BXMCConfCompressionSize, "fitSizeTag");
    EXPECT_EQ(BXMCConfMovieVolume, "movieVolume");
    EXPECT_EQ(BXMCCaptureCompressionData, "captureMovieCompressionData");
    EXPECT_EQ(BXMCCaptureMovieVolume, "movieVolume");
    EXPECT_EQ(BXMCCaptureOldCompression, "captureFormat");
}

} // namespace
} // namespace merro::test
