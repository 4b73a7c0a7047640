// Whose turn it is to open and end clips.
//
// Whoever changes the open clip (a frame's recording part, a start, a stop, a forced change of file) holds
// the turn meanwhile. It is not a lock that anybody waits for: work that comes while it is held is put in a
// queue, and the holder, on his thread, runs it as soon as his own piece is finished. So a delegate may
// switch recording off from within a message, or block on the main thread while that is inside setRecording,
// and nothing hangs.
#pragma once

#include <deque>
#include <functional>
#include <mutex>

namespace merro {

/// Any thread. Must outlive whoever holds the turn.
class RecordingTurn {
public:
    using Work = std::function<void()>;

    /// Runs `work` when the turn is free, and then what was put off meanwhile; otherwise puts it off and
    /// returns.
    void enterOrDefer(Work work);

    /// Runs `work`, which must be short and call nobody, between two turns, so that no frame finds the turn
    /// taken because of it; puts it off while somebody has the turn.
    void runBetweenTurns(Work work);

    /// Puts `work` off without running anything; runDeferred must follow.
    void defer(Work work);

    /// Takes the turn when it is free and runs what was put off. Returns at once when somebody has it: he
    /// will.
    void runDeferred();

    /// The turn while it is held by this object; gives it up, running what was put off, when destroyed.
    class Hold {
    public:
        /// Holds nothing.
        Hold() = default;
        Hold(Hold&& other) noexcept;
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;
        Hold& operator=(Hold&&) = delete;
        ~Hold();
        explicit operator bool() const { return m_turn != nullptr; }

    private:
        friend class RecordingTurn;
        explicit Hold(RecordingTurn* turn) : m_turn(turn) {}
        RecordingTurn* m_turn = nullptr;
    };

    /// Takes the turn when it is free and nothing waits for it; false otherwise.
    [[nodiscard]] Hold tryEnter();

private:
    void leave();

    std::mutex m_mutex;
    bool m_isTaken = false;
    std::deque<Work> m_deferred;
};

} // namespace merro
