// The presets: copying one into the user's defaults, making one from them, and showing in the preset pop-up
// whether the settings are still those of a preset.
//
// Main thread. The defaults may change on any thread; what follows from a change happens on the thread that
// made it and touches only the pop-up's selection. Owned by the controller; what it is handed by reference
// outlives it.
#pragma once

#include "platform/Cell.h"
#include "platform/Interface.h"
#include "platform/Observation.h"
#include "platform/Surroundings.h"
#include "platform/Value.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace merro {

class VideoCompression;

class CaptureConfiguration {
public:
    /// The road to the host's delegate, asked anew each time. All three are set.
    struct Messages {
        /// Whether there is a delegate and it answers mccontrollerSaveConfiguration.
        std::function<bool()> answersSaveConfiguration;
        std::function<void(const platform::Dictionary& preset)> saveConfiguration;
        /// Does nothing when the delegate does not answer it.
        std::function<void(const std::string& name)> deleteConfigurationName;
    };

    /// `configurationPopUp` may be null where the interface has none. Item 0 of it stands for settings edited
    /// by hand; the presets follow.
    CaptureConfiguration(const platform::Surroundings& surroundings, VideoCompression& compression,
                         std::shared_ptr<platform::PopUpButton> configurationPopUp, Messages messages);
    ~CaptureConfiguration();
    CaptureConfiguration(const CaptureConfiguration&) = delete;
    CaptureConfiguration& operator=(const CaptureConfiguration&) = delete;

    /// From now on a change of one of eleven settings, from any source but changeConfiguration, selects item
    /// 0.
    void startObservingDefaults();

    /// The host's presets, as it handed them over; never written anywhere. Any thread.
    [[nodiscard]] std::vector<platform::Dictionary> allConfiguration() const {
        return m_allConfiguration.get();
    }

    /// Replaces the presets and the items of the pop-up. A selected preset that is among the new ones stays
    /// selected; otherwise item 0 is.
    void setAllConfiguration(const std::vector<platform::Dictionary>& presets);

    /// Selects the item of the pop-up and copies its preset into the defaults.
    void selectConfigurationAtIndex(int index);

    /// Copies the preset of the pop-up's selected item into the defaults. What the preset lacks stays as it
    /// is.
    void changeConfiguration();

    /// Makes a preset, without a name, from the defaults and hands it to the delegate.
    void saveCurrentConfiguration();

    /// Asks the delegate to delete the selected preset; the name is empty when none is selected. Only a
    /// delegate that answers mccontrollerSaveConfiguration is asked.
    void deleteCurrentConfiguration();

    /// Whether changeConfiguration is under way. Any thread.
    [[nodiscard]] bool loadingConfig() const { return *m_loadingConfig; }

    /// The stored sampling interval in seconds. Any thread.
    [[nodiscard]] std::int32_t frameSampleInterval() const;

    /// Whether clips get a movie. Any thread.
    [[nodiscard]] bool captureMovie() const;

private:
    [[nodiscard]] platform::Dictionary selectedPreset() const;
    void copySettings(const platform::Dictionary& preset);
    void copyCompression(const platform::Dictionary& preset);
    [[nodiscard]] platform::Dictionary presetFromDefaults() const;

    platform::Surroundings m_surroundings;
    VideoCompression& m_compression;
    std::shared_ptr<platform::PopUpButton> m_configurationPopUp;
    Messages m_messages;
    platform::Cell<std::vector<platform::Dictionary>> m_allConfiguration;
    /// Shared with the observers, which may still be running on another thread when this object is gone.
    std::shared_ptr<std::atomic<bool>> m_loadingConfig = std::make_shared<std::atomic<bool>>(false);
    std::vector<platform::Observation> m_observations;
};

} // namespace merro
