// A device that sends a frame when the test says so, on the thread that says so.
#pragma once

#include "platform/session/CallGate.h"
#include "platform/session/Device.h"

#include <atomic>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace merro::test {

/// A frame of one byte, its number.
inline platform::QTSampleBuffer numberedSample(int number) {
    platform::QTSampleBuffer sample;
    sample.bytesForAllSamples = platform::FrameBytes::taking({static_cast<std::uint8_t>(number)});
    return sample;
}

inline int numberOf(const platform::QTSampleBuffer& sample) {
    return sample.bytesForAllSamples.bytes().front();
}

class ManualDevice : public platform::session::Device {
public:
    explicit ManualDevice(platform::Threads& threads, std::string name = "camcorder")
        : m_name(std::move(name)), m_gate(threads) {}

    std::vector<platform::FormatDescription> formats{
        {platform::MediaType::Muxed, platform::fourCharCode("dvc ")}};

    /// The calling thread plays the delivery thread.
    void send(int number, std::int64_t framesLostBefore = 0) {
        platform::session::FrameReceiver* receiver = nullptr;
        {
            const std::lock_guard lock(m_mutex);
            receiver = m_receiver;
            if (receiver == nullptr)
                return;
            m_gate.enter();
        }
        receiver->frame(numberedSample(number), framesLostBefore);
        m_gate.leave();
    }

    [[nodiscard]] std::string uniqueID() const override { return m_name; }
    [[nodiscard]] std::string localizedDisplayName() const override { return m_name; }
    [[nodiscard]] std::vector<platform::FormatDescription> formatDescriptions() const override {
        return formats;
    }
    [[nodiscard]] std::optional<platform::Error> open() override {
        m_isOpen = true;
        return std::nullopt;
    }
    void close() override { m_isOpen = false; }
    [[nodiscard]] bool isOpen() const override { return m_isOpen; }
    [[nodiscard]] std::optional<platform::Value> attributeForKey(std::string_view) const override {
        return std::nullopt;
    }
    [[nodiscard]] bool attributeIsReadOnly(std::string_view) const override { return true; }
    void setAttributeForKey(const platform::Value&, std::string_view) override {}

    void setReceiver(platform::session::FrameReceiver* receiver) override {
        const std::lock_guard lock(m_mutex);
        m_receiver = receiver;
    }
    void waitForReceiver() override { m_gate.wait(); }

private:
    std::string m_name;
    std::atomic<bool> m_isOpen = false;
    platform::session::CallGate m_gate;
    std::mutex m_mutex;
    platform::session::FrameReceiver* m_receiver = nullptr;
};

} // namespace merro::test
