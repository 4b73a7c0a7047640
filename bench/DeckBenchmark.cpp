// Plays a tape file to its end in virtual time, through a capture session with one output that counts the
// frames.
//
//   bench_deck FRAMES    makes a 625/50 tape of so many frames (144000 bytes each) in the temporary folder
//   bench_deck FILE.dv   plays a tape that is there already
//
// Prints the microseconds a frame of five runs, by the clock and by the processor; the first one also fills
// the page cache.
#include "platform/deck/Deck.h"
#include "platform/deck/DVFrameBuilder.h"
#include "platform/deck/TapeFile.h"
#include "platform/NotificationCenter.h"
#include "platform/session/CaptureFramework.h"
#include "platform/virtualtime/Clock.h"
#include "platform/virtualtime/RunLoop.h"
#include "platform/virtualtime/Scheduler.h"
#include "platform/virtualtime/Threads.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

using namespace merro::platform;

std::string makeTape(int frames) {
    const std::string path = std::filesystem::temp_directory_path() / "merro-bench-deck.dv";
    std::ofstream file(path, std::ios::binary);
    deck::DVFrameBuilder builder(deck::DVSystem::System625_50);
    for (int i = 0; i < frames; ++i) {
        merro::SMPTETime timecode;
        timecode.mHours = static_cast<std::int16_t>(i / 90000);
        timecode.mMinutes = static_cast<std::int16_t>(i / 1500 % 60);
        timecode.mSeconds = static_cast<std::int16_t>(i / 25 % 60);
        timecode.mFrames = static_cast<std::int16_t>(i % 25);
        builder.setTimecode(timecode);
        builder.setRecordingDateTime({2005, 3, 17, 14, i / 1500 % 60, i / 25 % 60});
        file.write(reinterpret_cast<const char*>(builder.bytes().data()),
                   static_cast<std::streamsize>(builder.bytes().size()));
    }
    return path;
}

int play(const std::string& path) {
    auto opened = deck::openTape(path);
    if (const auto* error = std::get_if<deck::TapeError>(&opened)) {
        std::fprintf(stderr, "%s\n", error->error.text().c_str());
        return 1;
    }
    const auto start = std::chrono::steady_clock::now();
    const std::clock_t processorStart = std::clock();
    long frames = 0;
    {
        virtualtime::Scheduler scheduler;
        virtualtime::Clock clock(scheduler);
        virtualtime::Threads threads(scheduler);
        virtualtime::RunLoop runLoop(scheduler);
        NotificationCenter notifications;
        session::CaptureFramework framework(threads, runLoop, notifications, nullptr,
                                            session::WhenFull::Wait);
        deck::DeckSettings settings;
        settings.mechanism = deck::MechanismSettings::ideal();
        const auto device =
            deck::makeDeck(clock, threads, runLoop, notifications,
                           std::get<std::unique_ptr<deck::Tape>>(std::move(opened)), settings);
        (void)device->open();
        const auto session = framework.makeSession();
        const auto output = framework.makeMovieFileOutput();
        QTCaptureFileOutputDelegate delegate;
        delegate.didOutputSampleBuffer = [&](auto&, auto&, auto&) { ++frames; };
        output->setDelegate(delegate);
        session->addOutput(output);
        (void)session->addInput(framework.makeDeviceInput(device));
        session->startRunning();
        device->setAttributeForKey(
            Dictionary{{std::string(QTCaptureDeviceAVCTransportControlsSpeedKey), 10000},
                       {std::string(QTCaptureDeviceAVCTransportControlsPlaybackModeKey), 1}},
            QTCaptureDeviceAVCTransportControlsAttribute);
        (void)runLoop.run();
        session->stopRunning();
    }
    const std::chrono::duration<double, std::micro> spent = std::chrono::steady_clock::now() - start;
    const double processor = 1e6 * static_cast<double>(std::clock() - processorStart) / CLOCKS_PER_SEC;
    const auto count = static_cast<double>(frames);
    std::printf("%ld frames, %.1f ms; microseconds a frame: %.3f, of the processor %.3f\n", frames,
                spent.count() / 1000, spent.count() / count, processor / count);
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::string argument = argc > 1 ? argv[1] : "2000";
    const int frames = std::atoi(argument.c_str());
    const std::string path = frames > 0 ? makeTape(frames) : argument;
    int status = 0;
    for (int run = 0; run < 5 && status == 0; ++run)
        status = play(path);
    if (frames > 0)
        std::filesystem::remove(path);
    return status;
}
