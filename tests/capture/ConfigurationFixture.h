// The preset pop-up and what is behind it, among fakes, with the settings at their first values.
#pragma once

#include "capture/CaptureConfiguration.h"
#include "capture/CaptureDefaults.h"
#include "capture/VideoCompression.h"
#include "tests/support/TestSurroundings.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace merro::test {

using platform::Data;
using platform::Dictionary;
using platform::Value;
using platform::native::HeadlessPopUpButton;

/// The choices are "None" (0), "H.264" (1), "Photo JPEG" (2), "Custom..." (3).
class ConfigurationFixture : public testing::Test {
protected:
    ConfigurationFixture() {
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

} // namespace merro::test
