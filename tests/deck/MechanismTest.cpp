#include "platform/deck/Mechanism.h"

#include <gtest/gtest.h>

namespace merro::platform::deck {
namespace {

using namespace std::chrono_literals;

constexpr TransportState stopped{0, 0};
constexpr TransportState paused{0, 1};
constexpr TransportState playing{10000, 1};
constexpr TransportState backwards{-10000, 1};
constexpr TransportState windingOn{13000, 0};
constexpr TransportState windingBack{-13000, 0};

Mechanism ideal(std::optional<std::int64_t> length = 1000) {
    Mechanism mechanism(MechanismSettings::ideal());
    mechanism.setTapeLength(length);
    return mechanism;
}

TEST(Mechanism, standsStoppedAtTheStartOfTheTape) {
    const Mechanism mechanism = ideal();
    EXPECT_EQ(mechanism.state(), stopped);
    EXPECT_EQ(mechanism.frameUnderHead(5s), 0);
    EXPECT_FALSE(mechanism.nextChange());
    EXPECT_FALSE(mechanism.momentOfFrame(1));
}

TEST(Mechanism, playsTwentyFiveFramesASecond) {
    Mechanism mechanism = ideal();
    mechanism.command(1s, playing);
    EXPECT_EQ(mechanism.momentOfFrame(0), 1s);
    EXPECT_EQ(mechanism.momentOfFrame(1), 1040ms);
    EXPECT_EQ(mechanism.frameUnderHead(1039ms), 0);
    EXPECT_EQ(mechanism.frameUnderHead(1040ms), 1);
    EXPECT_EQ(mechanism.momentOfFrame(250), 11s);
}

TEST(Mechanism, plays30000FramesOf525LinesInExactly1001Seconds) {
    Mechanism mechanism = ideal(40000);
    mechanism.setFramePeriod(0s, FramePeriod::System525);
    mechanism.command(0s, playing);
    // 33366666.67 ns, the first whole nanosecond after it
    EXPECT_EQ(mechanism.momentOfFrame(1), Moment(33'366'667));
    EXPECT_EQ(mechanism.momentOfFrame(3), Moment(100'100'000));
    EXPECT_EQ(mechanism.momentOfFrame(30000), 1001s);
}

TEST(Mechanism, aChangeOfSystemTakesPlaceWhereTheFrameBegins) {
    Mechanism mechanism = ideal();
    mechanism.command(0s, playing);
    mechanism.setFramePeriod(*mechanism.momentOfFrame(10), FramePeriod::System525);
    EXPECT_EQ(mechanism.momentOfFrame(10), 400ms);
    EXPECT_EQ(mechanism.momentOfFrame(13), 400ms + Moment(100'100'000));
    mechanism.setFramePeriod(*mechanism.momentOfFrame(11), FramePeriod::System625);
    // frame 11 begins at 433366666.67 ns, frame 14 three times 40 ms later
    EXPECT_EQ(mechanism.momentOfFrame(14), Moment(553'366'667));
}

TEST(Mechanism, goesOnFromWhereItWasPaused) {
    Mechanism mechanism = ideal();
    mechanism.command(0s, playing);
    mechanism.command(410ms, paused); // a quarter into frame 10
    EXPECT_EQ(mechanism.state(), paused);
    EXPECT_EQ(mechanism.frameUnderHead(9s), 10);
    mechanism.command(9s, playing);
    EXPECT_EQ(mechanism.firstFrameFrom(9s), 11);
    EXPECT_EQ(mechanism.momentOfFrame(11), 9030ms);
}

TEST(Mechanism, readsTheFrameBeforeWhenItTurnsRoundAtTheStartOfAFrame) {
    Mechanism mechanism = ideal();
    mechanism.command(0s, playing);
    mechanism.command(2s, backwards); // at the start of frame 50
    EXPECT_EQ(mechanism.frameUnderHead(2s), 49);
    EXPECT_EQ(mechanism.frameUnderHead(2039ms), 49);
    EXPECT_EQ(mechanism.frameUnderHead(2040ms), 48);
    EXPECT_EQ(mechanism.frameUnderHead(3s), 24);
}

TEST(Mechanism, slowerStepsTakeTheirFractionOfTheSpeed) {
    Mechanism mechanism = ideal();
    mechanism.command(0s, {7000, 1}); // a half
    EXPECT_EQ(mechanism.momentOfFrame(25), 2s);
    mechanism.command(2s, {-4000, 1}); // a fifth, back
    EXPECT_EQ(mechanism.frameUnderHead(3s), 19);
    mechanism.command(3s, {1000, 1}); // a tenth
    EXPECT_EQ(mechanism.frameUnderHead(5s), 25);
}

TEST(Mechanism, theSameStepWindsFasterWithoutPictureThanWithIt) {
    Mechanism mechanism = ideal(100000);
    mechanism.command(0s, {13000, 1});
    EXPECT_EQ(mechanism.frameUnderHead(1s), 125); // 5 times
    mechanism.command(1s, windingOn);
    EXPECT_EQ(mechanism.frameUnderHead(2s), 875); // 30 times
}

TEST(Mechanism, stopsAtTheEndOfTheTapeAtTheMomentItGetsThere) {
    Mechanism mechanism = ideal(100);
    mechanism.command(1s, playing);
    EXPECT_EQ(mechanism.nextChange(), 5s);
    mechanism.advance(4999ms);
    EXPECT_EQ(mechanism.state(), playing);
    mechanism.advance(5s);
    EXPECT_EQ(mechanism.state(), stopped);
    EXPECT_EQ(mechanism.frameUnderHead(9s), 100);
    EXPECT_EQ(mechanism.changeCount(), 2);
}

TEST(Mechanism, stopsAtTheStartOfTheTape) {
    Mechanism mechanism = ideal(100);
    mechanism.command(0s, playing);
    mechanism.command(3s, windingBack); // 75 frames at 30 times the speed: 100 ms
    EXPECT_EQ(mechanism.nextChange(), 3100ms);
    mechanism.advance(4s);
    EXPECT_EQ(mechanism.state(), stopped);
    EXPECT_EQ(mechanism.frameUnderHead(4s), 0);
}

TEST(Mechanism, aWindAtTheStartOfTheTapeStopsAgainSoThatWhoWaitsForItHears) {
    Mechanism mechanism = ideal();
    mechanism.command(1s, windingBack);
    EXPECT_EQ(mechanism.state(), stopped);
    EXPECT_EQ(mechanism.changeCount(), 2);
}

TEST(Mechanism, aTapeOfUnknownLengthRunsOnAndHasStoppedWhereItsEndIsFound) {
    Mechanism mechanism = ideal(std::nullopt);
    mechanism.command(0s, playing);
    mechanism.advance(4s);
    EXPECT_EQ(mechanism.state(), playing);
    mechanism.setTapeLength(100);
    EXPECT_EQ(mechanism.nextChange(), 4s);
    mechanism.advance(4s);
    EXPECT_EQ(mechanism.state(), stopped);
}

TEST(Mechanism, aCommandForTheStateItIsInChangesNothing) {
    Mechanism mechanism = ideal();
    mechanism.command(0s, playing);
    const auto motions = mechanism.motionCount();
    mechanism.command(410ms, playing);
    EXPECT_EQ(mechanism.motionCount(), motions);
    EXPECT_EQ(mechanism.changeCount(), 1);
}

TEST(Mechanism, takesASpeedThatIsNoStepAsTheNearest) {
    const auto stateFor = [](std::int64_t speed) {
        Mechanism mechanism(MechanismSettings::ideal()); // of unknown length, in the middle of the tape
        mechanism.command(0s, playing);
        mechanism.command(60s, {speed, 7});
        return mechanism.state();
    };
    EXPECT_EQ(stateFor(12000), (TransportState{13000, 1}));
    EXPECT_EQ(stateFor(11000), playing);
    EXPECT_EQ(stateFor(99999), (TransportState{19000, 1}));
    EXPECT_EQ(stateFor(-100), (TransportState{-1000, 1}));
    EXPECT_EQ(stateFor(-8000), (TransportState{-7000, 1}));
    EXPECT_EQ(stateFor(0), paused);
}

TEST(Mechanism, threadsTheTapeBeforeItPlays) {
    Mechanism mechanism((MechanismSettings()));
    mechanism.command(1s, playing);
    EXPECT_EQ(mechanism.nextChange(), 1080ms); // reaction
    mechanism.advance(2579ms);
    EXPECT_EQ(mechanism.state(), stopped);
    EXPECT_FALSE(mechanism.moves());
    mechanism.advance(2580ms); // 1.5 s of threading later
    EXPECT_EQ(mechanism.state(), playing);
    EXPECT_EQ(mechanism.motionStart(), 2580ms);
    EXPECT_EQ(mechanism.momentOfFrame(1), 2620ms);
}

TEST(Mechanism, theTapeGoesOnUntilTheMechanismReactsAndStandsWhileItChanges) {
    Mechanism mechanism((MechanismSettings()));
    mechanism.command(0s, playing); // at 1.58 s
    mechanism.advance(2s);
    mechanism.command(2s, paused);
    mechanism.advance(2079ms);
    EXPECT_TRUE(mechanism.moves());
    mechanism.advance(2080ms);
    EXPECT_FALSE(mechanism.moves());
    EXPECT_EQ(mechanism.state(), playing); // not there yet
    mechanism.advance(2230ms);
    EXPECT_EQ(mechanism.state(), paused);
    EXPECT_EQ(mechanism.frameUnderHead(3s), 12); // 0.5 s of play
}

TEST(Mechanism, aLaterCommandTakesThePlaceOfOneThatIsNotCarriedOutYet) {
    Mechanism mechanism((MechanismSettings()));
    mechanism.command(0s, playing);
    mechanism.command(50ms, windingOn);
    mechanism.advance(10s);
    EXPECT_EQ(mechanism.state(), windingOn);
    EXPECT_EQ(mechanism.motionStart(), 50ms + 80ms + 700ms);
    EXPECT_EQ(mechanism.changeCount(), 1);
}

TEST(Mechanism, aCommandWhileTheTapeIsThreadedIsObeyedFromThere) {
    Mechanism mechanism((MechanismSettings()));
    mechanism.command(0s, playing);
    mechanism.command(1s, stopped);
    mechanism.advance(10s);
    EXPECT_EQ(mechanism.state(), stopped);
    EXPECT_EQ(mechanism.changeCount(), 0);
    EXPECT_FALSE(mechanism.nextChange());
}

TEST(Mechanism, aDelayedCommandIsObeyedSoMuchLater) {
    Mechanism mechanism = ideal();
    mechanism.command(0s, playing, 2s);
    mechanism.advance(1999ms);
    EXPECT_EQ(mechanism.state(), stopped);
    mechanism.advance(2s);
    EXPECT_EQ(mechanism.state(), playing);
}

TEST(Mechanism, haltsWhereItIs) {
    Mechanism mechanism = ideal();
    mechanism.command(0s, playing);
    mechanism.halt(1s);
    EXPECT_EQ(mechanism.state(), stopped);
    EXPECT_EQ(mechanism.frameUnderHead(9s), 25);
}

} // namespace
} // namespace merro::platform::deck
