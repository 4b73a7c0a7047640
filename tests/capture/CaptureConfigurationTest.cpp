#include "capture/CaptureConfiguration.h"

#include "capture/CaptureDefaults.h"
#include "capture/QTCustomCompressionOptions.h"
#include "capture/QTNoCompressionOptions.h"
#include "capture/VideoCompression.h"
#include "tests/support/TestSurroundings.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace merro::test {
namespace {

using platform::Data;
using platform::Dictionary;
using platform::Value;
using platform::native::HeadlessPopUpButton;

/// The choices are "None" (0), "H.264" (1), "Photo JPEG" (2), "Custom..." (3).
class Configuration : public testing::Test {
protected:
    Configuration() {
        storeMissingCaptureDefaults(surroundings.defaults);
        compression.buildVideoCompressionOptions();
        configuration.startObservingDefaults();
    }

    /// Makes `preset` the only one and loads it.
    void load(Dictionary preset) {
        preset.emplace("optionsName", "Preset");
        configuration.setAllConfiguration({preset});
        configuration.selectConfigurationAtIndex(1);
    }

    [[nodiscard]] std::optional<Value> stored(std::string_view key) const {
        return surroundings.defaults.objectForKey(key);
    }

    TestSurroundings surroundings;
    platform::KeyValueObserving announcements;
    std::shared_ptr<HeadlessPopUpButton> compressionPopUp = std::make_shared<HeadlessPopUpButton>();
    std::shared_ptr<HeadlessPopUpButton> presetPopUp = std::make_shared<HeadlessPopUpButton>();
    VideoCompression compression{surroundings.all,
                                 announcements,
                                 surroundings.capture.makeSession(),
                                 surroundings.capture.makeMovieFileOutput(),
                                 compressionPopUp,
                                 BXMCCaptureCompressionData};
    bool answersSave = true;
    std::vector<Dictionary> savedPresets;
    std::vector<std::string> deletedNames;
    CaptureConfiguration configuration{
        surroundings.all, compression, presetPopUp,
        CaptureConfiguration::Messages{
            [this] { return answersSave; },
            [this](const Dictionary& preset) { savedPresets.push_back(preset); },
            [this](const std::string& name) { deletedNames.push_back(name); },
        }};
};

// --- The pop-up ---

TEST_F(Configuration, ThePopUpShowsSettingsEditedByHandFirstAndThenThePresets) {
    configuration.setAllConfiguration({{{"optionsName", "Fast"}}, {{"optionsName", "Best"}}});

    ASSERT_EQ(presetPopUp->numberOfItems(), 3);
    EXPECT_EQ(presetPopUp->itemAtIndex(1)->title, "Fast");
    EXPECT_EQ(presetPopUp->itemAtIndex(2)->title, "Best");
    EXPECT_EQ(presetPopUp->indexOfSelectedItem(), 0);
    EXPECT_EQ(configuration.allConfiguration().size(), 2U);
}

TEST_F(Configuration, Item0OfTheInterfaceDescriptionIsKept) {
    const auto described = std::make_shared<HeadlessPopUpButton>();
    described->addItem({"By hand", 7, {}});

    CaptureConfiguration other(surroundings.all, compression, described, {});
    other.setAllConfiguration({{{"optionsName", "Fast"}}});

    ASSERT_EQ(described->numberOfItems(), 2);
    EXPECT_EQ(described->itemAtIndex(0)->title, "By hand");
    EXPECT_EQ(described->itemAtIndex(0)->tag, 7);
}

TEST_F(Configuration, ASelectedPresetStaysSelectedWhenTheListGrowsAroundIt) {
    const Dictionary best{{"optionsName", "Best"}, {"nbDropFrame", 2}};
    configuration.setAllConfiguration({best});
    configuration.selectConfigurationAtIndex(1);

    configuration.setAllConfiguration({{{"optionsName", "A new one"}}, best});
    EXPECT_EQ(presetPopUp->indexOfSelectedItem(), 2);

    configuration.setAllConfiguration({{{"optionsName", "A new one"}}});
    EXPECT_EQ(presetPopUp->indexOfSelectedItem(), 0);
}

TEST_F(Configuration, WorksWithoutAPopUp) {
    CaptureConfiguration other(surroundings.all, compression, nullptr,
                               {[] { return true; }, [](const Dictionary&) {}, [](const std::string&) {}});
    other.startObservingDefaults();
    other.setAllConfiguration({{{"nbDropFrame", 4}}});
    other.selectConfigurationAtIndex(1);
    other.deleteCurrentConfiguration();

    EXPECT_EQ(stored("nbDropFrame"), Value(0));
}

// --- Loading ---

TEST_F(Configuration, LoadingCopiesEachSettingUnderItsOtherName) {
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

TEST_F(Configuration, SettingsAreWrittenInOneOrder) {
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

TEST_F(Configuration, NumbersOfAPresetAreReadAsTheKindTheSettingIs) {
    load({{"detectScenes", 0}, {"nbDropFrame", 2.9}, {"grabMovie", 0}});

    EXPECT_EQ(stored("detectScene"), Value(false));
    EXPECT_EQ(stored("nbDropFrame"), Value(2));
    EXPECT_EQ(stored("captureMovie"), Value(false));
}

TEST_F(Configuration, WhatAPresetLacksStaysAsItIs) {
    const Dictionary before = surroundings.defaults.dictionary();

    load({});

    EXPECT_EQ(surroundings.defaults.dictionary(), before);
}

TEST_F(Configuration, SecondsOfAPresetBecomeAnIndexAndOtherSecondsAreIgnored) {
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

TEST_F(Configuration, AnySizeTagOfAPresetButZeroIsNarrowedToOne) {
    load({{"fitSizeTag", 2}});
    EXPECT_EQ(stored("fitSizeTag"), Value(true));
    EXPECT_EQ(surroundings.defaults.integerForKey("fitSizeTag"), 1);

    load({{"fitSizeTag", 0}});
    EXPECT_EQ(stored("fitSizeTag"), Value(false));
}

TEST_F(Configuration, LoadingACompressionSelectsItsItemAndAppliesIt) {
    load({{"captureMovieCompression", 1}});

    EXPECT_EQ(compressionPopUp->indexOfSelectedItem(), 1);
    EXPECT_EQ(compression.videoCompressionOptions(), surroundings.capture.videoChoices[0].second);
    EXPECT_EQ(stored("captureMovieCompression"), Value(1));
}

TEST_F(Configuration, LoadingTheCompressionThatIsCurrentDoesNotWriteItsKey) {
    surroundings.defaults.setObjectForKey(2, "captureMovieCompression"); // by somebody else

    load({{"captureMovieCompression", 0}});

    EXPECT_EQ(stored("captureMovieCompression"), Value(2));
}

TEST_F(Configuration, ACompressionThatThisMachineDoesNotHaveIsLeftOut) {
    load({{"captureMovieCompression", 1}});
    load({{"captureMovieCompression", 12}});

    EXPECT_EQ(compressionPopUp->indexOfSelectedItem(), 1);
    EXPECT_EQ(compression.videoCompressionOptions(), surroundings.capture.videoChoices[0].second);
}

TEST_F(Configuration, CustomCompressionIsAppliedWithTheSettingsOfThePreset) {
    surroundings.defaults.setObjectForKey(Data{1}, "captureMovieCompressionData");

    load({{"captureMovieCompression", 3}, {"captureMovieCompressionData", Data{5, 6}}});

    EXPECT_TRUE(compression.isCustomVideoCompression());
    EXPECT_EQ(surroundings.compression.settings, (Data{5, 6}));
    EXPECT_EQ(stored("captureMovieCompressionData"), Value(Data{5, 6}));
    EXPECT_EQ(surroundings.compression.dialogsShown, 0);
}

TEST_F(Configuration, AnOldCompressedFormatForgetsTheSettingsAndSelectsCustom) {
    surroundings.defaults.setObjectForKey(Data{1}, "captureMovieCompressionData");
    surroundings.compression.requestResult = 1; // the user cancels the dialog that follows

    load({{"captureFormat", 2}});

    EXPECT_EQ(compressionPopUp->indexOfSelectedItem(), 3);
    EXPECT_TRUE(compression.isCustomVideoCompression());
    EXPECT_EQ(stored("captureMovieCompressionData"), std::nullopt);
    EXPECT_FALSE(configuration.loadingConfig());
}

TEST_F(Configuration, TheOldPlainFormatsSelectNoCompression) {
    for (const int format : {0, 1}) {
        load({{"captureMovieCompression", 2}});
        load({{"captureFormat", format}});

        EXPECT_EQ(compressionPopUp->indexOfSelectedItem(), 0);
        EXPECT_EQ(compression.videoCompressionOptions(), QTNoCompressionOptions::noCompressionOptions());
    }
}

TEST_F(Configuration, AnOldPlainFormatKeepsTheCustomSettings) {
    load({{"captureFormat", 1}, {"captureMovieCompressionData", Data{4}}});

    EXPECT_EQ(stored("captureMovieCompressionData"), Value(Data{4}));
}

TEST_F(Configuration, LoadingAlwaysAppliesTheCompressionInTheEnd) {
    const auto output = surroundings.capture.movieFileOutputs[0];
    const auto applied = output->compressionOptions().size();

    load({});
    EXPECT_EQ(output->compressionOptions().size(), applied + 1);

    configuration.selectConfigurationAtIndex(0); // no preset at all
    EXPECT_EQ(output->compressionOptions().size(), applied + 2);
}

TEST_F(Configuration, TheVolumeOfAPresetIsNotCopied) {
    load({{"movieVolume", 0.25}});

    EXPECT_EQ(stored("movieVolume"), std::nullopt);
}

// --- Edits by hand ---

TEST_F(Configuration, LoadingAPresetLeavesItSelected) {
    load({{"detectScenes", false}, {"captureMovieCompression", 2}, {"captureMovieCompressionData", Data{1}}});

    EXPECT_EQ(presetPopUp->indexOfSelectedItem(), 1);
}

TEST_F(Configuration, AChangeOfAnyOfElevenSettingsSelectsItem0) {
    for (const char* key : {"detectScene", "nbDropFrame", "detectEndTape", "detectEndTapeSecond",
                            "actionAfterRecord", "frameSampling", "sampleInterval", "captureMovie",
                            "captureMovieCompression", "fitSizeTag", "captureMovieCompressionData"}) {
        load({});
        ASSERT_EQ(presetPopUp->indexOfSelectedItem(), 1);

        surroundings.defaults.setObjectForKey(1, key);

        EXPECT_EQ(presetPopUp->indexOfSelectedItem(), 0) << key;
    }
}

TEST_F(Configuration, RemovingTheCustomSettingsIsAChangeToo) {
    load({{"captureMovieCompressionData", Data{1}}});

    surroundings.defaults.removeObjectForKey("captureMovieCompressionData");

    EXPECT_EQ(presetPopUp->indexOfSelectedItem(), 0);
}

TEST_F(Configuration, TurningTheSoundDownLeavesThePresetSelected) {
    load({});

    surroundings.defaults.setObjectForKey(0.1, "movieVolume");

    EXPECT_EQ(presetPopUp->indexOfSelectedItem(), 1);
}

TEST_F(Configuration, LoadingConfigIsTrueWhileSettingsAreCopiedAndOnlyThen) {
    std::vector<bool> seen;
    const auto observation = surroundings.defaults.addObserver(
        "detectScene", [&](const std::string&) { seen.push_back(configuration.loadingConfig()); });

    EXPECT_FALSE(configuration.loadingConfig());
    load({{"detectScenes", true}});

    EXPECT_EQ(seen, std::vector<bool>{true});
    EXPECT_FALSE(configuration.loadingConfig());
}

TEST_F(Configuration, NothingIsObservedAfterTheEnd) {
    const auto popUp = std::make_shared<HeadlessPopUpButton>();
    {
        CaptureConfiguration other(surroundings.all, compression, popUp, {});
        other.startObservingDefaults();
        other.setAllConfiguration({{{"optionsName", "Fast"}}});
    }
    popUp->selectItemAtIndex(1);

    surroundings.defaults.setObjectForKey(true, "detectScene");

    EXPECT_EQ(popUp->indexOfSelectedItem(), 1);
}

// --- Saving and deleting ---

TEST_F(Configuration, SavingHandsOverTheSettingsUnderThePresetNames) {
    surroundings.defaults.setObjectForKey(3, "sampleInterval");
    surroundings.defaults.setObjectForKey(0.5, "movieVolume");

    configuration.saveCurrentConfiguration();

    EXPECT_EQ(savedPresets, (std::vector<Dictionary>{{
                                {"detectScenes", true},
                                {"nbDropFrame", 0},
                                {"detectEndTape", false},
                                {"detectEndTapeSecond", 1},
                                {"actionAfterRecord", 2},
                                {"grabSamples", true},
                                {"samplingIntervalInSecs", 10},
                                {"grabMovie", true},
                                {"captureMovieCompression", 0},
                                {"fitSizeTag", 2},
                            }}));
}

TEST_F(Configuration, SavingIncludesTheCustomSettingsWhereThereAreAny) {
    surroundings.defaults.setObjectForKey(Data{9, 8}, "captureMovieCompressionData");

    configuration.saveCurrentConfiguration();

    ASSERT_EQ(savedPresets.size(), 1U);
    EXPECT_EQ(savedPresets[0].at("captureMovieCompressionData"), Value(Data{9, 8}));
}

TEST_F(Configuration, WhatWasSavedLoadsBackButForTheSize) {
    surroundings.defaults.setObjectForKey(false, "detectScene");
    surroundings.defaults.setObjectForKey(5, "nbDropFrame");
    surroundings.defaults.setObjectForKey(0, "sampleInterval");
    configuration.saveCurrentConfiguration();
    surroundings.defaults.setObjectForKey(true, "detectScene");
    surroundings.defaults.setObjectForKey(0, "nbDropFrame");
    surroundings.defaults.setObjectForKey(4, "sampleInterval");

    load(savedPresets.at(0));

    EXPECT_EQ(stored("detectScene"), Value(false));
    EXPECT_EQ(stored("nbDropFrame"), Value(5));
    EXPECT_EQ(stored("sampleInterval"), Value(0));
    EXPECT_EQ(stored("fitSizeTag"), Value(true));
}

TEST_F(Configuration, DeletingNamesTheSelectedPreset) {
    configuration.setAllConfiguration({{{"optionsName", "Fast"}}, {{"optionsName", "Best"}}});
    configuration.selectConfigurationAtIndex(2);

    configuration.deleteCurrentConfiguration();

    EXPECT_EQ(deletedNames, std::vector<std::string>{"Best"});
}

TEST_F(Configuration, WithoutAPresetSelectedTheNameToDeleteIsEmpty) {
    configuration.deleteCurrentConfiguration();

    EXPECT_EQ(deletedNames, std::vector<std::string>{""});
}

// A host that implements only deletion never hears it.
TEST_F(Configuration, AHostThatDoesNotAnswerSavingIsAskedNeitherToSaveNorToDelete) {
    answersSave = false;
    configuration.setAllConfiguration({{{"optionsName", "Fast"}}});
    configuration.selectConfigurationAtIndex(1);

    configuration.saveCurrentConfiguration();
    configuration.deleteCurrentConfiguration();

    EXPECT_TRUE(savedPresets.empty());
    EXPECT_TRUE(deletedNames.empty());
}

TEST_F(Configuration, CaptureMovieReadsTheSetting) {
    EXPECT_TRUE(configuration.captureMovie());
    surroundings.defaults.setObjectForKey(false, "captureMovie");
    EXPECT_FALSE(configuration.captureMovie());
}

} // namespace
} // namespace merro::test
