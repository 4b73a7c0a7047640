#include "capture/CaptureConfiguration.h"

#include "capture/CaptureDefaults.h"
#include "capture/VideoCompression.h"
#include "platform/Localization.h"
#include "platform/UserDefaults.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>
#include <utility>

namespace merro {

using platform::Dictionary;
using platform::Value;

namespace {

/// The settings whose change means that the pop-up's preset is no longer what is set. The volume is not among
/// them: turning the sound down leaves the preset's name standing.
constexpr std::array<std::string_view, 11> kObservedKeys{
    BXMCDetectScene,
    BXMCNbDropFrame,
    BXMCDetectEndTape,
    BXMCDetectEndTapeSecond,
    BXMCActionAfterRecord,
    BXMCFrameSampling,
    BXMCSampleInterval,
    BXMCCaptureMovie,
    BXMCCaptureCompression,
    BXMCCaptureCompressionSize,
    BXMCCaptureCompressionData,
};

std::optional<std::int64_t> indexOfSampleInterval(std::int64_t seconds) {
    const auto found = std::ranges::find(sampleIntervalValue, seconds);
    if (found == sampleIntervalValue.end())
        return std::nullopt;
    return found - sampleIntervalValue.begin();
}

} // namespace

CaptureConfiguration::CaptureConfiguration(const platform::Surroundings& surroundings,
                                           VideoCompression& compression,
                                           std::shared_ptr<platform::PopUpButton> configurationPopUp,
                                           Messages messages)
    : m_surroundings(surroundings), m_compression(compression),
      m_configurationPopUp(std::move(configurationPopUp)), m_messages(std::move(messages)) {
    setAllConfiguration({});
}

CaptureConfiguration::~CaptureConfiguration() = default;

void CaptureConfiguration::startObservingDefaults() {
    if (!m_configurationPopUp)
        return;
    const auto settingChanged = [popUp = m_configurationPopUp,
                                 loadingConfig = m_loadingConfig](const std::string&) {
        if (!*loadingConfig)
            popUp->selectItemAtIndex(0);
    };
    for (const std::string_view key : kObservedKeys)
        m_observations.push_back(m_surroundings.defaults.addObserver(std::string(key), settingChanged));
}

void CaptureConfiguration::setAllConfiguration(const std::vector<Dictionary>& presets) {
    m_allConfiguration.set(presets);
    if (!m_configurationPopUp)
        return;
    const Dictionary selected = selectedPreset();
    const platform::PopUpItem* first = m_configurationPopUp->itemAtIndex(0);
    platform::PopUpItem editedByHand =
        first ? *first : platform::PopUpItem{m_surroundings.localization.text("Custom settings"), 0, {}};
    m_configurationPopUp->removeAllItems();
    m_configurationPopUp->addItem(std::move(editedByHand));
    int selectedIndex = 0;
    for (const Dictionary& preset : presets) {
        const Value* name = find(preset, BXMCConfName);
        m_configurationPopUp->addItem({name ? name->stringValue() : std::string(), 0, preset});
        if (!selected.empty() && preset == selected)
            selectedIndex = m_configurationPopUp->numberOfItems() - 1;
    }
    m_configurationPopUp->selectItemAtIndex(selectedIndex);
}

void CaptureConfiguration::selectConfigurationAtIndex(int index) {
    if (m_configurationPopUp)
        m_configurationPopUp->selectItemAtIndex(index);
    changeConfiguration();
}

void CaptureConfiguration::changeConfiguration() {
    *m_loadingConfig = true;
    const Dictionary preset = selectedPreset();
    copySettings(preset);
    copyCompression(preset);
    m_compression.updateVideoCompression();
    *m_loadingConfig = false;
}

void CaptureConfiguration::copySettings(const Dictionary& preset) {
    platform::UserDefaults& defaults = m_surroundings.defaults;
    const auto copyBool = [&](std::string_view presetKey, std::string_view key) {
        if (const Value* value = find(preset, presetKey))
            defaults.setObjectForKey(value->boolValue(), key);
    };
    const auto copyInteger = [&](std::string_view presetKey, std::string_view key) {
        if (const Value* value = find(preset, presetKey))
            defaults.setObjectForKey(value->integerValue(), key);
    };
    copyBool(BXMCConfDetectScene, BXMCDetectScene);
    copyInteger(BXMCConfNbDropFrame, BXMCNbDropFrame);
    copyBool(BXMCConfDetectEndTape, BXMCDetectEndTape);
    copyInteger(BXMCConfDetectEndTapeSecond, BXMCDetectEndTapeSecond);
    copyInteger(BXMCConfActionAfterRecord, BXMCActionAfterRecord);
    copyBool(BXMCConfFrameSampling, BXMCFrameSampling);
    if (const Value* seconds = find(preset, BXMCConfSampleInterval)) {
        if (const auto index = indexOfSampleInterval(seconds->integerValue()))
            defaults.setObjectForKey(*index, BXMCSampleInterval);
    }
    copyBool(BXMCConfCaptureMovie, BXMCCaptureMovie);
}

void CaptureConfiguration::copyCompression(const Dictionary& preset) {
    platform::UserDefaults& defaults = m_surroundings.defaults;
    if (const Value* index = find(preset, BXMCConfCompression))
        m_compression.selectItemAtIndex(index->integerValue());
    // Stored as a boolean: a host that loads a preset with size 640 x 480 or larger gets movies of 320 x 240.
    if (const Value* size = find(preset, BXMCConfCompressionSize))
        defaults.setObjectForKey(size->integerValue() != 0, BXMCCaptureCompressionSize);
    if (const Value* data = find(preset, BXMCConfCompressionData))
        defaults.setObjectForKey(*data, BXMCCaptureCompressionData);

    const Value* oldFormat = find(preset, BXMCCaptureOldCompression);
    if (!oldFormat)
        return;
    // Presets of old versions knew plain DV as 0 and 1; whatever else they held can only be set again by
    // hand.
    const bool plain = oldFormat->integerValue() == 0 || oldFormat->integerValue() == 1;
    if (!plain)
        defaults.removeObjectForKey(BXMCCaptureCompressionData);
    m_compression.selectItemAtIndex(plain ? 0 : m_compression.lastIndex());
}

void CaptureConfiguration::saveCurrentConfiguration() {
    if (m_messages.answersSaveConfiguration())
        m_messages.saveConfiguration(presetFromDefaults());
}

void CaptureConfiguration::deleteCurrentConfiguration() {
    // The test is for the save message: a host that answers only the delete message is never asked to delete.
    if (!m_messages.answersSaveConfiguration())
        return;
    const Dictionary preset = selectedPreset();
    const Value* name = find(preset, BXMCConfName);
    m_messages.deleteConfigurationName(name ? name->stringValue() : std::string());
}

std::int32_t CaptureConfiguration::frameSampleInterval() const {
    return storedSampleInterval(m_surroundings.defaults);
}

bool CaptureConfiguration::captureMovie() const {
    return m_surroundings.defaults.boolForKey(BXMCCaptureMovie);
}

Dictionary CaptureConfiguration::selectedPreset() const {
    const platform::PopUpItem* item = m_configurationPopUp ? m_configurationPopUp->selectedItem() : nullptr;
    const Dictionary* preset = item ? std::get_if<Dictionary>(&item->representedObject) : nullptr;
    return preset ? *preset : Dictionary{};
}

Dictionary CaptureConfiguration::presetFromDefaults() const {
    const platform::UserDefaults& defaults = m_surroundings.defaults;
    Dictionary preset;
    const auto copy = [&](std::string_view key, std::string_view presetKey) {
        if (auto value = defaults.objectForKey(key))
            preset.insert_or_assign(std::string(presetKey), std::move(*value));
    };
    copy(BXMCDetectScene, BXMCConfDetectScene);
    copy(BXMCNbDropFrame, BXMCConfNbDropFrame);
    copy(BXMCDetectEndTape, BXMCConfDetectEndTape);
    copy(BXMCDetectEndTapeSecond, BXMCConfDetectEndTapeSecond);
    copy(BXMCActionAfterRecord, BXMCConfActionAfterRecord);
    copy(BXMCFrameSampling, BXMCConfFrameSampling);
    preset.insert_or_assign(std::string(BXMCConfSampleInterval), Value(std::int64_t{frameSampleInterval()}));
    copy(BXMCCaptureMovie, BXMCConfCaptureMovie);
    copy(BXMCCaptureCompression, BXMCConfCompression);
    copy(BXMCCaptureCompressionSize, BXMCConfCompressionSize);
    copy(BXMCCaptureCompressionData, BXMCConfCompressionData);
    return preset;
}

} // namespace merro
