#include "platform/deck/DVFrameBuilder.h"
#include "tests/deck/DeckFixture.h"

namespace merro::platform::deck {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;

class DeckDelivery : public DeckFixture {};

FrameBytes stamped(DVSystem system, int minute, int second, int frame) {
    DVFrameBuilder builder(system);
    SMPTETime timecode;
    timecode.mMinutes = static_cast<std::int16_t>(minute);
    timecode.mSeconds = static_cast<std::int16_t>(second);
    timecode.mFrames = static_cast<std::int16_t>(frame);
    builder.setTimecode(timecode);
    return builder.frame();
}

TEST_F(DeckDelivery, playDeliversEveryFrameOnceInOrderAtItsTime) {
    load(numberedTape(100));
    letPass(2s);
    command(playing);
    letAllHappen();
    EXPECT_EQ(receiver.numbers, numbers(0, 99));
    for (std::size_t i = 0; i < receiver.moments.size(); ++i)
        ASSERT_EQ(receiver.moments[i], 2s + 40ms * i);
    EXPECT_THAT(receiver.lost, Each(0));
    EXPECT_EQ(deck->framesLost(), 0);
}

TEST_F(DeckDelivery, framesOf525LinesTake1001ThirtyThousandthsOfASecondWithoutDrift) {
    auto tape = std::make_unique<MemoryTape>();
    const FrameBytes frame = DVFrameBuilder(DVSystem::System525_60).frame();
    for (int i = 0; i < 30001; ++i)
        tape->append(frame);
    load(std::move(tape));
    command(playing);
    letAllHappen();
    ASSERT_EQ(receiver.moments.size(), 30001U);
    EXPECT_EQ(receiver.moments[1], Moment(33'366'667)); // 33366666.67
    EXPECT_EQ(receiver.moments[2], Moment(66'733'334)); // 66733333.33
    EXPECT_EQ(receiver.moments[3], Moment(100'100'000));
    EXPECT_EQ(receiver.moments[30000], 1001s);
}

TEST_F(DeckDelivery, aChangeOfSystemOnTheWayChangesTheFramePeriod) {
    auto tape = std::make_unique<MemoryTape>();
    for (const DVSystem system :
         {DVSystem::System625_50, DVSystem::System525_60, DVSystem::System525_60, DVSystem::System625_50})
        tape->append(DVFrameBuilder(system).frame());
    load(std::move(tape));
    command(playing);
    letAllHappen();
    EXPECT_THAT(receiver.moments,
                ElementsAre(0ms, 40ms, 40ms + Moment(33'366'667), 40ms + Moment(66'733'334)));
}

TEST_F(DeckDelivery, eachFrameIsDeliveredOnceThoughTheTapeIsPausedInTheMiddleOfOne) {
    load(numberedTape(20));
    command(playing);
    letPass(410ms);
    command(paused);
    letPass(3s);
    EXPECT_EQ(receiver.numbers, numbers(0, 10));
    command(playing);
    letAllHappen();
    EXPECT_EQ(receiver.numbers, numbers(0, 19));
}

TEST_F(DeckDelivery, framesThatPassWhileTheReceiverIsBusyAreLostAndCountedInTheNextCall) {
    load(numberedTape(200));
    receiver.then = [this](int number) {
        if (number == 10)
            letPass(4s); // 100 frames: 11 to 109 pass wholly, 110 begins
    };
    command(playing);
    letAllHappen();
    ASSERT_GT(receiver.numbers.size(), 12U);
    EXPECT_EQ(receiver.numbers[11], 110);
    EXPECT_EQ(receiver.lost[11], 99);
    EXPECT_EQ(receiver.moments[11], 4400ms);
    EXPECT_EQ(receiver.lost[12], 0);
    EXPECT_EQ(deck->framesLost(), 99);
}

TEST_F(DeckDelivery, aFrameThatIsStillPassingWhenTheReceiverReturnsIsDeliveredLate) {
    load(numberedTape(10));
    receiver.then = [this](int number) {
        if (number == 3)
            letPass(50ms);
    };
    command(playing);
    letAllHappen();
    EXPECT_EQ(receiver.numbers, numbers(0, 9));
    EXPECT_EQ(receiver.moments[4], 170ms);
    EXPECT_EQ(receiver.moments[5], 200ms);
    EXPECT_EQ(deck->framesLost(), 0);
}

TEST_F(DeckDelivery, theLastFrameTellsOfThoseLostBeforeItThoughTheReceiverWasBusyBeyondTheEnd) {
    load(numberedTape(20));
    receiver.then = [this](int number) {
        if (number == 5)
            letPass(10s);
    };
    command(playing);
    letAllHappen();
    EXPECT_THAT(receiver.numbers, ElementsAre(0, 1, 2, 3, 4, 5, 19));
    EXPECT_EQ(receiver.lost.back(), 13); // 6 to 18
    EXPECT_EQ(state(), stopped);
}

TEST_F(DeckDelivery, searchDeliversTheFrameUnderTheHeadAtTheDeliveryRate) {
    load(numberedTape(100));
    command({13000, 1}); // five times
    letAllHappen();
    EXPECT_EQ(receiver.numbers, numbers(0, 95, 5));
    EXPECT_EQ(receiver.moments[19], 40ms * 19);
    EXPECT_EQ(deck->framesLost(), 0);
}

TEST_F(DeckDelivery, slowMotionRepeatsFrames) {
    load(numberedTape(3));
    command({7000, 1}); // a half
    letAllHappen();
    EXPECT_THAT(receiver.numbers, ElementsAre(0, 0, 1, 1, 2, 2));
}

TEST_F(DeckDelivery, playingBackwardsDeliversTheFramesInReverseDownToTheFirst) {
    load(numberedTape(100));
    command(playing);
    letPass(990ms);
    command({-10000, 1}); // three quarters into frame 24
    letAllHappen();
    std::vector<int> expected = numbers(0, 24);
    for (const int number : numbers(24, 0, -1))
        expected.push_back(number);
    EXPECT_EQ(receiver.numbers, expected);
    EXPECT_EQ(state(), stopped);
}

TEST_F(DeckDelivery, windingDeliversNothingAndPlayGoesOnWhereItStopped) {
    load(numberedTape(200));
    command({13000, 0}); // thirty times
    letPass(100ms);      // 75 frames
    EXPECT_THAT(receiver.numbers, IsEmpty());
    command(playing);
    letPass(50ms);
    EXPECT_THAT(receiver.numbers, ElementsAre(75, 76));
}

TEST_F(DeckDelivery, blankTapeDeliversNothingAndIsNoLoss) {
    auto tape = numberedTape(3);
    tape->appendBlank(50);
    tape->append(FrameBytes::taking({99}));
    load(std::move(tape));
    command(playing);
    letAllHappen();
    EXPECT_THAT(receiver.numbers, ElementsAre(0, 1, 2, 99));
    EXPECT_EQ(receiver.moments.back(), 40ms * 53);
    EXPECT_EQ(receiver.lost.back(), 0);
}

TEST_F(DeckDelivery, aFrameCarriesItsTimecodeAndSaysWhetherItRunsOn) {
    auto tape = std::make_unique<MemoryTape>();
    const DVSystem pal = DVSystem::System625_50;
    tape->append(stamped(pal, 0, 0, 23));
    tape->append(stamped(pal, 0, 0, 24));
    tape->append(stamped(pal, 0, 1, 0));
    tape->append(stamped(pal, 0, 5, 0));       // jump
    tape->append(DVFrameBuilder(pal).frame()); // none
    tape->append(DVFrameBuilder(pal).frame());
    tape->append(stamped(pal, 0, 5, 1)); // again
    load(std::move(tape));
    command(playing);
    letAllHappen();
    EXPECT_THAT(receiver.breaks, ElementsAre(false, false, false, true, true, false, true));
}

TEST_F(DeckDelivery, dropFrameCountingRunsOnAndALostFrameDoesNot) {
    auto tape = std::make_unique<MemoryTape>();
    tape->append(stamped(DVSystem::System525_60, 0, 59, 29));
    tape->append(stamped(DVSystem::System525_60, 1, 0, 2));
    tape->append(stamped(DVSystem::System525_60, 1, 0, 4));
    load(std::move(tape));
    command(playing);
    letAllHappen();
    EXPECT_THAT(receiver.breaks, ElementsAre(false, false, true));
}

TEST_F(DeckDelivery, whoeverReceivesLaterGetsTheFramesFromThenOn) {
    load(numberedTape(50));
    deck->setReceiver(nullptr);
    command(playing);
    letPass(1s);
    EXPECT_THAT(receiver.numbers, IsEmpty());
    EXPECT_EQ(deck->position().frameIndex, 25);
    letPass(10ms);
    deck->setReceiver(&receiver);
    letAllHappen();
    EXPECT_EQ(receiver.numbers, numbers(26, 49));
    EXPECT_EQ(deck->framesLost(), 0);
}

TEST_F(DeckDelivery, onceWaitForReceiverReturnsTheOldReceiverIsNotBeingCalled) {
    load(numberedTape(50));
    bool returned = false;
    receiver.then = [&](int) {
        letPass(1s);
        returned = true;
    };
    command(playing);
    letPass(500ms);
    deck->setReceiver(nullptr);
    deck->waitForReceiver();
    EXPECT_TRUE(returned);
    EXPECT_EQ(receiver.numbers.size(), 1U);
}

TEST_F(DeckDelivery, theDeckMayBeLetGoOfWhileItPlaysAndWithinACall) {
    load(numberedTape(50));
    command(playing);
    letPass(500ms);
    deck.reset();
    const auto received = receiver.numbers.size();
    letPass(1s);
    EXPECT_EQ(receiver.numbers.size(), received);

    load(numberedTape(50));
    receiver.then = [this](int) { deck.reset(); };
    command(playing);
    letAllHappen();
    EXPECT_EQ(receiver.numbers.size(), received + 1);
}

/// Knows its length only when its end has been read, and guesses wrong before.
class GuessingTape : public Tape {
public:
    explicit GuessingTape(std::int64_t guess) : m_guess(guess) {}
    std::optional<TapeFrame> frameAt(std::int64_t index) override {
        m_isRead = m_isRead || index >= m_frames->frameCount();
        auto frame = m_frames->frameAt(index);
        if (frame)
            frame->offsetBytes = index * 1000;
        return frame;
    }
    [[nodiscard]] std::int64_t frameCount() const override {
        return m_isRead ? m_frames->frameCount() : m_guess;
    }
    [[nodiscard]] bool isFrameCountExact() const override { return m_isRead; }

private:
    std::int64_t m_guess;
    bool m_isRead = false;
    std::unique_ptr<MemoryTape> m_frames = numberedTape(100);
};

TEST_F(DeckDelivery, aWrongGuessAtTheLengthOfTheTapeMovesNeitherFrameNorEnd) {
    for (const std::int64_t guess : {10, 100, 500}) {
        receiver.numbers.clear();
        load(std::make_unique<GuessingTape>(guess));
        const Moment start = world.clock.now();
        command(playing);
        letAllHappen();
        EXPECT_EQ(receiver.numbers, numbers(0, 99));
        EXPECT_EQ(world.clock.now() - start, 4s);
        EXPECT_EQ(deck->position().frameCount, 100);
        EXPECT_TRUE(deck->position().isFrameCountExact);
    }
}

TEST_F(DeckDelivery, aWindPassesAWrongGuessAndStopsAtTheEnd) {
    load(std::make_unique<GuessingTape>(10));
    command({13000, 0});
    letAllHappen();
    EXPECT_EQ(state(), stopped);
    command({-10000, 1});
    letPass(1ms);
    EXPECT_THAT(receiver.numbers, ElementsAre(99));
}

TEST_F(DeckDelivery, thePositionIsThatOfTheFrameDeliveredLast) {
    load(std::make_unique<GuessingTape>(500));
    EXPECT_EQ(deck->position().frameCount, 500);
    EXPECT_FALSE(deck->position().isFrameCountExact);
    command(playing);
    letPass(410ms);
    EXPECT_EQ(deck->position().frameIndex, 10);
    EXPECT_EQ(deck->position().offsetBytes, 10000);
}

} // namespace
} // namespace merro::platform::deck
