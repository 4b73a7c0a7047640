// The queue between the tape and the disk, and the recorder's life.
#include "ffmpeg/RecordingFixture.h"

#include <atomic>
#include <future>

namespace merro::test {

class MovieQueue : public Recording {};

namespace {

class NamedOptions final : public platform::QTCompressionOptions {
public:
    std::string localizedDisplayName() const override { return "Small and Blurred"; }
};

} // namespace

TEST_F(MovieQueue, WhenFullFramesAreLostAndCountedAndToldOnce) {
    useFaultyFiles();
    settings.queueLengthInFrame = 4;
    const auto frames = framesOf(takeOf(10));
    files->shutGate();
    const auto recorder = start(WhenFull::LoseFrame);
    recorder->append(sampleOf(frames[0]));
    files->waitForWriter(); // which has taken the first frame out of the queue
    for (std::size_t index = 1; index < 10; ++index)
        recorder->append(sampleOf(frames[index]));
    EXPECT_EQ(told.framesLost(), 5); // nine frames for four places
    EXPECT_EQ(told.problems().size(), 1U);
    files->openGate();
    recorder->finish();
    while (!recorder->isFinished())
        std::this_thread::yield();
    EXPECT_EQ(recorder->result().framesWritten, 5);
    EXPECT_EQ(recorder->result().framesLost, 5);
    EXPECT_TRUE(recorder->result().isPlayable);
    EXPECT_EQ(readMovie(path).video, joined({frames.begin(), frames.begin() + 5}));
}

TEST_F(MovieQueue, WhoCanWaitLosesNothing) {
    useFaultyFiles();
    settings.queueLengthInFrame = 2;
    const auto frames = framesOf(takeOf(12));
    files->shutGate();
    const auto recorder = start(WhenFull::Wait);
    auto appending = std::async(std::launch::async, [&] {
        for (const auto& frame : frames)
            recorder->append(sampleOf(frame));
    });
    files->waitForWriter();
    files->openGate();
    appending.get();
    recorder->finish();
    EXPECT_EQ(recorder->result().framesWritten, 12);
    EXPECT_EQ(told.framesLost(), 0);
    EXPECT_TRUE(told.problems().empty());
}

TEST_F(MovieQueue, FinishingWithoutWaitingStillCompletesTheMovie) {
    const auto frames = framesOf(takeOf(5));
    auto recorder = start(WhenFull::LoseFrame);
    for (const auto& frame : frames)
        recorder->append(sampleOf(frame));
    recorder->finish();
    recorder->finish();
    recorder.reset();
    ASSERT_EQ(told.results().size(), 1U);
    EXPECT_TRUE(told.results()[0].isPlayable);
    EXPECT_EQ(readMovie(path).frames, 5);
}

TEST_F(MovieQueue, ARecorderThatIsDestroyedWhileRecordingFinishesItsMovie) {
    const auto frames = framesOf(takeOf(5));
    auto recorder = start();
    for (const auto& frame : frames)
        recorder->append(sampleOf(frame));
    recorder.reset();
    EXPECT_EQ(readMovie(path).video, joined(frames));
    ASSERT_EQ(told.results().size(), 1U);
    EXPECT_EQ(told.results()[0].framesWritten, 5);
}

TEST_F(MovieQueue, ARecorderMayBeLetGoInItsLastEvent) {
    std::promise<void> letGo;
    std::promise<std::int64_t> written;
    std::shared_ptr<platform::session::MovieRecorder> held;
    platform::session::RecorderEvents events;
    events.finished = [&](const platform::session::RecordingResult& result) {
        letGo.get_future().wait();
        held.reset(); // the last reference
        written.set_value(result.framesWritten);
    };
    platform::ffmpeg::MovieRecorderFactory factory;
    auto recorder = factory.startRecording(path, nullptr, WhenFull::LoseFrame, events);
    held = recorder;
    recorder->append(sampleOf(framesOf(takeOf(1)).front()));
    recorder->finish();
    recorder.reset();
    letGo.set_value();
    EXPECT_EQ(written.get_future().get(), 1);
}

TEST_F(MovieQueue, TheResultIsFinalWhenFinishedIsTold) {
    record(framesOf(takeOf(3)));
    ASSERT_EQ(told.results().size(), 1U);
    EXPECT_EQ(told.results()[0].framesWritten, 3);
    EXPECT_EQ(told.results()[0].path, path);
    EXPECT_TRUE(std::filesystem::exists(path));
}

TEST_F(MovieQueue, AChangeOfTelevisionSystemEndsTheMovie) {
    auto frames = framesOf(takeOf(3));
    const auto others = framesOf(takeOf(2), TapeSystem::System525_60);
    frames.insert(frames.end(), others.begin(), others.end());
    const auto result = record(frames);
    EXPECT_TRUE(result.isPlayable);
    EXPECT_EQ(result.framesWritten, 3);
    EXPECT_EQ(result.framesLost, 2);
    ASSERT_EQ(told.problems().size(), 1U);
    EXPECT_NE(told.problems()[0].find("television system changed"), std::string::npos);
    EXPECT_EQ(readMovie(path).frames, 3);
}

TEST_F(MovieQueue, WhatIsNoDVFrameIsLostAndTheRestIsWritten) {
    auto frames = framesOf(takeOf(3));
    frames.insert(frames.begin() + 1, Bytes(1000));
    frames.insert(frames.begin() + 2, Bytes());
    const auto result = record(frames);
    EXPECT_EQ(result.framesWritten, 3);
    EXPECT_EQ(result.framesLost, 2);
    EXPECT_EQ(told.problems().size(), 1U);
    EXPECT_TRUE(result.isPlayable);
}

TEST_F(MovieQueue, ACompressionThatIsNotToBeHadIsAnError) {
    platform::ffmpeg::MovieRecorderFactory factory;
    const auto recorder =
        factory.startRecording(path, std::make_shared<NamedOptions>(), WhenFull::Wait, told.events());
    EXPECT_TRUE(recorder->isFinished());
    ASSERT_TRUE(recorder->result().error);
    EXPECT_NE(recorder->result().error->message.find("Small and Blurred"), std::string::npos);
    EXPECT_TRUE(folder.names().empty());
}

} // namespace merro::test
