// The main thread's run loop as the program that owns the main thread sees it: the same for a program in real
// time and for one in virtual time.
//
// The thread that makes the loop is the main thread; it keeps the loop alive longer than anything that posts
// to it. Functions and timers run on that thread alone, ordered by when they are due and then by when they
// were asked for.
#pragma once

#include "platform/RunLoop.h"

#include <atomic>
#include <compare>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace merro::platform {

/// When something is to happen. Of two things due at one moment, the lower `order` goes first.
struct Due {
    Moment moment{};
    std::uint64_t order = 0;
    friend auto operator<=>(const Due&, const Due&) = default; // NOLINT(modernize-use-nullptr)
};

class MainRunLoop : public RunLoop {
public:
    MainRunLoop();
    ~MainRunLoop() override;
    MainRunLoop(const MainRunLoop&) = delete;
    MainRunLoop& operator=(const MainRunLoop&) = delete;

    void post(std::function<void()> function) override;
    std::shared_ptr<Timer> scheduleTimer(Duration interval, Repeats repeats, std::set<RunLoopMode> modes,
                                         std::function<void()> action) override;
    [[nodiscard]] bool isMainThread() const override { return std::this_thread::get_id() == m_mainThread; }

    /// Serves functions and timers of the default mode until stop. True after a stop; false when nothing can
    /// ever happen again (only in virtual time: nothing is waiting, due or held). Main thread.
    [[nodiscard]] bool run() { return serve(RunLoopMode::Default, {}); }

    /// The same from within a function or timer, in another mode, until `isFinished` says so: it is asked
    /// before each function and timer, and whenever the loop is woken. True when finished; false when stopped
    /// before, or when nothing can ever happen again. Main thread.
    [[nodiscard]] bool runInMode(RunLoopMode mode, const std::function<bool()>& isFinished) {
        return serve(mode, isFinished);
    }

    /// Ends what runs of the loop, nested ones too, after the function or timer at hand. A loop that is not
    /// running will end its next run at once. Any thread.
    void stop();

    /// post, from a thread that knows nothing of these surroundings (a file writer, a signal watcher). The
    /// same as post; the name says at the call that in virtual time the moment is not repeatable. Any thread.
    void postFromOutside(std::function<void()> function) { post(std::move(function)); }

    /// While the answer lives, work is under way outside that will end with postFromOutside: virtual time
    /// waits for it in real time before it says that nothing can happen any more. Any thread; the last
    /// reference may go on any thread.
    [[nodiscard]] virtual std::shared_ptr<void> holdForOutsideWork() = 0;

protected:
    [[nodiscard]] virtual Moment now() const = 0;

    /// An order after all earlier ones (or shuffled among them, on request). Any thread.
    [[nodiscard]] virtual std::uint64_t nextOrder() = 0;

    /// Makes the wait under way, or the next one, return. Any thread.
    virtual void wakeUp() = 0;

    enum class Waited {
        UntilDue,
        UntilWoken,
        ForNothing, ///< neither can ever happen
    };

    /// Blocks the main thread until it is the turn of what is `due` (never when there is none), or until
    /// woken.
    [[nodiscard]] virtual Waited waitUntil(const std::optional<Due>& due) = 0;

private:
    class ScheduledTimer;
    struct Posted {
        Due due;
        std::function<void()> function;
    };

    [[nodiscard]] bool serve(RunLoopMode mode, const std::function<bool()>& isFinished);
    [[nodiscard]] std::optional<Due> firstDue(RunLoopMode mode);
    void runNext(RunLoopMode mode);
    [[nodiscard]] std::optional<Due> firstPosted();
    [[nodiscard]] std::shared_ptr<ScheduledTimer> firstTimer(RunLoopMode mode);
    void runFirstPosted();
    void fire(const std::shared_ptr<ScheduledTimer>& timer);

    const std::thread::id m_mainThread = std::this_thread::get_id();
    std::atomic<bool> m_isStopping = false;
    int m_depth = 0;                                       ///< main thread
    std::vector<std::shared_ptr<ScheduledTimer>> m_timers; ///< main thread

    std::mutex m_mutex; ///< guards m_posted
    std::deque<Posted> m_posted;
};

} // namespace merro::platform
