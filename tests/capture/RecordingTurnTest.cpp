#include "capture/RecordingTurn.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace merro {
namespace {

TEST(RecordingTurn, workRunsAtOnceWhenTheTurnIsFree) {
    RecordingTurn turn;
    bool ran = false;
    turn.enterOrDefer([&] { ran = true; });
    EXPECT_TRUE(ran);
}

TEST(RecordingTurn, workThatComesWhileTheTurnIsHeldRunsOnTheHoldersThreadWhenHeIsDone) {
    RecordingTurn turn;
    std::string order;
    std::thread::id ranOn;
    {
        const auto held = turn.tryEnter();
        ASSERT_TRUE(held);
        std::thread([&] {
            turn.enterOrDefer([&] {
                order += "deferred ";
                ranOn = std::this_thread::get_id();
            });
        }).join();
        order += "held ";
    }
    EXPECT_EQ(order, "held deferred ");
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST(RecordingTurn, workFromWithinWorkRunsAfterItInTheOrderOfTheCalls) {
    RecordingTurn turn;
    std::string order;
    turn.enterOrDefer([&] {
        turn.enterOrDefer([&] { order += "second "; });
        turn.enterOrDefer([&] { order += "third "; });
        order += "first ";
    });
    EXPECT_EQ(order, "first second third ");
}

TEST(RecordingTurn, aTurnThatIsHeldCannotBeTakenAndNobodyWaits) {
    RecordingTurn turn;
    {
        const auto held = turn.tryEnter();
        EXPECT_FALSE(turn.tryEnter());
    }
    EXPECT_TRUE(turn.tryEnter());
}

TEST(RecordingTurn, workBetweenTurnsRunsAtOnceOrWhenTheTurnIsGivenUp) {
    RecordingTurn turn;
    int runs = 0;
    turn.runBetweenTurns([&] { ++runs; });
    EXPECT_EQ(runs, 1);
    {
        const auto held = turn.tryEnter();
        turn.runBetweenTurns([&] { ++runs; });
        EXPECT_EQ(runs, 1);
    }
    EXPECT_EQ(runs, 2);
    EXPECT_TRUE(turn.tryEnter());
}

TEST(RecordingTurn, aTurnThatSomebodyWaitsForCannotBeTaken) {
    RecordingTurn turn;
    bool ran = false;
    turn.defer([&] { ran = true; });
    EXPECT_FALSE(turn.tryEnter());
    EXPECT_FALSE(ran);
    turn.runDeferred();
    EXPECT_TRUE(ran);
    EXPECT_TRUE(turn.tryEnter());
}

} // namespace
} // namespace merro
