// A simulated DV deck: a capture device whose tape is a list of frames.
//
// It delivers frames and posts its notifications as a camcorder on the bus does, and works in real and in
// virtual time. Every operation from any thread; held by std::shared_ptr (makeDeck). Frames come on a
// delivery thread of the deck's own.
#pragma once

#include "platform/deck/DeckFaults.h"
#include "platform/deck/Mechanism.h"
#include "platform/deck/Tape.h"
#include "platform/session/Device.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace merro::platform {
class NotificationCenter;
class RunLoop;
class Threads;
} // namespace merro::platform

namespace merro::platform::deck {

struct DeckSettings {
    std::string uniqueID = "simulated-deck";
    std::string displayName = "Simulated deck";
    MechanismSettings mechanism;
    DeckFaults faults;

    /// The device has gone away, or is back (DeckFaults::goesAwayAtFrame). On the delivery thread, no lock
    /// held.
    std::function<void(bool isConnected)> connectionChanged;
};

/// Where the deck is on its tape.
struct DeckPosition {
    std::int64_t frameIndex = 0;   ///< the frame delivered last, or under the head where none was
    std::int64_t offsetBytes = -1; ///< where that frame lies in its file; -1 where there is no such place
    std::int64_t frameCount = 0;   ///< frames on the tape, an estimate before the end has been read
    bool isFrameCountExact = false;
};

class DeckDrive;

/// The transport attribute reads back the real state of the mechanism at this moment, not the last command.
/// At both ends of the tape the mechanism stops (speed 0, mode 0). After each change of the state both
/// attribute notifications are posted on the main thread, one after the other, and when play runs off the end
/// of the tape only after the last frame has been delivered.
class Deck final : public session::Device {
    struct Key {};

public:
    /// For makeDeck.
    explicit Deck(Key /*key*/) {}
    /// Waits for the delivery thread to end, unless it is that thread.
    ~Deck() override;
    Deck(const Deck&) = delete;
    Deck& operator=(const Deck&) = delete;

    [[nodiscard]] DeckPosition position() const;
    /// Frames that passed while a receiver was busy, or that DeckFaults lost. Only grows.
    [[nodiscard]] std::int64_t framesLost() const;
    [[nodiscard]] std::int64_t refusedCommands() const;
    /// What the tape has found out so far about itself.
    [[nodiscard]] std::vector<TapeFinding> findings() const;

    [[nodiscard]] std::string uniqueID() const override;
    [[nodiscard]] std::string localizedDisplayName() const override;
    [[nodiscard]] std::vector<FormatDescription> formatDescriptions() const override;
    [[nodiscard]] std::optional<Error> open() override;
    void close() override;
    [[nodiscard]] std::optional<Value> attributeForKey(std::string_view key) const override;
    [[nodiscard]] bool attributeIsReadOnly(std::string_view key) const override;
    void setAttributeForKey(const Value& value, std::string_view key) override;

    [[nodiscard]] bool isOpen() const override;
    void setReceiver(session::FrameReceiver* receiver) override;
    void waitForReceiver() override;

private:
    friend std::shared_ptr<Deck> makeDeck(Clock&, Threads&, RunLoop&, NotificationCenter&,
                                          std::unique_ptr<Tape>, DeckSettings);

    std::shared_ptr<DeckDrive> m_drive;
};

/// A deck with `tape` in it, stopped at its start and not open. The surroundings outlive it.
[[nodiscard]] std::shared_ptr<Deck> makeDeck(Clock& clock, Threads& threads, RunLoop& runLoop,
                                             NotificationCenter& notifications, std::unique_ptr<Tape> tape,
                                             DeckSettings settings = {});

} // namespace merro::platform::deck
