// A capture device whose transport does at once what it is told, or whatever the test says. Any thread.
#pragma once

#include "platform/NotificationCenter.h"
#include "platform/QTCaptureDevice.h"
#include "tests/support/Journal.h"

#include <memory>
#include <mutex>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace merro::test {

struct Transport {
    std::int64_t speed = 0;
    std::int64_t mode = 0;
    friend bool operator==(const Transport&, const Transport&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Transport& transport) {
        return out << "speed " << transport.speed << " mode " << transport.mode;
    }
};

class FakeDevice : public platform::QTCaptureDevice {
public:
    explicit FakeDevice(std::string name = "deck", std::shared_ptr<Journal> journal = nullptr)
        : m_name(std::move(name)), m_journal(std::move(journal)) {}

    // --- What the test sets, before the device is used by other threads ---

    std::vector<platform::FormatDescription> formats{
        {platform::MediaType::Muxed, platform::fourCharCode("dvc ")}};
    std::optional<platform::Error> openError;
    bool hasTransport = true;
    bool transportIsReadOnly = false;
    /// A deck that ignores its commands.
    bool obeys = true;

    /// What the transport attribute reads from now on.
    void report(Transport transport) {
        const std::lock_guard lock(m_mutex);
        m_reported = transport;
    }

    // --- What the test looks at ---

    [[nodiscard]] Transport reported() const {
        const std::lock_guard lock(m_mutex);
        return m_reported;
    }
    [[nodiscard]] std::vector<Transport> commands() const {
        const std::lock_guard lock(m_mutex);
        return m_commands;
    }
    void forgetCommands() {
        const std::lock_guard lock(m_mutex);
        m_commands.clear();
    }
    [[nodiscard]] bool isOpen() const {
        const std::lock_guard lock(m_mutex);
        return m_isOpen;
    }

    void postAttributeNotification(platform::NotificationCenter& center, std::string_view name,
                                   std::string_view key) const {
        center.post({std::string(name),
                     static_cast<const platform::QTCaptureDevice*>(this),
                     {{std::string(platform::QTCaptureDeviceChangedAttributeKey), std::string(key)}}});
    }

    // --- QTCaptureDevice ---

    [[nodiscard]] std::string uniqueID() const override { return m_name; }
    [[nodiscard]] std::string localizedDisplayName() const override { return m_name; }
    [[nodiscard]] std::vector<platform::FormatDescription> formatDescriptions() const override {
        return formats;
    }

    [[nodiscard]] std::optional<platform::Error> open() override {
        write("open " + m_name);
        const std::lock_guard lock(m_mutex);
        if (!openError)
            m_isOpen = true;
        return openError;
    }

    void close() override {
        write("close " + m_name);
        const std::lock_guard lock(m_mutex);
        m_isOpen = false;
    }

    [[nodiscard]] std::optional<platform::Value> attributeForKey(std::string_view key) const override {
        if (!hasTransport || key != platform::QTCaptureDeviceAVCTransportControlsAttribute)
            return std::nullopt;
        const Transport now = reported();
        return platform::Dictionary{
            {std::string(platform::QTCaptureDeviceAVCTransportControlsSpeedKey), now.speed},
            {std::string(platform::QTCaptureDeviceAVCTransportControlsPlaybackModeKey), now.mode}};
    }

    [[nodiscard]] bool attributeIsReadOnly(std::string_view) const override { return transportIsReadOnly; }

    void setAttributeForKey(const platform::Value& value, std::string_view key) override {
        const auto* dictionary = value.getIf<platform::Dictionary>();
        if (!dictionary || key != platform::QTCaptureDeviceAVCTransportControlsAttribute)
            return;
        const auto integer = [&](std::string_view name) {
            const platform::Value* entry = find(*dictionary, name);
            return entry ? entry->integerValue() : -1;
        };
        const Transport command{integer(platform::QTCaptureDeviceAVCTransportControlsSpeedKey),
                                integer(platform::QTCaptureDeviceAVCTransportControlsPlaybackModeKey)};
        write(m_name + " speed " + std::to_string(command.speed) + " mode " + std::to_string(command.mode));
        const std::lock_guard lock(m_mutex);
        m_commands.push_back(command);
        if (obeys)
            m_reported = command;
    }

private:
    void write(std::string entry) const {
        if (m_journal)
            m_journal->add(std::move(entry));
    }

    std::string m_name;
    std::shared_ptr<Journal> m_journal;
    mutable std::mutex m_mutex;
    Transport m_reported;
    std::vector<Transport> m_commands;
    bool m_isOpen = false;
};

} // namespace merro::test
