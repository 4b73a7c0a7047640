// A deck whose commands and frames are written down on their way.
#pragma once

#include "platform/deck/Deck.h"
#include "platform/NotificationCenter.h"
#include "platform/Observation.h"
#include "tests/scenarios/TapeScript.h"
#include "tests/support/Journal.h"

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace merro::test {

/// "deck 10000 1" in the journal is a command of speed 10000, mode 1. Any thread.
class JournalledDeck final : public platform::session::Device, private platform::session::FrameReceiver {
public:
    explicit JournalledDeck(Journal& journal) : m_journal(journal) {}

    /// The deck itself posts its notifications to `inner`; they go on to `outer` as this object's own.
    void wrap(std::shared_ptr<platform::deck::Deck> deck, platform::NotificationCenter& outer) {
        m_deck = std::move(deck);
        for (const auto name : {platform::QTCaptureDeviceAttributeWillChangeNotification,
                                platform::QTCaptureDeviceAttributeDidChangeNotification}) {
            m_observations.push_back(inner.addObserver(
                std::string(name), nullptr, [this, &outer](const platform::Notification& notification) {
                    outer.post({notification.name, this, notification.information});
                }));
        }
    }

    platform::NotificationCenter inner;

    /// Called on the delivery thread when a frame has been taken. Set while no frames are delivered.
    std::function<void(int frame)> afterFrame;

    /// The numbers of the frames delivered so far, in order.
    [[nodiscard]] std::vector<int> delivered() const {
        const std::lock_guard lock(m_mutex);
        return m_delivered;
    }
    [[nodiscard]] platform::deck::Deck& deck() const { return *m_deck; }

    [[nodiscard]] std::string uniqueID() const override { return m_deck->uniqueID(); }
    [[nodiscard]] std::string localizedDisplayName() const override { return m_deck->localizedDisplayName(); }
    [[nodiscard]] std::vector<platform::FormatDescription> formatDescriptions() const override {
        return m_deck->formatDescriptions();
    }
    [[nodiscard]] std::optional<platform::Error> open() override { return m_deck->open(); }
    void close() override { m_deck->close(); }
    [[nodiscard]] std::optional<platform::Value> attributeForKey(std::string_view key) const override {
        return m_deck->attributeForKey(key);
    }
    [[nodiscard]] bool attributeIsReadOnly(std::string_view key) const override {
        return m_deck->attributeIsReadOnly(key);
    }
    void setAttributeForKey(const platform::Value& value, std::string_view key) override {
        const auto* wanted = value.getIf<platform::Dictionary>();
        const auto number = [&](std::string_view name) {
            const platform::Value* entry = wanted != nullptr ? platform::find(*wanted, name) : nullptr;
            return entry != nullptr ? entry->stringValue() : std::string("?");
        };
        m_journal.add("deck " + number(platform::QTCaptureDeviceAVCTransportControlsSpeedKey) + " " +
                      number(platform::QTCaptureDeviceAVCTransportControlsPlaybackModeKey));
        m_deck->setAttributeForKey(value, key);
    }
    [[nodiscard]] bool isOpen() const override { return m_deck->isOpen(); }
    void setReceiver(platform::session::FrameReceiver* receiver) override {
        m_receiver = receiver;
        m_deck->setReceiver(receiver != nullptr ? this : nullptr);
    }
    void waitForReceiver() override { m_deck->waitForReceiver(); }

private:
    void frame(const platform::QTSampleBuffer& sample, std::int64_t framesLostBefore) override {
        const int number = TapeScript::numberOf(sample.bytesForAllSamples.bytes());
        if (platform::session::FrameReceiver* const receiver = m_receiver) {
            {
                const std::lock_guard lock(m_mutex);
                m_delivered.push_back(number);
            }
            receiver->frame(sample, framesLostBefore);
        }
        if (afterFrame)
            afterFrame(number);
    }

    Journal& m_journal;
    std::shared_ptr<platform::deck::Deck> m_deck;
    std::vector<platform::Observation> m_observations;
    std::atomic<platform::session::FrameReceiver*> m_receiver = nullptr;
    mutable std::mutex m_mutex;
    std::vector<int> m_delivered;
};

} // namespace merro::test
