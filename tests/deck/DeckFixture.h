// A deck in virtual time, an ideal one unless the test says otherwise, and a receiver that notes what arrives
// and when.
#pragma once

#include "platform/deck/Deck.h"
#include "platform/deck/MemoryTape.h"
#include "platform/NotificationCenter.h"
#include "platform/RunLoop.h"
#include "tests/platform/Worlds.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace merro::platform::deck {

using namespace std::chrono_literals;

inline constexpr TransportState stopped{0, 0};
inline constexpr TransportState paused{0, 1};
inline constexpr TransportState playing{10000, 1};

/// Frames of one byte, their number, that pass as fast as 625/50.
inline std::unique_ptr<MemoryTape> numberedTape(int frames) {
    auto tape = std::make_unique<MemoryTape>();
    for (int number = 0; number < frames; ++number)
        tape->append(FrameBytes::taking({static_cast<std::uint8_t>(number)}));
    return tape;
}

class NotingReceiver : public session::FrameReceiver {
public:
    explicit NotingReceiver(Clock& clock) : m_clock(clock) {}

    void frame(const QTSampleBuffer& sampleBuffer, std::int64_t framesLostBefore) override {
        numbers.push_back(sampleBuffer.bytesForAllSamples.bytes().front());
        moments.push_back(m_clock.now());
        lost.push_back(framesLostBefore);
        breaks.push_back(sampleBuffer.sceneChange == QTSampleBufferTimeStampDiscontinuitySceneChange);
        if (then)
            then(numbers.back());
    }

    std::vector<int> numbers;
    std::vector<Moment> moments;
    std::vector<std::int64_t> lost;
    std::vector<bool> breaks;
    std::function<void(int number)> then;

private:
    Clock& m_clock;
};

/// The numbers from `first` to `last` in steps of `step`.
inline std::vector<int> numbers(int first, int last, int step = 1) {
    std::vector<int> all;
    for (int number = first; step > 0 ? number <= last : number >= last; number += step)
        all.push_back(number);
    return all;
}

class DeckFixture : public testing::Test {
protected:
    DeckFixture() { settings.mechanism = MechanismSettings::ideal(); }

    void load(std::unique_ptr<Tape> tape) {
        deck = makeDeck(world.clock, world.threads, world.loop, notifications, std::move(tape), settings);
        EXPECT_FALSE(deck->open());
        deck->setReceiver(&receiver);
    }

    void command(TransportState wanted) {
        deck->setAttributeForKey(
            Dictionary{{std::string(QTCaptureDeviceAVCTransportControlsSpeedKey), wanted.speed},
                       {std::string(QTCaptureDeviceAVCTransportControlsPlaybackModeKey), wanted.mode}},
            QTCaptureDeviceAVCTransportControlsAttribute);
    }

    [[nodiscard]] std::optional<TransportState> state() const {
        const auto value = deck->attributeForKey(QTCaptureDeviceAVCTransportControlsAttribute);
        if (!value)
            return std::nullopt;
        const auto& dictionary = *value->getIf<Dictionary>();
        return TransportState{
            find(dictionary, QTCaptureDeviceAVCTransportControlsSpeedKey)->integerValue(),
            find(dictionary, QTCaptureDeviceAVCTransportControlsPlaybackModeKey)->integerValue()};
    }

    void letPass(Duration duration) { world.clock.sleepFor(duration); }

    /// Until nothing more can happen. Would never return if the deck did anything while its tape stands
    /// still.
    void letAllHappen() { EXPECT_FALSE(world.loop.run()); }

    VirtualWorld world;
    NotificationCenter notifications;
    DeckSettings settings;
    NotingReceiver receiver{world.clock};
    std::shared_ptr<Deck> deck;
};

} // namespace merro::platform::deck
