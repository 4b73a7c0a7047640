// The inside of a Deck: tape, mechanism and the delivery thread that ties them together.
//
// Every operation from any thread but run, which is the delivery thread. It handles everything that happens
// in the order of time (a frame that is due, a change of the mechanism, a command), late or not: other
// threads only put their commands into a list and look at a copy of the mechanism, so that no frame that
// passed before a change is forgotten because somebody looked at the state in between.
#pragma once

#include "platform/deck/Deck.h"
#include "platform/session/CallGate.h"
#include "platform/Threads.h"

#include <atomic>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace merro::platform::deck {

class DeckDrive {
public:
    /// `stateChanged` is called on the delivery thread, no lock held, after each change of the transport's
    /// state.
    DeckDrive(Clock& clock, Threads& threads, std::unique_ptr<Tape> tape, DeckSettings settings,
              std::function<void()> stateChanged);

    /// The delivery thread, until quit.
    void run();
    /// Has the delivery thread end, and waits for it unless the caller is that thread.
    void quit();

    [[nodiscard]] const DeckSettings& settings() const { return m_settings; }
    [[nodiscard]] const Tape& tape() const { return *m_tape; }

    /// The state at this moment; none while the device is away.
    [[nodiscard]] std::optional<TransportState> state() const;
    void command(TransportState wanted);

    /// False while the device is away.
    [[nodiscard]] bool open();
    void close();
    [[nodiscard]] bool isOpen() const;

    void setReceiver(session::FrameReceiver* receiver);
    void waitForReceiver() { m_gate.wait(); }

    [[nodiscard]] DeckPosition position() const;
    [[nodiscard]] std::int64_t framesLost() const;
    [[nodiscard]] std::int64_t refusedCommands() const;

private:
    using Lock = std::unique_lock<std::mutex>;

    struct Command {
        Moment at;
        TransportState wanted;
    };

    // With m_mutex held; those that take the lock give it up while they wait, read the tape or call out.
    [[nodiscard]] Mechanism mechanismAt(Moment now) const;
    [[nodiscard]] bool isPlaying() const;
    void startMotion();
    [[nodiscard]] std::optional<Moment> frameDue();
    [[nodiscard]] std::optional<Moment> lookForEndDue() const;
    [[nodiscard]] Moment tick(std::int64_t number) const;
    [[nodiscard]] bool handleNext(Lock& lock);
    void wait(Lock& lock, std::optional<Moment> until);
    void tellOfChanges(Lock& lock);
    [[nodiscard]] std::optional<TapeFrame> readTape(Lock& lock, std::int64_t index);
    void handleFrame(Lock& lock, Moment due);
    [[nodiscard]] bool isLost(Lock& lock, Moment due);
    void countLostFrame();
    void passFrame(Lock& lock, Moment due, std::int64_t index, const TapeFrame& frame);
    void adoptSystem(Moment due, const TapeFrame& frame);
    void deliver(Lock& lock, std::int64_t index, const TapeFrame& frame);
    void goAway(Lock& lock, Moment now);
    void comeBack(Lock& lock);
    void tellOfConnection(Lock& lock, bool isConnected) const;

    [[nodiscard]] QTSampleBuffer sampleBuffer(const TapeFrame& frame, bool playing);
    void wake();

    Clock& m_clock;
    const DeckSettings m_settings;
    const std::function<void()> m_stateChanged;
    FaultDice m_dice;
    const std::unique_ptr<Tape> m_tape; ///< read by the delivery thread only
    session::CallGate m_gate;
    const std::unique_ptr<ConditionLock> m_wake;
    const std::unique_ptr<ConditionLock> m_end;

    mutable std::mutex m_mutex;
    Mechanism m_mechanism;
    std::vector<Command> m_commands; ///< those that the delivery thread has not come to yet
    session::FrameReceiver* m_receiver = nullptr;
    bool m_hasNewReceiver = false;
    bool m_isOpen = false;
    bool m_isAway = false;
    bool m_quits = false;
    std::optional<Moment> m_backAt;
    DeckPosition m_position; ///< of the frame delivered last
    std::int64_t m_framesLost = 0;
    std::int64_t m_refusedCommands = 0;

    // Of the delivery thread.
    std::int64_t m_motion = -1;   ///< Mechanism::motionCount that the next three belong to
    std::int64_t m_nextFrame = 0; ///< in play: the frame that is delivered next
    Moment m_tickStart{};         ///< with other pictures: the moment that the frame periods are counted from
    std::int64_t m_nextTick = 0;
    Moment m_busyFrom{}; ///< the receiver's last call
    Moment m_busyUntil{};
    std::int64_t m_lostBefore = 0;  ///< frames lost since the one delivered last
    std::int64_t m_changesTold = 0; ///< Mechanism::changeCount that stateChanged has been called for
    bool m_hasDelivered = false;
    TimecodeValue m_lastTimecode;
    bool m_wentAway = false;
    std::atomic<std::thread::id> m_deliveryThread{};
};

} // namespace merro::platform::deck
