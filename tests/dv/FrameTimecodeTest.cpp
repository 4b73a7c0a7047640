#include "dv/FrameTimecode.h"

#include "tests/dv/AllocationCount.h"
#include "tests/dv/HandMadeFrame.h"
#include "tests/support/RecordingLog.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <optional>
#include <sys/mman.h>

namespace merro {
namespace {

using test::HandMadeFrame;

constexpr int none = -1;

/// A frame whose sequences carry the timecodes 00:00:00:n, or none.
HandMadeFrame frameSaying(std::initializer_list<int> frameNumbers) {
    HandMadeFrame made(frameNumbers.size() == 12 ? HandMadeFrame::size625 : HandMadeFrame::size525);
    unsigned sequence = 0;
    for (const int number : frameNumbers) {
        if (number != none)
            made.putFrameNumber(sequence, static_cast<std::uint8_t>(number));
        ++sequence;
    }
    return made;
}

/// What the frame's sequences agree on, or `none`.
int votedFrameNumber(const HandMadeFrame& made) {
    const TimecodeValue timecode = frameTimecode(made.frame());
    return timecode ? timecode.SMPTETimeValue().mFrames : none;
}

TEST(FrameTimecode, IsWhatAllSequencesSay) {
    EXPECT_EQ(votedFrameNumber(frameSaying({3, 3, 3, 3, 3, 3, 3, 3, 3, 3})), 3);
    EXPECT_EQ(votedFrameNumber(frameSaying({3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3})), 3);
}

TEST(FrameTimecode, IsMissingWhenNoSequenceHasOne) {
    EXPECT_FALSE(frameTimecode(HandMadeFrame(HandMadeFrame::size525).frame()));
    EXPECT_FALSE(frameTimecode(HandMadeFrame(HandMadeFrame::size625).frame()));
    EXPECT_FALSE(frameTimecode({}));
}

TEST(FrameTimecode, IsThatOfTheOnlySequenceThatHasOne) {
    EXPECT_EQ(
        votedFrameNumber(frameSaying({none, none, none, none, none, none, none, none, none, none, none, 5})),
        5);
    EXPECT_EQ(votedFrameNumber(frameSaying({5, none, none, none, none, none, none, none, none, none})), 5);
}

TEST(FrameTimecode, IsNotAStrayOneThatComesFirst) {
    EXPECT_EQ(votedFrameNumber(frameSaying({9, 2, 2, 2, 2, 2, 2, 2, 2, 2})), 2);
}

TEST(FrameTimecode, IsTheMostFrequentOfSeveral) {
    EXPECT_EQ(votedFrameNumber(frameSaying({1, 1, 2, 2, 2, 3, 3, 3, 3, 4})), 3);
    EXPECT_EQ(votedFrameNumber(frameSaying({1, 2, 3, 4, 5, 6, 7, 8, 9, 9})), 9);
}

TEST(FrameTimecode, GoesToTheEarliestSequenceInATie) {
    EXPECT_EQ(votedFrameNumber(frameSaying({2, 2, 2, 2, 2, 1, 1, 1, 1, 1})), 2);
    EXPECT_EQ(votedFrameNumber(frameSaying({1, 2, 2, 2, 2, 2, 1, 1, 1, 1})), 1);
    EXPECT_EQ(votedFrameNumber(frameSaying({8, 7, 6, 5, 4, 3, 2, 1, 0, 9})), 8);
    EXPECT_EQ(votedFrameNumber(frameSaying({none, 7, 8, 7, 8, none, none, none, none, none})), 7);
}

TEST(FrameTimecode, CanBeOvertakenByTheLastSequence) {
    EXPECT_EQ(votedFrameNumber(frameSaying({1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2, none})), 2);
    EXPECT_EQ(votedFrameNumber(frameSaying({1, 1, 1, 1, 1, none, 2, 2, 2, 2, 2, 2})), 2);
    EXPECT_EQ(votedFrameNumber(frameSaying({1, 2, 2, 2, 2, 2, 1, 1, 1, 1, 3, none})), 1);
}

/// Counts everything and only then decides.
int countedFrameNumber(const std::array<int, 10>& numbers) {
    int winner = none;
    long mostVotes = 0;
    for (const int number : numbers) {
        const long votes = std::count(numbers.begin(), numbers.end(), number);
        if (number != none && votes > mostVotes) {
            winner = number;
            mostVotes = votes;
        }
    }
    return winner;
}

TEST(FrameTimecode, IsNeverDecidedTooEarly) {
    unsigned state = 1;
    for (int round = 0; round < 2000; ++round) {
        std::array<int, 10> numbers{};
        HandMadeFrame made(HandMadeFrame::size525);
        for (unsigned sequence = 0; sequence < numbers.size(); ++sequence) {
            state = state * 1664525U + 1013904223U;
            numbers[sequence] = static_cast<int>((state >> 24) % 4) - 1;
            if (numbers[sequence] != none)
                made.putFrameNumber(sequence, static_cast<std::uint8_t>(numbers[sequence]));
        }
        ASSERT_EQ(votedFrameNumber(made), countedFrameNumber(numbers)) << "round " << round;
    }
}

TEST(FrameTimecode, ComparesHoursMinutesSecondsAndFrames) {
    HandMadeFrame made = frameSaying({1, none, none, none, none, none, none, none, none, none});
    made.putSubcode(1, 0, {0x13, 0x01, 0x00, 0x00, 0x01}).putSubcode(2, 0, {0x13, 0x01, 0x00, 0x00, 0x01});
    EXPECT_EQ(frameTimecode(made.frame()).SMPTETimeValue().mHours, 1);
}

TEST(FrameTimecode, HasTheTypeOfTheEarliestSequenceThatCarriesIt) {
    HandMadeFrame made = frameSaying({9, 2, 2, 2, 2, 2, 2, 2, 2, 2});
    made.put(1, 0, 3, {0xBF}); // only this sequence says 625/50
    const SMPTETime time = frameTimecode(made.frame()).SMPTETimeValue();
    EXPECT_EQ(time.mType, kSMPTETimeType25);
    EXPECT_EQ(time.mFrames, 2);
    EXPECT_EQ(time.mFlags, 0U);
    EXPECT_EQ(time.mCounter, 0U);
}

TEST(FrameTimecode, GivesNoVoteToASequenceThatRaises) {
    test::RecordingLog log;
    platform::setProcessLog(&log);
    HandMadeFrame made = frameSaying({1, 1, 1, 2, 2, none, none, none, none, none});
    made.renumber(0, 12).renumber(1, 15);

    EXPECT_EQ(votedFrameNumber(made), 2);

    EXPECT_TRUE(log.lines().empty());
    platform::setProcessLog(nullptr);
}

TEST(FrameTimecode, LogsNothingAboutDamagedBlocks) {
    test::RecordingLog log;
    platform::setProcessLog(&log);
    HandMadeFrame made = frameSaying({1, 1, 1, 1, 1, 1, 1, 1, 1, 1});
    made.put(0, 1, 0, {0xFF}).put(1, 5, 0, {0xFF});

    EXPECT_EQ(votedFrameNumber(made), 1);

    EXPECT_TRUE(log.lines().empty());
    platform::setProcessLog(nullptr);
}

TEST(FrameTimecode, IsThatOfTheWholeSequencesOfAShortFrame) {
    HandMadeFrame made = frameSaying({1, 2, 2, 2, 2, 2, 2, 2, 2, 2});
    made.bytes().resize(12000 + 300);
    EXPECT_EQ(votedFrameNumber(made), 1);
}

TEST(FrameTimecode, AllocatesNothing) {
    const platform::FrameBytes plain = frameSaying({3, 3, 3, 3, 3, 3, 3, 3, 3, 3}).frame();
    HandMadeFrame dated = frameSaying({1, 2, 3, 4, 5, 6, 7, 8, 9, 1, 2, 3});
    for (unsigned sequence = 6; sequence < 12; ++sequence)
        dated.putSubcode(sequence, 1, {0x62, 0xFF, 0x17, 0x03, 0x05})
            .putSubcode(sequence, 2, {0x63, 0xFF, 0x22, 0x03, 0x14});
    const platform::FrameBytes contradicting = dated.frame();

    const std::size_t before = test::allocationCount();
    (void)frameTimecode(plain);
    (void)frameTimecode(contradicting);
    EXPECT_EQ(test::allocationCount(), before);
}

TEST(FrameTimecode, ReadsNoFurtherThanItMust) {
    HandMadeFrame made = frameSaying({3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3, 3});
    constexpr std::size_t size = 147456; // 36 pages
    void* const memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    std::copy(made.bytes().begin(), made.bytes().end(), static_cast<std::uint8_t*>(memory));
    // Sequence 7 starts at byte 84000; reading it would be a fault.
    mprotect(static_cast<std::uint8_t*>(memory) + 81920, size - 81920, PROT_NONE);
    const platform::FrameBytes frame(
        std::shared_ptr<void>(memory, [](void* mapped) { munmap(mapped, size); }),
        {static_cast<const std::uint8_t*>(memory), HandMadeFrame::size625});

    EXPECT_EQ(frameTimecode(frame).SMPTETimeValue().mFrames, 3);
}

} // namespace
} // namespace merro
