// What every Clock promises.
#include "tests/platform/Worlds.h"

#include <atomic>

namespace merro::platform {
namespace {

using namespace std::chrono_literals;

template <typename World>
class ClockContract : public testing::Test {
protected:
    World m_world;
};
TYPED_TEST_SUITE(ClockContract, Worlds, WorldNames);

TYPED_TEST(ClockContract, timeDoesNotGoBack) {
    auto& clock = this->m_world.clock;
    Moment last = clock.now();
    EXPECT_GE(last, Moment::zero());
    for (int i = 0; i < 100; ++i) {
        clock.sleepFor(1us);
        EXPECT_GT(clock.now(), last);
        last = clock.now();
    }
}

TYPED_TEST(ClockContract, aSleepLastsAtLeastAsLongAsAskedFor) {
    auto& clock = this->m_world.clock;
    const Moment start = clock.now();
    clock.sleepFor(3ms);
    EXPECT_GE(clock.now() - start, 3ms);
}

TYPED_TEST(ClockContract, aSleepOfNoOrNegativeLengthReturns) {
    auto& clock = this->m_world.clock;
    clock.sleepFor(0ns);
    clock.sleepFor(-1h);
    clock.sleepFor(Duration::min());
}

TYPED_TEST(ClockContract, aSleepBlocksOnlyItsOwnThread) {
    auto& world = this->m_world;
    std::atomic<bool> isAwake = false;
    std::atomic<bool> mayWake = false;
    world.threads.detach("sleeper", [&] {
        do {
            world.clock.sleepFor(1ms);
        } while (!mayWake);
        isAwake = true;
    });
    world.clock.sleepFor(5ms);
    EXPECT_FALSE(isAwake);
    mayWake = true;
    while (!isAwake)
        world.clock.sleepFor(1ms);
}

TYPED_TEST(ClockContract, allThreadsSeeTheSameTime) {
    auto& world = this->m_world;
    world.clock.sleepFor(1ms);
    const Moment before = world.clock.now();
    std::atomic<Moment::rep> seen = -1;
    world.threads.detach("reader", [&] { seen = world.clock.now().count(); });
    while (seen < 0)
        world.clock.sleepFor(1ms);
    EXPECT_GE(Moment(seen), before);
    EXPECT_LE(Moment(seen), world.clock.now());
}

} // namespace
} // namespace merro::platform
