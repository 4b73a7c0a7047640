#include "capture/EndOfTapeTimer.h"

#include "capture/CaptureDefaults.h"

#include <algorithm>

namespace merro {

namespace {

platform::Duration seconds(std::int64_t count) {
    constexpr std::int64_t kLongest = 1'000'000'000; // 31 years, and no overflow in nanoseconds
    return std::chrono::seconds(std::clamp<std::int64_t>(count, 0, kLongest));
}

} // namespace

/// What functions that wait on the main run loop hold weakly, so that they find out when the owner is gone.
struct EndOfTapeTimer::Pending : std::enable_shared_from_this<Pending> {
    Pending(platform::RunLoop& loop, const platform::UserDefaults& settings, std::function<void()> stop)
        : runLoop(loop), defaults(settings), stopCapture(std::move(stop)) {}

    void launch();
    void fire(std::uint64_t launchedAt);
    void invalidate();

    platform::RunLoop& runLoop;
    const platform::UserDefaults& defaults;
    std::function<void()> stopCapture;
    std::shared_ptr<platform::Timer> detectEndTimer; // main thread
    std::atomic<std::uint64_t> cancellations = 0;
};

void EndOfTapeTimer::Pending::launch() {
    invalidate();
    const auto action = [weak = weak_from_this(), now = cancellations.load()] {
        if (const auto self = weak.lock())
            self->fire(now);
    };
    detectEndTimer =
        runLoop.scheduleTimer(seconds(defaults.integerForKey(BXMCDetectEndTapeSecond)), platform::Repeats::No,
                              {platform::RunLoopMode::Default, platform::RunLoopMode::ModalPanel,
                               platform::RunLoopMode::EventTracking},
                              action);
}

void EndOfTapeTimer::Pending::fire(std::uint64_t launchedAt) {
    detectEndTimer.reset();
    if (launchedAt == cancellations)
        stopCapture();
}

void EndOfTapeTimer::Pending::invalidate() {
    if (const auto timer = std::exchange(detectEndTimer, nullptr))
        timer->invalidate();
}

EndOfTapeTimer::EndOfTapeTimer(platform::RunLoop& runLoop, const platform::UserDefaults& defaults,
                               std::function<void()> stopCapture)
    : m_runLoop(runLoop), m_pending(std::make_shared<Pending>(runLoop, defaults, std::move(stopCapture))) {}

EndOfTapeTimer::~EndOfTapeTimer() {
    m_pending->invalidate();
}

void EndOfTapeTimer::requestLaunch() {
    m_runLoop.post([weak = std::weak_ptr(m_pending), asked = m_pending->cancellations.load()] {
        if (const auto pending = weak.lock(); pending && pending->cancellations == asked)
            pending->launch();
    });
}

void EndOfTapeTimer::launchStopCaptureTimer() {
    m_pending->launch();
}

void EndOfTapeTimer::cancel() {
    ++m_pending->cancellations;
    if (m_runLoop.isMainThread()) {
        m_pending->invalidate();
        return;
    }
    m_runLoop.post([weak = std::weak_ptr(m_pending), cancelled = m_pending->cancellations.load()] {
        if (const auto pending = weak.lock(); pending && pending->cancellations == cancelled)
            pending->invalidate();
    });
}

} // namespace merro
