// The standard compression component: the settings dialog and the serialised form of what was set in it.
#pragma once

#include "platform/QTCompressionOptions.h"
#include "platform/Value.h"

#include <cstdint>
#include <memory>

namespace merro::platform {

/// One opened component. A result of 0 is success; 1 from requestImageSettings means that the user cancelled.
/// Main thread. Destroying it closes it.
class CompressionComponent {
public:
    virtual ~CompressionComponent() = default;
    virtual void setPreferenceFlags(std::uint32_t flags) = 0;
    [[nodiscard]] virtual int setSettingsFromAtomContainer(const Data& settings) = 0;
    [[nodiscard]] virtual int requestImageSettings() = 0;
    [[nodiscard]] virtual int settingsAsAtomContainer(Data& settings) = 0;
    [[nodiscard]] virtual int
    copyCompressionSessionOptions(std::shared_ptr<CompressionSessionOptions>& options) = 0;
    [[nodiscard]] virtual std::uint32_t spatialSettingsCodecType() = 0;
    [[nodiscard]] virtual double temporalSettingsFrameRate() = 0;
};

class CompressionComponents {
public:
    virtual ~CompressionComponents() = default;
    /// Opens the default component of `type` and `subType` (four-character codes); null when there is none.
    [[nodiscard]] virtual std::unique_ptr<CompressionComponent>
    openDefaultComponent(std::uint32_t type, std::uint32_t subType) = 0;
};

} // namespace merro::platform
