#include "capture/CaptureDefaults.h"

#include "platform/KeyValueObserving.h"
#include "platform/UserDefaults.h"

#include <algorithm>
#include <utility>

namespace merro {

using platform::Value;

std::int32_t storedSampleInterval(const platform::UserDefaults& defaults) {
    const std::int64_t last = std::ssize(sampleIntervalValue) - 1;
    const auto index = std::clamp<std::int64_t>(defaults.integerForKey(BXMCSampleInterval), 0, last);
    return sampleIntervalValue[static_cast<std::size_t>(index)];
}

void storeMissingCaptureDefaults(platform::UserDefaults& defaults) {
    const std::array<std::pair<std::string_view, Value>, 10> firstValues{{
        {BXMCDetectScene, true},
        {BXMCNbDropFrame, 0},
        {BXMCDetectEndTape, false},
        {BXMCDetectEndTapeSecond, 1},
        {BXMCActionAfterRecord, 2},
        {BXMCFrameSampling, true},
        {BXMCSampleInterval, 1},
        {BXMCCaptureMovie, true},
        {BXMCCaptureCompression, 0},
        {BXMCCaptureCompressionSize, 2},
    }};
    for (const auto& [key, value] : firstValues) {
        if (!defaults.objectForKey(key))
            defaults.setObjectForKey(value, key);
    }
}

void declareCaptureDependentKeys(platform::KeyValueObserving& announcements) {
    announcements.setDependency("hasRecordingDevice", "selectedVideoDevice");
    announcements.setDependency("controllableDevice", "selectedVideoDevice");
    announcements.setDependency("videoDeviceInput", "selectedVideoDevice");
    announcements.setDependency("customVideoCompression", "videoCompressionOptions");
}

} // namespace merro
