// What one frame costs before it is known whether the tape has to be cut there: the vote on its timecode and
// the search for its recording date. Frames of a tape stretch lie behind one another, as in a mapped tape
// file.

#include "dv/FrameDate.h"
#include "dv/FrameTimecode.h"
#include "platform/deck/DVFrameBuilder.h"
#include "platform/Log.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <thread>
#include <vector>

namespace merro {
namespace {

using platform::FrameBytes;
using platform::deck::DVFrameBuilder;
using platform::deck::DVSystem;

constexpr std::size_t framesOnTape = 250;

enum class Dates { AsCamerasDo, None };

/// References into one long buffer.
std::vector<FrameBytes> tape(DVSystem system, Dates dates) {
    auto bytes = std::make_shared<std::vector<std::uint8_t>>();
    std::size_t frameSize = 0;
    for (std::size_t index = 0; index < framesOnTape; ++index) {
        DVFrameBuilder builder(system);
        SMPTETime timecode;
        timecode.mSeconds = static_cast<std::int16_t>(index / 25);
        timecode.mFrames = static_cast<std::int16_t>(index % 25);
        builder.setTimecode(timecode);
        builder.setPicture({});
        if (dates == Dates::AsCamerasDo)
            builder.setRecordingDateTime({2005, 3, 17, 14, 3, static_cast<int>(index / 25)});
        frameSize = builder.bytes().size();
        bytes->insert(bytes->end(), builder.bytes().begin(), builder.bytes().end());
    }
    std::vector<FrameBytes> frames;
    for (std::size_t index = 0; index < framesOnTape; ++index)
        frames.emplace_back(bytes,
                            std::span<const std::uint8_t>(*bytes).subspan(index * frameSize, frameSize));
    return frames;
}

void forEachFrame(benchmark::State& state, DVSystem system, Dates dates, void (*work)(const FrameBytes&)) {
    const std::vector<FrameBytes> frames = tape(system, dates);
    std::thread([] {}).join(); // a program that has had threads counts references with locked instructions
    std::size_t next = 0;
    for ([[maybe_unused]] auto _ : state) {
        work(frames[next]);
        next = (next + 1) % frames.size();
    }
}

void vote(const FrameBytes& frame) {
    benchmark::DoNotOptimize(frameTimecode(frame));
}
void search(const FrameBytes& frame) {
    benchmark::DoNotOptimize(findFrameDate(frame));
}
void both(const FrameBytes& frame) {
    vote(frame);
    search(frame);
}

void timecodeVote(benchmark::State& state) {
    forEachFrame(state, DVSystem::System625_50, Dates::AsCamerasDo, vote);
}
void dateSearch(benchmark::State& state) {
    forEachFrame(state, DVSystem::System625_50, Dates::AsCamerasDo, search);
}
void dateSearchWithoutDates(benchmark::State& state) {
    forEachFrame(state, DVSystem::System625_50, Dates::None, search);
}
void wholeFrame625(benchmark::State& state) {
    forEachFrame(state, DVSystem::System625_50, Dates::AsCamerasDo, both);
}
void wholeFrame525(benchmark::State& state) {
    forEachFrame(state, DVSystem::System525_60, Dates::AsCamerasDo, both);
}
void dateFromCalendar(benchmark::State& state) {
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(platform::dateFromCalendar({2005, 3, 17, 14, 3, 22}));
}

BENCHMARK(timecodeVote);
BENCHMARK(dateSearch);
BENCHMARK(dateSearchWithoutDates);
BENCHMARK(wholeFrame625);
BENCHMARK(wholeFrame525);
BENCHMARK(dateFromCalendar);

} // namespace
} // namespace merro

BENCHMARK_MAIN();
