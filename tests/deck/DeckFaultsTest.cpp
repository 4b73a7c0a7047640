#include "tests/deck/DeckFixture.h"

namespace merro::platform::deck {
namespace {

using testing::ElementsAre;

class DeckFaultsOnRequest : public DeckFixture {};

TEST_F(DeckFaultsOnRequest, lostFramesAreCountedAndTheSameInEveryRun) {
    settings.faults.framesLostPerMillion = 100'000;
    settings.faults.seed = 7;
    load(numberedTape(200));
    command(playing);
    letAllHappen();
    const auto first = receiver.numbers;
    EXPECT_LT(first.size(), 195U); // 20 of 200 on average
    EXPECT_GT(first.size(), 160U);
    EXPECT_EQ(deck->framesLost(), 200 - static_cast<std::int64_t>(first.size()));
    std::int64_t told = 0;
    for (const std::int64_t lost : receiver.lost)
        told += lost;
    EXPECT_GE(told, deck->framesLost() - 3); // those at the very end are told by nobody

    receiver.numbers.clear();
    load(numberedTape(200));
    command(playing);
    letAllHappen();
    EXPECT_EQ(receiver.numbers, first);

    receiver.numbers.clear();
    settings.faults.seed = 8;
    load(numberedTape(200));
    command(playing);
    letAllHappen();
    EXPECT_NE(receiver.numbers, first);
}

TEST_F(DeckFaultsOnRequest, theDeviceGoesAwayAndComesBackStopped) {
    std::vector<std::pair<bool, Moment>> connections;
    settings.faults.goesAwayAtFrame = 10;
    settings.faults.awayFor = 2s;
    settings.connectionChanged = [&](bool isConnected) {
        connections.emplace_back(isConnected, world.clock.now());
    };
    load(numberedTape(50));
    command(playing);
    letPass(1s);
    EXPECT_EQ(receiver.numbers, numbers(0, 9));
    EXPECT_FALSE(state());
    EXPECT_FALSE(deck->isOpen());
    EXPECT_TRUE(deck->open()); // an error
    command(playing);
    letAllHappen();
    EXPECT_THAT(connections, ElementsAre(std::pair(false, Moment(400ms)), std::pair(true, Moment(2400ms))));
    EXPECT_EQ(state(), stopped);
    EXPECT_FALSE(deck->open());
    command(playing);
    letAllHappen();
    EXPECT_EQ(receiver.numbers, numbers(0, 49));
}

TEST_F(DeckFaultsOnRequest, theDeviceMayBeGoneForGood) {
    settings.faults.goesAwayAtFrame = 10;
    settings.faults.awayFor = 0s;
    load(numberedTape(50));
    command(playing);
    letAllHappen();
    EXPECT_FALSE(state());
    EXPECT_EQ(receiver.numbers.size(), 10U);
}

TEST_F(DeckFaultsOnRequest, commandsAreLate) {
    settings.faults.commandDelay = 700ms;
    load(numberedTape(50));
    command(playing);
    letPass(699ms);
    EXPECT_EQ(state(), stopped);
    letPass(1ms);
    EXPECT_EQ(state(), playing);
}

TEST_F(DeckFaultsOnRequest, commandsAreIgnoredOrRefused) {
    settings.faults.commandsIgnoredPercent = 100;
    load(numberedTape(50));
    command(playing);
    letAllHappen();
    EXPECT_EQ(state(), stopped);
    EXPECT_EQ(deck->refusedCommands(), 0);

    settings.faults.commandsIgnoredPercent = 0;
    settings.faults.commandsRefusedPercent = 100;
    load(numberedTape(50));
    command(playing);
    letAllHappen();
    EXPECT_EQ(state(), stopped);
    EXPECT_EQ(deck->refusedCommands(), 1);
}

TEST(FaultDice, drawsAsOftenAsItWasAsked) {
    DeckFaults faults;
    faults.commandsIgnoredPercent = 20;
    faults.commandsRefusedPercent = 10;
    FaultDice dice(faults);
    int ignored = 0;
    int refused = 0;
    for (int i = 0; i < 10000; ++i) {
        const CommandFate fate = dice.fateOfNextCommand();
        ignored += fate == CommandFate::Ignored ? 1 : 0;
        refused += fate == CommandFate::Refused ? 1 : 0;
    }
    EXPECT_NEAR(ignored, 2000, 200); // five standard deviations
    EXPECT_NEAR(refused, 1000, 150);
}

TEST(FaultDescription, namesTheSeedAndWhatIsOn) {
    DeckFaults faults;
    EXPECT_EQ(describe(faults), "");
    faults.seed = 42;
    faults.framesLostPerMillion = 100;
    faults.goesAwayAtFrame = 250;
    faults.awayFor = 1500ms;
    faults.commandDelay = 300ms;
    faults.commandsIgnoredPercent = 5;
    faults.commandsRefusedPercent = 1;
    EXPECT_EQ(describe(faults),
              "seed 42, 100 frames of a million lost, gone at frame 250 for 1500 ms, commands 300 ms "
              "late, 5 % of commands ignored, 1 % of commands refused");
}

} // namespace
} // namespace merro::platform::deck
