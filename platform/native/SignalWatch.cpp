#include "platform/native/SignalWatch.h"

#include <array>
#include <atomic>
#include <utility>

namespace merro::platform::native {

namespace {

constexpr std::size_t kSignalCount = 65;
std::array<std::atomic<const Wakeup*>, kSignalCount> arrived; ///< by signal; lock-free, as handlers need it
static_assert(std::atomic<const Wakeup*>::is_always_lock_free);

void handleSignal(int signal) {
    if (const Wakeup* const wakeup = arrived[static_cast<std::size_t>(signal)])
        wakeup->raise();
}

/// Kept for the life of the process: a handler may be under way on any thread when a watch ends.
const Wakeup& wakeupFor(int signal) {
    auto& wakeup = arrived.at(static_cast<std::size_t>(signal));
    if (wakeup == nullptr)
        wakeup = new Wakeup;
    wakeup.load()->clear();
    return *wakeup;
}

} // namespace

SignalWatch::SignalWatch(int signal, std::function<void()> handler)
    : m_signal(signal), m_arrived(wakeupFor(signal)),
      m_watch(m_arrived.descriptor(), [this, handler = std::move(handler)] {
          m_arrived.clear();
          handler();
          return true;
      }) {
    struct sigaction action {};
    action.sa_handler = handleSignal;
    action.sa_flags = SA_RESTART;
    (void)sigemptyset(&action.sa_mask);
    (void)sigaction(signal, &action, &m_previous);
}

SignalWatch::~SignalWatch() {
    (void)sigaction(m_signal, &m_previous, nullptr);
}

std::unique_ptr<SignalWatch> watchSignal(MainRunLoop& loop, int signal, std::function<void()> handler) {
    return std::make_unique<SignalWatch>(
        signal, [&loop, handler = std::move(handler)] { loop.postFromOutside(handler); });
}

} // namespace merro::platform::native
