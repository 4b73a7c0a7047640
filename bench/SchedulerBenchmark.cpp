// What waiting costs in virtual time, and what reading a setting costs per frame.
#include "platform/native/MemoryUserDefaults.h"
#include "platform/native/OverriddenUserDefaults.h"
#include "platform/virtualtime/ConditionLock.h"
#include "platform/virtualtime/RunLoop.h"
#include "platform/virtualtime/Scheduler.h"
#include "platform/virtualtime/Threads.h"

#include <benchmark/benchmark.h>

namespace {

using namespace merro::platform;
using namespace std::chrono_literals;

/// A thread that is alone, as the delivery thread of a deck mostly is.
void sleepWithNobodyElseDue(benchmark::State& state) {
    virtualtime::Scheduler scheduler;
    for (auto _ : state)
        scheduler.sleepFor(40ms);
    state.counters["switches"] = static_cast<double>(scheduler.switchCount());
}
BENCHMARK(sleepWithNobodyElseDue);

/// The same with a thread waiting for a lock and another sleeping far into the future.
void sleepBeforeOthersAreDue(benchmark::State& state) {
    virtualtime::Scheduler scheduler;
    virtualtime::Threads threads(scheduler);
    const auto lock = threads.makeConditionLock(0);
    threads.detach("waits", [&] {
        lock->lockWhenCondition(1);
        lock->unlock();
    });
    threads.detach("sleeps", [&] { scheduler.sleepFor(24h * 365 * 200); });
    scheduler.sleepFor(1ns);
    for (auto _ : state)
        scheduler.sleepFor(40ms);
    lock->lock();
    lock->unlockWithCondition(1);
    scheduler.waitForThreads();
}
BENCHMARK(sleepBeforeOthersAreDue);

/// Two threads that wake in turns: two switches an iteration.
void sleepInTurns(benchmark::State& state) {
    virtualtime::Scheduler scheduler;
    virtualtime::Threads threads(scheduler);
    bool isDone = false;
    threads.detach("other", [&] {
        while (!isDone)
            scheduler.sleepFor(40ms);
    });
    for (auto _ : state)
        scheduler.sleepFor(40ms);
    isDone = true;
    scheduler.waitForThreads();
}
BENCHMARK(sleepInTurns);

void readSetting(benchmark::State& state) {
    native::MemoryUserDefaults defaults({{"detectScene", true},
                                         {"nbDropFrame", 0},
                                         {"detectEndTape", false},
                                         {"detectEndTapeSecond", 1},
                                         {"actionAfterRecord", 2},
                                         {"frameSampling", true},
                                         {"sampleInterval", 1},
                                         {"captureMovie", true}});
    for (auto _ : state)
        benchmark::DoNotOptimize(defaults.boolForKey("detectScene"));
}
BENCHMARK(readSetting);

void readSettingThroughTheOptionsOfARun(benchmark::State& state) {
    native::MemoryUserDefaults base({{"detectScene", true}, {"captureMovie", true}});
    native::OverriddenUserDefaults defaults(base);
    defaults.overrideObjectForKey(false, "captureMovie");
    for (auto _ : state)
        benchmark::DoNotOptimize(defaults.boolForKey("detectScene"));
}
BENCHMARK(readSettingThroughTheOptionsOfARun);

} // namespace
