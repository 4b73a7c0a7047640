// Made tapes: lengths, timecode, dates, faults, junk and files.
#include "platform/ffmpeg/TapeMaker.h"

#include "dv/DVDifSequence.h"
#include "ffmpeg/MadeFrames.h"
#include "ffmpeg/MovieReader.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>

namespace merro::test {

using platform::CalendarFields;
using platform::ffmpeg::DateCourse;
using platform::ffmpeg::ExistingFile;
using platform::ffmpeg::TakeFault;
using platform::ffmpeg::TakeFaultKind;
using platform::ffmpeg::TapeAspect;
using platform::ffmpeg::TapeMaker;
using platform::ffmpeg::TimecodeCourse;

namespace {

DVDifSequence decoded(const Bytes& frame, unsigned index) {
    DVDifSequence sequence(platform::FrameBytes::taking(frame), index);
    sequence.decodeSequence();
    return sequence;
}

std::string text(const char* format, int first, int second, int third, int fourth) {
    std::array<char, 64> result{};
    (void)std::snprintf(result.data(), result.size(), format, first, second, third, fourth);
    return result.data();
}

/// "01:02:03:04", or "" where the sequence has no timecode.
std::string timecodeIn(const Bytes& frame, unsigned index = 0) {
    const auto sequence = decoded(frame, index);
    const SMPTETime time = sequence.timeCode();
    return sequence.timecodeOk()
               ? text("%02d:%02d:%02d:%02d", time.mHours, time.mMinutes, time.mSeconds, time.mFrames)
               : "";
}

/// "17.03. 14:03:22" as the subcode of the sequence says, or "" where it says no date.
std::string dateIn(const Bytes& frame, unsigned index = 6) {
    const auto date = decoded(frame, index).captureDateTime();
    return date ? text("%02d. %02d:%02d:%02d", date->dayOfMonth(), date->hourOfDay(), date->minuteOfHour(),
                       date->secondOfMinute())
                : "";
}

std::string problemWith(const Take& take, TapeSystem system = TapeSystem::System625_50) {
    TapeScenario scenario;
    scenario.system = system;
    scenario.takes = {takeOf(1), take};
    const auto error = TapeMaker(scenario).check();
    return error ? error->text() : "";
}

} // namespace

TEST(TapeMaker, MakesFramesThatFFmpegPlays) {
    const OwnFolder folder;
    TapeScenario scenario;
    scenario.takes = {takeOf(10)};
    ASSERT_FALSE(TapeMaker(scenario).write(folder.path("tape.dv")));
    EXPECT_EQ(std::filesystem::file_size(folder.path("tape.dv")), 10U * 144000);
    const auto tape = readMovie(folder.path("tape.dv"), "dv");
    EXPECT_EQ(tape.frames, 10);
    EXPECT_EQ(tape.frameRate, "25/1");
    EXPECT_EQ(tape.sampleAspect, "16:15");
    ASSERT_EQ(tape.sounds.size(), 1U);
    EXPECT_EQ(tape.sounds[0].samples.size(), 2U * 10 * 1920);
}

TEST(TapeMaker, MakesWideTapesOf525Lines) {
    const OwnFolder folder;
    TapeScenario scenario;
    scenario.system = TapeSystem::System525_60;
    scenario.takes = {takeOf(5)};
    scenario.takes[0].aspect = TapeAspect::Aspect16By9;
    ASSERT_FALSE(TapeMaker(scenario).write(folder.path("tape.dv")));
    EXPECT_EQ(std::filesystem::file_size(folder.path("tape.dv")), 5U * 120000);
    const auto tape = readMovie(folder.path("tape.dv"), "dv");
    EXPECT_EQ(tape.frameRate, "30000/1001");
    EXPECT_EQ(tape.sampleAspect, "32:27");
}

TEST(TapeMaker, LengthsAreFramesOrSeconds) {
    TapeScenario scenario;
    scenario.takes = {takeOf(7), takeOf(0)};
    scenario.takes[1].seconds = 1.2;
    EXPECT_EQ(TapeMaker(scenario).frameCount(), 7 + 30);
    EXPECT_EQ(piecesOf(scenario).size(), 37U);
}

TEST(TapeMaker, TimecodeAndDateRunWithTheTape) {
    const auto frames = framesOf(takeOf(27));
    EXPECT_EQ(timecodeIn(frames[0]), "01:02:03:04");
    EXPECT_EQ(timecodeIn(frames[20]), "01:02:03:24");
    EXPECT_EQ(timecodeIn(frames[21]), "01:02:04:00");
    EXPECT_EQ(dateIn(frames[24]), "17. 14:03:22");
    EXPECT_EQ(dateIn(frames[25]), "17. 14:03:23");
}

TEST(TapeMaker, LiesTheDateWhereCamerasPutIt) {
    const auto frame = framesOf(takeOf(1)).front();
    for (unsigned sequence = 0; sequence < 12; ++sequence)
        EXPECT_EQ(dateIn(frame, sequence), sequence < 6 ? "" : "17. 14:03:22") << "sequence " << sequence;
}

TEST(TapeMaker, DropFrameLeavesTwoNumbersOut) {
    Take take = takeOf(4);
    take.dropFrame = true;
    take.timecode = {1, 2, 59, 28};
    auto frames = framesOf(take, TapeSystem::System525_60);
    EXPECT_EQ(timecodeIn(frames[1]), "01:02:59:29");
    EXPECT_EQ(timecodeIn(frames[2]), "01:03:00:02");
    take.timecode = {1, 9, 59, 29};
    frames = framesOf(take, TapeSystem::System525_60);
    EXPECT_EQ(timecodeIn(frames[1]), "01:10:00:00"); // every tenth minute has all its numbers
}

TEST(TapeMaker, TakesFollowOneAnotherAsAsked) {
    TapeScenario scenario;
    scenario.takes = {takeOf(5), takeOf(2), takeOf(2), takeOf(1), takeOf(1)};
    scenario.takes[1].recordingDate.reset();
    scenario.takes[2].timecodeCourse = TimecodeCourse::StartsAt;
    scenario.takes[2].timecode = {};
    scenario.takes[2].dateCourse = DateCourse::StandsStill;
    scenario.takes[3].timecodeCourse = TimecodeCourse::None;
    scenario.takes[3].dateCourse = DateCourse::None;
    const auto frames = piecesOf(scenario);
    EXPECT_EQ(timecodeIn(frames[5]), "01:02:03:09");
    EXPECT_EQ(dateIn(frames[5]), "17. 14:03:22");
    EXPECT_EQ(timecodeIn(frames[7]), "00:00:00:00");
    EXPECT_EQ(timecodeIn(frames[9]), "");
    EXPECT_EQ(dateIn(frames[9]), "");
    EXPECT_EQ(timecodeIn(frames[10]), "00:00:00:02"); // where the timecode stopped
    EXPECT_EQ(dateIn(frames[10]), "17. 14:03:22");
}

TEST(TapeMaker, ADateThatStandsStillDoesSo) {
    Take take = takeOf(30);
    take.dateCourse = DateCourse::StandsStill;
    EXPECT_EQ(dateIn(framesOf(take).back()), "17. 14:03:22");
}

TEST(TapeMaker, RepeatedPicturesHaveRunningTimecode) {
    Take take = takeOf(60);
    take.picture = "testcard";
    take.repeatPicturesAfterInFrame = 3; // rounded up to a second
    const auto frames = framesOf(take);
    const auto picture = [&](std::size_t index) { // a part of the frame that holds nothing but picture
        return Bytes(frames[index].begin() + 70003, frames[index].begin() + 70080);
    };
    EXPECT_EQ(picture(50), picture(0));
    EXPECT_EQ(timecodeIn(frames[50]), "01:02:05:04");
    EXPECT_EQ(dateIn(frames[50]), "17. 14:03:24");
    EXPECT_NE(Bytes(frames[24].begin() + 480, frames[24].end()),
              Bytes(frames[23].begin() + 480, frames[23].end()));
}

TEST(TapeMaker, FaultsStrikeTheirFramesAndSequencesOnly) {
    Take take = takeOf(4);
    take.faults = {TakeFault{TakeFaultKind::NoTimecode, 1, 1, {0, 3}, {}},
                   TakeFault{TakeFaultKind::NoTimecode, 2, 2, {}, {}},
                   TakeFault{TakeFaultKind::NoDate, 1, 1, {}, {}},
                   TakeFault{TakeFaultKind::WrongDate, 2, 2, {7}, CalendarFields{1999, 1, 31, 1, 2, 3}},
                   TakeFault{TakeFaultKind::WrongDate, 3, 3, {}, CalendarFields{1999, 1, 31, 1, 2, 3}}};
    const auto frames = framesOf(take);
    EXPECT_EQ(timecodeIn(frames[0], 3), "01:02:03:04");
    EXPECT_EQ(timecodeIn(frames[1], 0), "");
    EXPECT_EQ(timecodeIn(frames[1], 1), "01:02:03:05");
    EXPECT_EQ(timecodeIn(frames[1], 3), "");
    EXPECT_EQ(timecodeIn(frames[2], 1), "");
    EXPECT_EQ(dateIn(frames[0]), "17. 14:03:22");
    EXPECT_EQ(dateIn(frames[1]), "");
    EXPECT_EQ(dateIn(frames[2], 6), "17. 14:03:22");
    EXPECT_EQ(dateIn(frames[2], 7), "31. 01:02:03");
    EXPECT_EQ(dateIn(frames[3], 6), "31. 01:02:03");
}

TEST(TapeMaker, DamageAndConcealmentShowInTheBlocks) {
    Take take = takeOf(2);
    take.faults = {TakeFault{TakeFaultKind::DamagedSequences, 0, 0, {2}, {}},
                   TakeFault{TakeFaultKind::ConcealedBlocks, 1, 1, {2}, {}}};
    const auto frames = framesOf(take);
    EXPECT_EQ(frames[0][2 * 12000 + 80], 0xFF);            // subcode
    EXPECT_EQ(frames[0][2 * 12000 + 5 * 80 + 53], 0xFF);   // VAUX
    EXPECT_EQ(frames[0][2 * 12000] >> 5, 0);               // the header is whole
    EXPECT_EQ(frames[1][2 * 12000 + 7 * 80 + 3] >> 4, 14); // the first video block's error status
    EXPECT_EQ(frames[0][2 * 12000 + 7 * 80 + 3] >> 4, 0);
}

TEST(TapeMaker, JunkAndTailLieBetweenAndBehindTheFrames) {
    TapeScenario scenario;
    scenario.takes = {takeOf(2), takeOf(1)};
    scenario.takes[0].junkBytesAfter = 1234;
    scenario.tailBytes = 5000;
    const auto pieces = piecesOf(scenario);
    ASSERT_EQ(pieces.size(), 5U);
    EXPECT_EQ(pieces[2].size(), 1234U);
    EXPECT_EQ(pieces[4], Bytes(pieces[3].begin(), pieces[3].begin() + 5000));
}

TEST(TapeMaker, TheSystemMayChangeOnTheWay) {
    TapeScenario scenario;
    scenario.takes = {takeOf(1), takeOf(1)};
    scenario.takes[1].system = TapeSystem::System525_60;
    const auto pieces = piecesOf(scenario);
    EXPECT_EQ(pieces[0].size(), 144000U);
    EXPECT_EQ(pieces[1].size(), 120000U);
}

TEST(TapeMaker, TheSameScenarioGivesTheSameBytes) {
    for (const auto& name : TapeMaker::pictureNames()) {
        Take take = takeOf(3);
        take.picture = name;
        EXPECT_TRUE(framesOf(take) == framesOf(take)) << name;
    }
}

TEST(TapeMaker, EveryNamedPictureCanBeHadAndIsDifferent) {
    std::vector<Bytes> seen;
    for (const auto& name : TapeMaker::pictureNames()) {
        Take take = takeOf(1);
        take.picture = name;
        take.label = "Take 1: it's [the] garden, 100%";
        const auto frame = framesOf(take, TapeSystem::System525_60).front();
        EXPECT_EQ(std::ranges::count(seen, frame), 0) << name;
        seen.push_back(frame);
    }
    EXPECT_GE(seen.size(), 6U);
}

TEST(TapeMaker, AScenarioThatCannotBeMadeIsRefusedWithTheTakesNumber) {
    Take take = takeOf(1);
    EXPECT_EQ(problemWith(take), "");
    take.picture = "no such picture";
    EXPECT_NE(problemWith(take).find("take 2: 'no such picture'"), std::string::npos);
    EXPECT_NE(problemWith(takeOf(0)).find("take 2: it needs a length"), std::string::npos);
    take = takeOf(1);
    take.dropFrame = true;
    EXPECT_NE(problemWith(take).find("drop-frame"), std::string::npos);
    EXPECT_EQ(problemWith(take, TapeSystem::System525_60), "");
    take = takeOf(1);
    take.faults = {TakeFault{TakeFaultKind::NoDate, 0, 0, {12}, {}}};
    EXPECT_NE(problemWith(take).find("0 to 11"), std::string::npos);
    take.faults = {TakeFault{TakeFaultKind::NoDate, 3, 2, {}, {}}};
    EXPECT_NE(problemWith(take), "");
    take = takeOf(1);
    take.sound.frequencyInHertz = 24000;
    EXPECT_NE(problemWith(take), "");
    EXPECT_TRUE(TapeMaker(TapeScenario{}).check());
}

TEST(TapeMaker, DoesNotOverwriteUnlessTold) {
    const OwnFolder folder;
    TapeScenario scenario;
    scenario.takes = {takeOf(1)};
    writeContents(folder.path("tape.dv"), {1, 2, 3});
    const auto error = TapeMaker(scenario).write(folder.path("tape.dv"));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->systemCode, EEXIST);
    EXPECT_EQ(contentsOf(folder.path("tape.dv")), (Bytes{1, 2, 3}));
    EXPECT_FALSE(TapeMaker(scenario).write(folder.path("tape.dv"), ExistingFile::Replace));
    EXPECT_EQ(contentsOf(folder.path("tape.dv")).size(), 144000U);
    EXPECT_EQ(folder.names(), std::vector<std::string>{"tape.dv"});
}

TEST(TapeMaker, CanBeStoppedAndLeavesNothing) {
    const OwnFolder folder;
    TapeScenario scenario;
    scenario.takes = {takeOf(100)};
    std::int64_t seen = 0;
    const auto error = TapeMaker(scenario).write(folder.path("tape.dv"), ExistingFile::Keep,
                                                 [&](std::int64_t done, std::int64_t inAll) {
                                                     seen = done;
                                                     EXPECT_EQ(inAll, 100);
                                                     return done < 50;
                                                 });
    ASSERT_TRUE(error);
    EXPECT_EQ(error->systemCode, ECANCELED);
    EXPECT_EQ(seen, 50);
    EXPECT_TRUE(folder.names().empty());
}

} // namespace merro::test
