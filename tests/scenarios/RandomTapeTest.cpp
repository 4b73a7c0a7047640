// Random tapes, random settings, random hands: every frame that is delivered while recording is in exactly
// the clip that the rule says. A failing run prints its seed and the command that repeats it.
#include "capture/CaptureDefaults.h"
#include "tests/scenarios/LoggingModel.h"
#include "tests/scenarios/LoggingWorld.h"
#include "tests/timecode/TimeZone.h"

#include <array>
#include <cstdlib>
#include <random>
#include <set>

namespace merro::test {
namespace {

#if defined(__SANITIZE_THREAD__) || defined(__SANITIZE_ADDRESS__)
constexpr std::uint64_t kSeeds = 60;
#else
constexpr std::uint64_t kSeeds = 200;
#endif

class Dice {
public:
    explicit Dice(std::uint64_t seed) : m_random(static_cast<std::mt19937::result_type>(seed)) {}
    /// A number from `low` to `high`, both included; the same on every machine.
    int number(int low, int high) {
        return low + static_cast<int>(m_random() % static_cast<std::uint32_t>(high - low + 1));
    }
    bool outOf(int of) { return number(1, of) == 1; }

private:
    std::mt19937 m_random;
};

std::string clockText(int secondOfDay) {
    std::array<char, 48> line{};
    (void)std::snprintf(line.data(), line.size(), "%02d:%02d:%02d", secondOfDay / 3600 % 24,
                        secondOfDay / 60 % 60, secondOfDay % 60);
    return line.data();
}

std::string timecodeText(int frame) {
    std::array<char, 48> line{};
    (void)std::snprintf(line.data(), line.size(), "%02d:%02d:%02d:%02d", frame / 90000 % 24,
                        frame / 1500 % 60, frame / 25 % 60, frame % 25);
    return line.data();
}

void damage(TapeScript& script, int frame, Dice& dice) {
    switch (dice.number(1, 6)) {
    case 1: // no date
        script.at(frame).date.reset();
        break;
    case 2: // no timecode
        script.at(frame).timecode = {};
        break;
    case 3: // a stray timecode in a minority of the sequences
        if (!script.at(frame).timecode)
            break; // nobody would outvote it
        script.damage(frame, [hours = dice.number(0, 23)](DVFrameBuilder& builder) {
            SMPTETime stray;
            stray.mHours = static_cast<std::int16_t>(hours);
            stray.mFrames = 13;
            constexpr std::array<unsigned, 4> some{0, 3, 6, 9};
            builder.setTimecodeInSequences(stray, some);
        });
        break;
    case 4: // subcode lost in one sequence
        script.damage(frame, [sequence = static_cast<unsigned>(dice.number(0, 8))](DVFrameBuilder& builder) {
            builder.overwriteBlock(sequence, 1);
            builder.overwriteBlock(sequence, 2);
        });
        break;
    case 5: // a header that names a sequence past the end
        script.damage(frame, [sequence = static_cast<unsigned>(dice.number(0, 8))](DVFrameBuilder& builder) {
            builder.renumberHeader(sequence, 14);
        });
        break;
    default: // a timecode that the whole frame agrees on and that is wrong
        script.at(frame).timecode = timecode(timecodeText(dice.number(0, 200'000)));
    }
}

TapeScript randomTape(Dice& dice) {
    TapeScript script;
    int clock = dice.number(0, 86'000);
    int counter = dice.number(0, 100'000);
    const int takes = dice.number(1, 6);
    const bool hasTimecode = !dice.outOf(8);
    const bool hasDates = !dice.outOf(8);
    for (int i = 0; i < takes; ++i) {
        if (dice.outOf(4))
            script.blank(dice.number(1, 30));
        if (dice.outOf(3))
            counter = dice.outOf(2) ? 0 : dice.number(0, 200'000);
        Take take;
        take.frames = dice.outOf(5) ? dice.number(1, 3) : dice.number(4, 60);
        take.isWide = dice.outOf(3);
        take.clockStands = dice.outOf(6);
        take.timecodeStands = dice.outOf(10);
        if (hasTimecode && !dice.outOf(8))
            take.timecode = timecodeText(counter);
        if (hasDates && !dice.outOf(8))
            take.date = clockText(clock);
        script.take(take);
        counter += take.frames;
        constexpr std::array<int, 6> jumps{-600, -1, 0, 1, 2, 900};
        clock = std::clamp(clock + take.frames / 25 + jumps.at(static_cast<std::size_t>(dice.number(0, 5))),
                           0, 86'399);
    }
    std::set<int> isDamaged;
    for (int count = dice.number(0, 5); count > 0; --count) {
        const int frame = dice.number(0, script.length() - 1);
        if (script.at(frame).sizeBytes != 0 && isDamaged.insert(frame).second)
            damage(script, frame, dice);
    }
    return script;
}

ModelSettings randomSettings(Dice& dice) {
    ModelSettings settings;
    settings.detectScene = !dice.outOf(5);
    settings.framesToSkip = dice.outOf(3) ? dice.number(1, 24) : 0;
    settings.sampling = !dice.outOf(3);
    settings.intervalInSeconds = dice.outOf(3) ? 2 : 1;
    return settings;
}

void put(LoggingWorld& world, const ModelSettings& settings) {
    world.set(BXMCDetectScene, settings.detectScene);
    world.set(BXMCNbDropFrame, settings.framesToSkip);
    world.set(BXMCFrameSampling, settings.sampling);
    world.set(BXMCSampleInterval, settings.intervalInSeconds - 1);
    world.set(BXMCActionAfterRecord, 0);
}

/// The tape, frame by frame, for whoever looks at a failed run.
std::string describe(const TapeScript& script, const ModelSettings& settings) {
    std::string lines = "scenes " + std::to_string(settings.detectScene) + ", skip " +
                        std::to_string(settings.framesToSkip) + ", sampling " +
                        std::to_string(settings.sampling) + ", interval " +
                        std::to_string(settings.intervalInSeconds) + "\n";
    for (int i = 0; i < script.length(); ++i) {
        const ScriptFrame& frame = script.at(i);
        lines +=
            std::to_string(i) + " " + (frame.sizeBytes == 0 ? "blank" : text(frame.timecode)) + " " +
            (frame.date ? clockText(frame.date->hours * 3600 + frame.date->minutes * 60 + frame.date->seconds)
                        : std::string("no date")) +
            "\n";
    }
    return lines;
}

/// A frame that is not blank, at or after `from`; -1 when there is none.
int frameFrom(const TapeScript& script, int from) {
    for (int frame = from; frame < script.length(); ++frame) {
        if (script.at(frame).sizeBytes != 0)
            return frame;
    }
    return -1;
}

/// What the messages must be like, whatever is on the tape: begin, then will and did in turn, then end.
void expectGrammar(const Entries& messages) {
    bool isBegun = false;
    std::string open;
    for (const std::string& message : messages) {
        const std::string clip =
            message.size() > 5 ? message.substr(message.find(' ') + 1, 4) : std::string();
        if (message == "begin" || message == "end") {
            ASSERT_EQ(isBegun, message == "end");
            ASSERT_EQ(open, "");
            isBegun = !isBegun;
        } else if (message.starts_with("will")) {
            ASSERT_TRUE(isBegun);
            ASSERT_EQ(open, "");
            open = clip;
        } else {
            ASSERT_EQ(open, clip) << "each clip is reported once";
            open.clear();
        }
    }
    ASSERT_FALSE(isBegun);
}

/// How a report of the model reads in the journal.
std::string reportOf(const ModelClip& clip, const std::string& id) {
    Report report{.id = id, .start = text(clip.start), .end = text(clip.end), .aspect = clip.aspect};
    if (clip.date) {
        const auto second = clip.date->time_since_epoch().count() % 86'400;
        report.date = clockText(static_cast<int>(second));
    }
    if (clip.start && clip.end) { // field by field, each borrowing once; hours may become negative
        const SMPTETime from = clip.start.SMPTETimeValue();
        SMPTETime less = clip.end.SMPTETimeValue();
        const auto minus = [](std::int16_t& field, int by) { field = static_cast<std::int16_t>(field - by); };
        minus(less.mFrames, from.mFrames);
        minus(less.mSeconds, from.mSeconds);
        minus(less.mMinutes, from.mMinutes);
        minus(less.mHours, from.mHours);
        if (less.mFrames < 0) {
            minus(less.mFrames, -25);
            minus(less.mSeconds, 1);
        }
        if (less.mSeconds < 0) {
            minus(less.mSeconds, -60);
            minus(less.mMinutes, 1);
        }
        if (less.mMinutes < 0) {
            minus(less.mMinutes, -60);
            minus(less.mHours, 1);
        }
        report.duration = text(TimecodeValue::valueWithSMPTETime(less));
    }
    return did(report);
}

void compare(const LoggingWorld& world, const std::vector<ModelClip>& clips) {
    std::size_t reported = 0;
    for (const std::string& message : world.messages()) {
        if (!message.starts_with("did"))
            continue;
        ASSERT_LT(reported, clips.size());
        const std::string id = message.substr(4, 4);
        const ModelClip& clip = clips[reported++];
        EXPECT_EQ(message, reportOf(clip, id));
        EXPECT_EQ(world.thumbnails(id), clip.thumbnails) << "clip " << id;
        if (!clip.isReportedWithoutMovie) {
            EXPECT_EQ(world.movie(id), clip.frames) << "clip " << id;
        }
    }
    EXPECT_EQ(reported, clips.size());
}

void logRandomTape(std::uint64_t seed) {
    Dice dice(seed);
    const TapeScript script = randomTape(dice);
    const ModelSettings settings = randomSettings(dice);
    Equipment equipment;
    if (dice.outOf(2))
        equipment.orderSeed = seed;
    LoggingWorld world(script, equipment);
    SCOPED_TRACE(std::getenv("MERRO_SEED") != nullptr // NOLINT(concurrency-mt-unsafe)
                     ? describe(script, settings)
                     : std::string("MERRO_SEED also shows the tape"));
    put(world, settings);
    LoggingModel model(script, settings);

    // Some frames of preview, then perhaps a pause; then the recording, ended by hand or by the tape.
    std::size_t previewed = 0;
    const int first = dice.outOf(3) ? frameFrom(script, dice.number(0, script.length() - 1)) : -1;
    if (first >= 0) {
        world.controller->setDevicePlaying(true);
        world.playTo(first);
        if (dice.outOf(2))
            world.controller->setDevicePlaying(false);
        world.passTime(std::chrono::milliseconds(0));
        previewed = world.deck->delivered().size();
    }
    const bool isPaused = world.controller->isDevicePause();
    const TimecodeValue startAt = isPaused ? world.controller->currentTimecodeValue() : TimecodeValue();
    world.start();
    const std::size_t runBack = world.deck->delivered().size();
    const int last = dice.outOf(2) ? frameFrom(script, dice.number(0, script.length() - 1)) : -1;
    if (last > first)
        world.playTo(last);
    else
        world.playToEnd();
    world.stop();
    const std::size_t recorded = world.deck->delivered().size();
    world.playToEnd();

    const std::vector<int> delivered = world.deck->delivered();
    for (std::size_t i = 0; i < (startAt ? runBack : previewed); ++i)
        model.preview(delivered[i]);
    model.start(startAt);
    for (std::size_t i = startAt ? runBack : previewed; i < recorded; ++i)
        model.record(delivered[i]);
    model.stop();

    ASSERT_NO_FATAL_FAILURE(expectGrammar(world.messages()));
    ASSERT_NO_FATAL_FAILURE(compare(world, model.clips));
    EXPECT_TRUE(world.alertsShown().empty());
    world.expectAllFilesClosed();
}

TEST(RandomTape, everyFrameIsInTheClipThatTheRuleSays) {
    const TimeZone zone("UTC");
    std::uint64_t from = 1;
    std::uint64_t to = kSeeds;
    if (const char* seeds = std::getenv("MERRO_SEEDS")) // NOLINT(concurrency-mt-unsafe)
        to = std::strtoull(seeds, nullptr, 10);
    if (const char* seed = std::getenv("MERRO_SEED")) // NOLINT(concurrency-mt-unsafe)
        from = to = std::strtoull(seed, nullptr, 10);
    for (std::uint64_t seed = from; seed <= to; ++seed) {
        SCOPED_TRACE("repeat with: MERRO_SEED=" + std::to_string(seed) +
                     " test_scenarios --gtest_filter=RandomTape.*");
        logRandomTape(seed);
        if (HasFailure())
            return;
    }
}

} // namespace
} // namespace merro::test
