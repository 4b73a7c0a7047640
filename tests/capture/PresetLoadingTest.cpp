#include "capture/QTNoCompressionOptions.h"
#include "tests/capture/ConfigurationFixture.h"

#include <utility>

namespace merro::test {
namespace {

using PresetLoading = ConfigurationFixture;

TEST_F(PresetLoading, LoadingCopiesEachSettingUnderItsOtherName) {
    load({{"detectScenes", false},
          {"nbDropFrame", 3},
          {"detectEndTape", true},
          {"detectEndTapeSecond", 7},
          {"actionAfterRecord", 1},
          {"grabSamples", false},
          {"samplingIntervalInSecs", 20},
          {"grabMovie", false},
          {"captureMovieCompression", 2},
          {"fitSizeTag", 0},
          {"captureMovieCompressionData", Data{1, 2}}});

    EXPECT_EQ(surroundings.defaults.dictionary(), (Dictionary{
                                                      {"detectScene", false},
                                                      {"nbDropFrame", 3},
                                                      {"detectEndTape", true},
                                                      {"detectEndTapeSecond", 7},
                                                      {"actionAfterRecord", 1},
                                                      {"frameSampling", false},
                                                      {"sampleInterval", 4},
                                                      {"captureMovie", false},
                                                      {"captureMovieCompression", 2},
                                                      {"fitSizeTag", false},
                                                      {"captureMovieCompressionData", Data{1, 2}},
                                                  }));
    EXPECT_EQ(compression.videoCompressionOptions(), surroundings.capture.videoChoices[1].second);
}

TEST_F(PresetLoading, SettingsAreWrittenInOneOrder) {
    std::vector<std::string> written;
    std::vector<platform::Observation> observations;
    for (const auto& [key, value] : surroundings.defaults.dictionary())
        observations.push_back(
            surroundings.defaults.addObserver(key, [&](const std::string& k) { written.push_back(k); }));
    observations.push_back(surroundings.defaults.addObserver(
        "captureMovieCompressionData", [&](const std::string& k) { written.push_back(k); }));

    load({{"detectScenes", false},
          {"nbDropFrame", 3},
          {"detectEndTape", true},
          {"detectEndTapeSecond", 7},
          {"actionAfterRecord", 1},
          {"grabSamples", false},
          {"samplingIntervalInSecs", 20},
          {"grabMovie", false},
          {"captureMovieCompression", 2},
          {"fitSizeTag", 0},
          {"captureMovieCompressionData", Data{1, 2}}});

    EXPECT_EQ(written, (std::vector<std::string>{"detectScene", "nbDropFrame", "detectEndTape",
                                                 "detectEndTapeSecond", "actionAfterRecord", "frameSampling",
                                                 "sampleInterval", "captureMovie", "captureMovieCompression",
                                                 "fitSizeTag", "captureMovieCompressionData"}));
}

TEST_F(PresetLoading, NumbersOfAPresetAreReadAsTheKindTheSettingIs) {
    load({{"detectScenes", 0}, {"nbDropFrame", 2.9}, {"grabMovie", 0}});

    EXPECT_EQ(stored("detectScene"), Value(false));
    EXPECT_EQ(stored("nbDropFrame"), Value(2));
    EXPECT_EQ(stored("captureMovie"), Value(false));
}

TEST_F(PresetLoading, WhatAPresetLacksStaysAsItIs) {
    const Dictionary before = surroundings.defaults.dictionary();

    load({});

    EXPECT_EQ(surroundings.defaults.dictionary(), before);
}

TEST_F(PresetLoading, SecondsOfAPresetBecomeAnIndexAndOtherSecondsAreIgnored) {
    const std::vector<std::pair<int, int>> secondsAndIndex{{1, 0}, {2, 1}, {5, 2}, {10, 3}, {20, 4}};
    for (const auto& [seconds, index] : secondsAndIndex) {
        load({{"samplingIntervalInSecs", seconds}});
        EXPECT_EQ(stored("sampleInterval"), Value(index));
        EXPECT_EQ(configuration.frameSampleInterval(), seconds);
    }
    for (const int seconds : {3, 0, -1, 21}) {
        load({{"samplingIntervalInSecs", seconds}});
        EXPECT_EQ(stored("sampleInterval"), Value(4));
    }
}

TEST_F(PresetLoading, AnySizeTagOfAPresetButZeroIsNarrowedToOne) {
    load({{"fitSizeTag", 2}});
    EXPECT_EQ(stored("fitSizeTag"), Value(true));
    EXPECT_EQ(surroundings.defaults.integerForKey("fitSizeTag"), 1);

    for (const Value& none : {Value(0), Value(0.9)}) { // tags are whole numbers
        load({{"fitSizeTag", none}});
        EXPECT_EQ(stored("fitSizeTag"), Value(false));
    }
}

TEST_F(PresetLoading, LoadingACompressionSelectsItsItemAndAppliesIt) {
    load({{"captureMovieCompression", 1}});

    EXPECT_EQ(compressionPopUp->indexOfSelectedItem(), 1);
    EXPECT_EQ(compression.videoCompressionOptions(), surroundings.capture.videoChoices[0].second);
    EXPECT_EQ(stored("captureMovieCompression"), Value(1));
}

TEST_F(PresetLoading, LoadingTheCompressionThatIsCurrentDoesNotWriteItsKey) {
    surroundings.defaults.setObjectForKey(2, "captureMovieCompression"); // by somebody else

    load({{"captureMovieCompression", 0}});

    EXPECT_EQ(stored("captureMovieCompression"), Value(2));
}

TEST_F(PresetLoading, ACompressionThatThisMachineDoesNotHaveIsLeftOut) {
    load({{"captureMovieCompression", 1}});
    load({{"captureMovieCompression", 12}});

    EXPECT_EQ(compressionPopUp->indexOfSelectedItem(), 1);
    EXPECT_EQ(compression.videoCompressionOptions(), surroundings.capture.videoChoices[0].second);
}

TEST_F(PresetLoading, CustomCompressionIsAppliedWithTheSettingsOfThePreset) {
    surroundings.defaults.setObjectForKey(Data{1}, "captureMovieCompressionData");

    load({{"captureMovieCompression", 3}, {"captureMovieCompressionData", Data{5, 6}}});

    EXPECT_TRUE(compression.isCustomVideoCompression());
    EXPECT_EQ(surroundings.compression.settings, (Data{5, 6}));
    EXPECT_EQ(stored("captureMovieCompressionData"), Value(Data{5, 6}));
    EXPECT_EQ(surroundings.compression.dialogsShown, 0);
}

TEST_F(PresetLoading, AnOldCompressedFormatForgetsTheSettingsAndSelectsCustom) {
    surroundings.defaults.setObjectForKey(Data{1}, "captureMovieCompressionData");
    surroundings.compression.requestResult = 1; // the user cancels the dialog that follows

    load({{"captureFormat", 2}});

    EXPECT_EQ(compressionPopUp->indexOfSelectedItem(), 3);
    EXPECT_TRUE(compression.isCustomVideoCompression());
    EXPECT_EQ(stored("captureMovieCompressionData"), std::nullopt);
    EXPECT_FALSE(configuration.loadingConfig());
}

TEST_F(PresetLoading, AnOldCompressedFormatForgetsTheSettingsOfThePresetToo) {
    surroundings.compression.requestResult = 1; // the user cancels

    load({{"captureFormat", 7}, {"captureMovieCompression", 1}, {"captureMovieCompressionData", Data{4}}});

    EXPECT_EQ(compressionPopUp->indexOfSelectedItem(), 3);
    EXPECT_EQ(stored("captureMovieCompressionData"), std::nullopt);
}

TEST_F(PresetLoading, SettingsMadeInTheDialogMeanwhileLeaveThePresetSelected) {
    surroundings.compression.dialogSettings = {8, 9};

    load({{"captureFormat", 2}});

    EXPECT_EQ(stored("captureMovieCompressionData"), Value(Data{8, 9}));
    EXPECT_EQ(presetPopUp->indexOfSelectedItem(), 1);
}

TEST_F(PresetLoading, TheOldFormatHasTheLastWordOnTheCompression) {
    load({{"captureFormat", 1}, {"captureMovieCompression", 2}});

    EXPECT_EQ(compressionPopUp->indexOfSelectedItem(), 0);
    EXPECT_EQ(compression.videoCompressionOptions(), QTNoCompressionOptions::noCompressionOptions());
}

TEST_F(PresetLoading, TheOldPlainFormatsSelectNoCompression) {
    for (const int format : {0, 1}) {
        load({{"captureMovieCompression", 2}});
        load({{"captureFormat", format}});

        EXPECT_EQ(compressionPopUp->indexOfSelectedItem(), 0);
        EXPECT_EQ(compression.videoCompressionOptions(), QTNoCompressionOptions::noCompressionOptions());
    }
}

TEST_F(PresetLoading, AnOldPlainFormatKeepsTheCustomSettings) {
    load({{"captureFormat", 1}, {"captureMovieCompressionData", Data{4}}});

    EXPECT_EQ(stored("captureMovieCompressionData"), Value(Data{4}));
}

TEST_F(PresetLoading, LoadingAlwaysAppliesTheCompressionInTheEnd) {
    const auto output = surroundings.capture.movieFileOutputs[0];
    const auto applied = output->compressionOptions().size();

    load({});
    EXPECT_EQ(output->compressionOptions().size(), applied + 1);

    configuration.selectConfigurationAtIndex(0); // no preset at all
    EXPECT_EQ(output->compressionOptions().size(), applied + 2);
}

TEST_F(PresetLoading, TheVolumeOfAPresetIsNotCopied) {
    load({{"movieVolume", 0.25}});

    EXPECT_EQ(stored("movieVolume"), std::nullopt);
}

} // namespace
} // namespace merro::test
