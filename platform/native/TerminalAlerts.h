// Alerts of a program that has a terminal, or nobody at all, to talk to.
#pragma once

#include "platform/Alerts.h"
#include "platform/MainRunLoop.h"
#include "platform/native/Wakeup.h"

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace merro::platform::native {

/// Any thread. Every alert is written whole, in one write, and answered "OK", the only button there is.
///
/// With somebody to ask, it is answered by Enter or the end of the input. On the main thread the loop serves
/// functions and timers of the modal-panel mode meanwhile; any other thread just waits, and waits for no one
/// but the user. (In virtual time such a thread stops the clock of its world for as long as the user thinks.)
class TerminalAlerts final : public Alerts {
public:
    /// Writes to the descriptor `output`. Reads answers from the descriptor `input`; without one (nobody is
    /// there) every alert is answered at once. Both stay the caller's. `loop` outlives this.
    TerminalAlerts(MainRunLoop& loop, int output, std::optional<int> input);
    ~TerminalAlerts() override;
    TerminalAlerts(const TerminalAlerts&) = delete;
    TerminalAlerts& operator=(const TerminalAlerts&) = delete;

    /// `descriptor` when it is a terminal, for use as `input`.
    [[nodiscard]] static std::optional<int> ifTerminal(int descriptor);

    [[nodiscard]] int runModal(const Alert& alert) override;

    /// Answers the alerts that are up, and at once all that come later: the program is ending. Any thread.
    void dismissAll();

private:
    void write(const Alert& alert, bool asks) const;
    void askOnMainThread(const Wakeup& cancel);
    void waitForAnswer(const Wakeup& cancel);
    [[nodiscard]] bool readAnswer();

    MainRunLoop& m_loop;
    const int m_output;
    const std::optional<int> m_input;
    std::mutex m_readMutex; ///< one thread reads the input at a time

    std::mutex m_mutex; ///< guards what follows
    bool m_isUnattended;
    std::vector<std::shared_ptr<Wakeup>> m_waiting;
};

} // namespace merro::platform::native
