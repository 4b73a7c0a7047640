// A compression component that answers what the test says and remembers what was asked. Main thread.
#pragma once

#include "platform/CompressionComponent.h"

#include <memory>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

namespace merro::test {

class RecordingSessionOptions : public platform::CompressionSessionOptions {
public:
    void setProperty(std::uint32_t propertyClass, std::uint32_t identifier, std::uint32_t value) override {
        properties.emplace_back(propertyClass, identifier, value);
    }
    std::vector<std::tuple<std::uint32_t, std::uint32_t, std::uint32_t>> properties;
};

class FakeCompressionComponents : public platform::CompressionComponents {
public:
    // --- What the test sets ---

    bool opens = true;
    int setSettingsResult = 0;
    int requestResult = 0;
    int settingsResult = 0;
    int copyOptionsResult = 0;
    /// What the user sets in the dialog.
    platform::Data dialogSettings{7, 7, 7};
    std::uint32_t codecType = 0;
    double frameRate = 0;

    // --- What the test looks at ---

    struct Opened {
        std::uint32_t type = 0;
        std::uint32_t subType = 0;
    };
    std::vector<Opened> opened;
    int openNow = 0;
    int dialogsShown = 0;
    std::optional<std::uint32_t> preferenceFlags;
    /// The settings that the last opened component was given, or were set in its dialog.
    std::optional<platform::Data> settings;
    std::shared_ptr<RecordingSessionOptions> lastSessionOptions;

    [[nodiscard]] std::unique_ptr<platform::CompressionComponent>
    openDefaultComponent(std::uint32_t type, std::uint32_t subType) override {
        opened.push_back({type, subType});
        settings.reset();
        return opens ? std::make_unique<Component>(*this) : nullptr;
    }

private:
    class Component : public platform::CompressionComponent {
    public:
        explicit Component(FakeCompressionComponents& owner) : m_owner(owner) { ++m_owner.openNow; }
        ~Component() override { --m_owner.openNow; }
        Component(const Component&) = delete;
        Component& operator=(const Component&) = delete;

        void setPreferenceFlags(std::uint32_t flags) override { m_owner.preferenceFlags = flags; }
        [[nodiscard]] int setSettingsFromAtomContainer(const platform::Data& given) override {
            m_owner.settings = given;
            return m_owner.setSettingsResult;
        }
        [[nodiscard]] int requestImageSettings() override {
            ++m_owner.dialogsShown;
            m_owner.settingsWhenDialogOpened = m_owner.settings;
            if (m_owner.requestResult == 0)
                m_owner.settings = m_owner.dialogSettings;
            return m_owner.requestResult;
        }
        [[nodiscard]] int settingsAsAtomContainer(platform::Data& result) override {
            if (m_owner.settingsResult == 0)
                result = m_owner.settings.value_or(platform::Data{});
            return m_owner.settingsResult;
        }
        [[nodiscard]] int copyCompressionSessionOptions(
            std::shared_ptr<platform::CompressionSessionOptions>& options) override {
            if (m_owner.copyOptionsResult != 0)
                return m_owner.copyOptionsResult;
            m_owner.lastSessionOptions = std::make_shared<RecordingSessionOptions>();
            options = m_owner.lastSessionOptions;
            return 0;
        }
        [[nodiscard]] std::uint32_t spatialSettingsCodecType() override { return m_owner.codecType; }
        [[nodiscard]] double temporalSettingsFrameRate() override { return m_owner.frameRate; }

    private:
        FakeCompressionComponents& m_owner;
    };

public:
    std::optional<platform::Data> settingsWhenDialogOpened;
};

} // namespace merro::test
