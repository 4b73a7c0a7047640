#include "capture/ClipReports.h"

#include <string>
#include <string_view>

namespace merro {

platform::Dictionary clipDictionary(const ClipRecord& clip) {
    platform::Dictionary info;
    const auto add = [&info](std::string_view key, const platform::Value& value) {
        info.insert_or_assign(std::string(key), value);
    };
    if (const auto clipId = clip.clipId())
        add(kBXMCClipId, *clipId);
    if (const auto date = clip.clipRecordingDate())
        add(kBXMCClipRecordingDate, date);
    if (const auto start = clip.clipStartTimecode())
        add(kBXMCClipStartTimecode, start);
    if (const auto end = clip.clipEndTimecode())
        add(kBXMCClipEndTimecode, end);
    if (const auto duration = clip.clipDuration())
        add(kBXMCClipDuration, duration);
    add(kBXMCClipAspectRatio, clip.clipAspectRatio());
    return info;
}

void ClipReports::beginRecord() {
    if (const auto host = delegate(); host && host->mccontrollerBeginRecord)
        host->mccontrollerBeginRecord(m_controller);
}

std::optional<platform::Dictionary> ClipReports::willRecord() {
    if (const auto host = delegate(); host && host->mccontrollerWillRecord)
        return host->mccontrollerWillRecord(m_controller);
    return std::nullopt;
}

bool ClipReports::answersDidRecord() const {
    const auto host = delegate();
    return host && host->mccontrollerDidRecordInfo;
}

void ClipReports::didRecord(const platform::Dictionary& info) {
    if (const auto host = delegate(); host && host->mccontrollerDidRecordInfo)
        host->mccontrollerDidRecordInfo(m_controller, info);
}

void ClipReports::endRecord() {
    if (const auto host = delegate(); host && host->mccontrollerEndRecord)
        host->mccontrollerEndRecord(m_controller);
}

bool ClipReports::answersSaveConfiguration() const {
    const auto host = delegate();
    return host && host->mccontrollerSaveConfiguration;
}

void ClipReports::saveConfiguration(const platform::Dictionary& preset) {
    if (const auto host = delegate(); host && host->mccontrollerSaveConfiguration)
        host->mccontrollerSaveConfiguration(m_controller, preset);
}

void ClipReports::deleteConfiguration(const std::string& name) {
    if (const auto host = delegate(); host && host->mccontrollerDeleteConfigurationName)
        host->mccontrollerDeleteConfigurationName(m_controller, name);
}

} // namespace merro
