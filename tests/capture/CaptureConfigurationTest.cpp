#include "tests/capture/ConfigurationFixture.h"

#include <memory>
#include <string>
#include <vector>

namespace merro::test {
namespace {

using Configuration = ConfigurationFixture;

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
