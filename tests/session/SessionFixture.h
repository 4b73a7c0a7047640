// A capture framework with one open device in one of the two worlds.
#pragma once

#include "platform/NotificationCenter.h"
#include "platform/session/CaptureFramework.h"
#include "tests/platform/Worlds.h"
#include "tests/session/JournalRecorders.h"
#include "tests/session/ManualDevice.h"
#include "tests/support/Journal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace merro::test {

using namespace std::chrono_literals;

template <typename World>
class SessionFixture : public testing::Test {
protected:
    using WhenFull = platform::session::WhenFull;

    SessionFixture() {
        EXPECT_FALSE(device->open());
        input = framework->makeDeviceInput(device);
    }

    std::unique_ptr<platform::session::CaptureFramework>
    makeFramework(platform::session::MovieRecorderFactory* factory, WhenFull whenFull) {
        platform::session::CaptureEvents events;
        events.problem = [this](const platform::Error& problem) {
            journal->add("problem: " + problem.message);
        };
        events.framesLost = [this](std::int64_t frames) { journal->add("lost " + std::to_string(frames)); };
        events.recordingFinished = [this](const platform::session::RecordingResult& result) {
            journal->add("recorded " + result.path);
        };
        return std::make_unique<platform::session::CaptureFramework>(world.threads, world.loop, notifications,
                                                                     factory, whenFull, std::move(events));
    }

    /// Runs `body` on another thread of the world; the answer waits for its end.
    std::function<void()> onOtherThread(std::function<void()> body) {
        std::shared_ptr<platform::ConditionLock> ended = world.threads.makeConditionLock(0);
        world.threads.detach("delivery", [body = std::move(body), ended] {
            body();
            ended->lock();
            ended->unlockWithCondition(1);
        });
        return [ended] {
            ended->lockWhenCondition(1);
            ended->unlock();
        };
    }

    /// An output whose delegate writes "NAME 3" for sample 3 and calls `then`, in the running session of the
    /// device.
    std::shared_ptr<platform::QTCaptureMovieFileOutput> addOutput(const std::string& name,
                                                                  std::function<void(int)> then = {}) {
        auto output = framework->makeMovieFileOutput();
        output->setDelegate(journalDelegate(name, std::move(then)));
        session->addOutput(output);
        return output;
    }

    platform::QTCaptureFileOutputDelegate journalDelegate(const std::string& name,
                                                          std::function<void(int)> then = {}) {
        platform::QTCaptureFileOutputDelegate delegate;
        delegate.didOutputSampleBuffer = [this, name, then](auto&, const auto& sample, const auto&) {
            journal->add(name + " " + std::to_string(numberOf(sample)));
            if (then)
                then(numberOf(sample));
        };
        delegate.didFinishRecording = [this](auto&, const std::string& path, const auto& error) {
            journal->add("finished " + path + (error ? ": " + error->message : ""));
        };
        return delegate;
    }

    void start() {
        EXPECT_FALSE(session->addInput(input));
        session->startRunning();
    }

    World world;
    platform::NotificationCenter notifications;
    std::shared_ptr<Journal> journal = std::make_shared<Journal>();
    JournalRecorders recorders{journal};
    std::unique_ptr<platform::session::CaptureFramework> framework =
        makeFramework(&recorders, WhenFull::Wait);
    std::shared_ptr<ManualDevice> device = std::make_shared<ManualDevice>(world.threads);
    std::shared_ptr<platform::QTCaptureDeviceInput> input;
    std::shared_ptr<platform::QTCaptureSession> session = framework->makeSession();
};

} // namespace merro::test
