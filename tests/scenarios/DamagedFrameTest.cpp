// Damaged frames never end a capture, never cut a take, and are never lost.
#include "capture/CaptureDefaults.h"
#include "tests/scenarios/LoggingWorld.h"

#include <array>

namespace merro::test {
namespace {

/// Frames 0 to 59 and 60 to 99.
TapeScript twoTakes() {
    return TapeScript()
        .take({.frames = 60, .timecode = "00:00:00:00", .date = "14:00:00"})
        .take({.frames = 40, .timecode = "00:00:02:10", .date = "15:00:00"});
}

const Entries kTwoClips{"begin",
                        "will 0001",
                        did({"0001", "14:00:00", "00:00:00:00", "00:00:02:09", "00:00:02:09"}),
                        "will 0002",
                        did({"0002", "15:00:00", "00:00:02:10", "00:00:03:24", "00:00:01:14"}),
                        "end"};

/// Logs the two takes and expects them as if nothing were damaged; answers the log's lines but for the marks.
Entries logDespite(const TapeScript& script) {
    LoggingWorld world(script);
    world.log();
    EXPECT_EQ(world.messages(), kTwoClips);
    EXPECT_EQ(world.firstMovies(2), (std::vector{frames(0, 59), frames(60, 99)}));
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 50, 59}));
    EXPECT_EQ(world.thumbnails("0002"), (std::vector{60, 99}));
    EXPECT_TRUE(world.alertsShown().empty());
    return world.entries({"log Cannot"});
}

TEST(DamagedFrame, aHeaderThatNamesASequencePastTheEndCostsALogLineAndTheNextIsTried) {
    // The dates lie in the second half: 6 cannot be read, 7 has it.
    const TapeScript script =
        twoTakes().damage(70, [](DVFrameBuilder& frame) { frame.renumberHeader(6, 15); });

    EXPECT_EQ(logDespite(script),
              (Entries{"log Cannot decode DIF sequence 6: read past the end of the frame"}));
}

TEST(DamagedFrame, withNoReadableSequenceAtAllAFrameIsKeptWithoutADate) {
    const TapeScript script = twoTakes().damage(30, [](DVFrameBuilder& frame) {
        for (unsigned sequence = 0; sequence < 12; ++sequence)
            frame.renumberHeader(sequence, 13);
    });

    EXPECT_EQ(logDespite(script).size(), 10U) << "one line for each sequence that is searched";
}

TEST(DamagedFrame, overwrittenSubcodeInSomeSequencesChangesNothing) {
    const TapeScript script = twoTakes().damage(70, [](DVFrameBuilder& frame) {
        for (const unsigned sequence : {6U, 7U}) {
            frame.overwriteBlock(sequence, 1);
            frame.overwriteBlock(sequence, 2);
        }
    });

    EXPECT_EQ(logDespite(script), (Entries{"log Cannot decode subcode for SC0 and SC1 of type 7 and 7",
                                           "log Cannot decode subcode for SC0 and SC1 of type 7 and 7"}));
}

TEST(DamagedFrame, aFrameWithoutAnySubcodeStaysInItsClip) {
    const TapeScript script = twoTakes().damage(30, [](DVFrameBuilder& frame) {
        for (unsigned sequence = 0; sequence < 12; ++sequence)
            frame.overwriteBlock(sequence, 1);
    });

    EXPECT_EQ(logDespite(script).size(), 10U);
}

TEST(DamagedFrame, aStrayTimecodeLosesTheVote) {
    const TapeScript script = twoTakes().damage(30, [](DVFrameBuilder& frame) {
        constexpr std::array<unsigned, 5> first{0, 1, 2, 3, 4};
        frame.setTimecodeInSequences(timecode("23:00:00:00").SMPTETimeValue(), first);
    });

    EXPECT_TRUE(logDespite(script).empty());
}

TEST(DamagedFrame, aTimecodeThatIsWrongThroughoutAFrameIsBelievedAndHarmsNoFrame) {
    // 23:00:00:00 is past the sampling point, and the point after it is never reached.
    LoggingWorld world(twoTakes().damage(
        30, [](DVFrameBuilder& frame) { frame.setTimecode(timecode("23:00:00:00").SMPTETimeValue()); }));

    world.log();

    EXPECT_EQ(world.messages(), kTwoClips);
    EXPECT_EQ(world.firstMovies(2), (std::vector{frames(0, 59), frames(60, 99)}));
    EXPECT_EQ(world.thumbnails("0001"), (std::vector{0, 30, 59}));
    EXPECT_EQ(world.thumbnails("0002"), (std::vector{60, 99}));
}

TEST(DamagedFrame, aFrameWithoutADateAtTheStartOfATakePutsTheCutOneFrameLater) {
    LoggingWorld world(twoTakes().damage(60, [](DVFrameBuilder& frame) { frame.clearRecordingDateTime(); }));

    world.log();

    EXPECT_EQ(world.messages(),
              (Entries{"begin", "will 0001",
                       did({"0001", "14:00:00", "00:00:00:00", "00:00:02:10", "00:00:02:10"}), "will 0002",
                       did({"0002", "15:00:00", "00:00:02:11", "00:00:03:24", "00:00:01:13"}), "end"}));
    EXPECT_EQ(world.firstMovies(2), (std::vector{frames(0, 60), frames(61, 99)}));
    EXPECT_EQ(world.thumbnails("0002"), (std::vector{61, 99}));
}

TEST(DamagedFrame, halfADateIsNone) {
    const TapeScript script = twoTakes().damage(30, [](DVFrameBuilder& frame) {
        frame.clearRecordingDateTime();
        frame.setRecordingDate(1999, 1, 1);
    });

    EXPECT_TRUE(logDespite(script).empty());
}

TEST(DamagedFrame, brokenVideoAndVauxBlocksAreNothingToDetection) {
    const TapeScript script = twoTakes().damage(30, [](DVFrameBuilder& frame) {
        frame.concealVideoBlocks(4, 0, 100, 0xF);
        frame.overwriteBlock(0, 5, 0x00);
    });

    EXPECT_EQ(logDespite(script).size(), 2U) << "source and source control of sequence 0";
}

TEST(DamagedFrame, framesLostOnTheCableLeaveTheClipsAsTheyAre) {
    Equipment badCable;
    badCable.faults.framesLostPerMillion = 100'000;
    badCable.faults.seed = 7;
    LoggingWorld world(twoTakes(), badCable);

    world.log();

    const std::vector<int> delivered = world.deck->delivered();
    ASSERT_LT(delivered.size(), 100U) << "this seed loses some";
    std::vector<int> movies = world.movie("0001");
    const std::vector<int> second = world.movie("0002");
    movies.insert(movies.end(), second.begin(), second.end());
    EXPECT_EQ(movies, delivered);
    EXPECT_EQ(world.messages().size(), 6U);
    EXPECT_EQ(world.framework.framesLost() + static_cast<std::int64_t>(delivered.size()), 100);
}

} // namespace
} // namespace merro::test
