// What a program does on SIGINT and its like.
#pragma once

#include "platform/MainRunLoop.h"
#include "platform/native/DescriptorWatch.h"
#include "platform/native/Wakeup.h"

#include <csignal>
#include <functional>
#include <memory>

namespace merro::platform::native {

/// Handles `signal` while it lives; afterwards the signal does what it did before. One watch a signal at a
/// time, made and ended on one thread. `handler` is an ordinary function, called on a thread of the watch's
/// own once for one or more signals that came close together.
class SignalWatch {
public:
    SignalWatch(int signal, std::function<void()> handler);
    ~SignalWatch();
    SignalWatch(const SignalWatch&) = delete;
    SignalWatch& operator=(const SignalWatch&) = delete;

private:
    const int m_signal;
    const Wakeup& m_arrived;
    DescriptorWatch m_watch;
    struct sigaction m_previous {};
};

/// The same with `handler` called on the main thread, in real or virtual time. `loop` outlives the watch.
[[nodiscard]] std::unique_ptr<SignalWatch> watchSignal(MainRunLoop& loop, int signal,
                                                       std::function<void()> handler);

} // namespace merro::platform::native
