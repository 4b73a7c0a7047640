#include "platform/native/TerminalAlerts.h"

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <poll.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace merro::platform::native {

TerminalAlerts::TerminalAlerts(MainRunLoop& loop, int output, std::optional<int> input)
    : m_loop(loop), m_output(output), m_input(input), m_isUnattended(!input) {}

TerminalAlerts::~TerminalAlerts() = default;

std::optional<int> TerminalAlerts::ifTerminal(int descriptor) {
    return ::isatty(descriptor) == 1 ? std::optional(descriptor) : std::nullopt;
}

int TerminalAlerts::runModal(const Alert& alert) {
    const auto cancel = std::make_shared<Wakeup>();
    bool asks = false;
    {
        const std::lock_guard lock(m_mutex);
        asks = !m_isUnattended;
        if (asks)
            m_waiting.push_back(cancel);
    }
    write(alert, asks);
    if (!asks)
        return kAlertDefaultReturn;
    if (m_loop.isMainThread())
        askOnMainThread(*cancel);
    else
        waitForAnswer(*cancel);
    const std::lock_guard lock(m_mutex);
    std::erase(m_waiting, cancel);
    return kAlertDefaultReturn;
}

void TerminalAlerts::dismissAll() {
    const std::lock_guard lock(m_mutex);
    m_isUnattended = true;
    for (const auto& waiting : m_waiting)
        waiting->raise();
}

void TerminalAlerts::askOnMainThread(const Wakeup& cancel) {
    const auto hold = m_loop.holdForOutsideWork();
    std::atomic<bool> isAnswered = false;
    std::thread asking([&] {
        waitForAnswer(cancel);
        isAnswered = true;
        m_loop.postFromOutside([] {}); // has the loop look at isAnswered
    });
    (void)m_loop.runInMode(RunLoopMode::ModalPanel, [&] { return isAnswered.load(); });
    cancel.raise(); // the loop may have been stopped before an answer came
    asking.join();
}

void TerminalAlerts::waitForAnswer(const Wakeup& cancel) {
    while (waitUntilReadable(*m_input, cancel)) {
        if (readAnswer())
            return;
    }
}

bool TerminalAlerts::readAnswer() {
    const std::lock_guard lock(m_readMutex);
    pollfd readable{*m_input, POLLIN, 0};
    if (::poll(&readable, 1, 0) <= 0)
        return false; // another alert has had it
    char typed = 0;
    const auto count = ::read(*m_input, &typed, 1);
    if (count > 0)
        return typed == '\n';
    if (count < 0 && (errno == EINTR || errno == EAGAIN))
        return false;
    dismissAll(); // the end of the input: nobody is there any more
    return true;
}

void TerminalAlerts::write(const Alert& alert, bool asks) const {
    std::string text = "\n" + alert.messageText + "\n";
    if (!alert.informativeText.empty())
        text += "  " + alert.informativeText + "\n";
    if (asks)
        text += "  Press Enter to go on. ";
    std::string_view rest = text;
    while (!rest.empty()) {
        const auto written = ::write(m_output, rest.data(), rest.size());
        if (written < 0 && errno != EINTR)
            return;
        rest.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
}

} // namespace merro::platform::native
