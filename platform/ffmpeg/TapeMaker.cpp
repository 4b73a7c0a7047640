#include "platform/ffmpeg/TapeMaker.h"

#include "platform/ffmpeg/DVEncoder.h"
#include "platform/ffmpeg/OutputFiles.h"
#include "platform/ffmpeg/PictureSource.h"
#include "platform/ffmpeg/SoundSource.h"
#include "platform/ffmpeg/TapeStamp.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <utility>

namespace merro::platform::ffmpeg {

namespace {

constexpr std::int64_t kProgressEveryFrames = 25;
constexpr double kLongestTakeInSeconds = 24 * 3600.0;

std::int64_t framesPerSecond(TapeSystem system) {
    return system == TapeSystem::System525_60 ? 30 : 25;
}

std::int64_t framesOf(const Take& take, TapeSystem system) {
    const double rate = system == TapeSystem::System525_60 ? 30000.0 / 1001 : 25;
    return take.frames > 0 ? take.frames : std::llround(take.seconds * rate);
}

std::int64_t frameBytes(TapeSystem system) {
    return system == TapeSystem::System525_60 ? 120000 : 144000;
}

/// Bytes that look like nothing: the same on every run, and never a frame's first byte.
std::vector<std::uint8_t> junk(std::int64_t bytes) {
    std::vector<std::uint8_t> result(static_cast<std::size_t>(bytes));
    std::uint32_t state = 1;
    for (auto& byte : result) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<std::uint8_t>(state >> 24);
        if (byte == 0x1F)
            byte = 0;
    }
    return result;
}

Error stopped() {
    return {"the making of the tape was stopped", {}, ECANCELED};
}

std::string problemOfFault(const TakeFault& fault, TapeSystem system) {
    const int sequences = system == TapeSystem::System525_60 ? 10 : 12;
    if (fault.firstFrame < 0 || fault.lastFrame < fault.firstFrame)
        return "a fault's last frame must not be before its first";
    if (std::ranges::any_of(fault.sequences,
                            [&](int sequence) { return sequence < 0 || sequence >= sequences; }))
        return "a frame's sequences are counted from 0 to " + std::to_string(sequences - 1);
    return {};
}

/// Empty where there is nothing wrong.
std::string problemOfTake(const Take& take, TapeSystem system) {
    if (take.frames < 0 || !(take.seconds >= 0) || take.seconds > kLongestTakeInSeconds ||
        framesOf(take, system) <= 0)
        return "it needs a length in seconds, up to a day, or in frames";
    if (take.repeatPicturesAfterInFrame < 0 || take.junkBytesAfter < 0)
        return "counts must not be negative";
    if (take.dropFrame && system != TapeSystem::System525_60)
        return "only 525/60 has drop-frame timecode";
    if (!(take.sound.frequencyInHertz > 0 && take.sound.frequencyInHertz < DVEncoder::kSoundRate / 2.0))
        return "the sound's frequency must be above 0 and below 24000 hertz";
    for (const auto& fault : take.faults)
        if (auto problem = problemOfFault(fault, system); !problem.empty())
            return problem;
    PictureSource picture;
    if (const auto error = picture.open(take.picture, take.label, system))
        return error->text();
    return {};
}

/// Makes the pictures and the sound of one take, encoded but not stamped.
class TakeFrames {
public:
    explicit TakeFrames(const Take& take) : m_take(take), m_sound(take.sound, DVEncoder::kSoundRate) {}

    std::optional<Error> open(TapeSystem system) {
        // Whole seconds: so many frames hold whole cycles of the sound's pattern, and beeps keep their
        // distance.
        const std::int64_t second = framesPerSecond(system);
        m_period = (m_take.repeatPicturesAfterInFrame + second - 1) / second * second;
        if (m_period >= framesOf(m_take, system))
            m_period = 0;
        if (auto error = m_picture.open(m_take.picture, m_take.label, system))
            return error;
        return m_encoder.open(system);
    }

    /// Empty when the picture has come to its end, or cannot be encoded.
    std::span<const std::uint8_t> frame(std::int64_t index) {
        if (m_period > 0 && index >= m_period)
            return m_kept[static_cast<std::size_t>(index % m_period)];
        const AVFrame* picture = m_picture.next();
        if (picture == nullptr)
            return {};
        const auto encoded = m_encoder.encode(*picture, m_sound.next(m_encoder.samplesOfFrame(index)));
        if (m_period > 0)
            m_kept.emplace_back(encoded.begin(), encoded.end());
        return encoded;
    }

private:
    const Take& m_take;
    std::int64_t m_period = 0; ///< 0 where every frame is encoded
    PictureSource m_picture;
    SoundSource m_sound;
    DVEncoder m_encoder;
    std::vector<std::vector<std::uint8_t>> m_kept;
};

/// Delivers a scenario piece by piece.
class TapeRun {
public:
    TapeRun(const TapeScenario& scenario, const TapeMaker::Receiver& receiver,
            const TapeMaker::Progress& progress, std::int64_t framesInAll)
        : m_scenario(scenario), m_receiver(receiver), m_progress(progress), m_framesInAll(framesInAll) {}

    std::optional<Error> run() {
        for (std::size_t number = 0; number < m_scenario.takes.size(); ++number)
            if (auto error = makeTake(m_scenario.takes[number], number + 1))
                return error;
        const auto tail = std::min(static_cast<std::size_t>(m_scenario.tailBytes), m_last.size());
        if (tail > 0 && !m_receiver(std::span(m_last).first(tail)))
            return stopped();
        if (m_progress)
            (void)m_progress(m_framesDone, m_framesInAll);
        return std::nullopt;
    }

private:
    std::optional<Error> makeTake(const Take& take, std::size_t number) {
        const TapeSystem system = take.system.value_or(m_scenario.system);
        TakeFrames frames(take);
        if (auto error = frames.open(system))
            return error;
        m_stamp.begin(take, system);
        const std::int64_t count = framesOf(take, system);
        for (std::int64_t index = 0; index < count; ++index) {
            const auto frame = frames.frame(index);
            if (static_cast<std::int64_t>(frame.size()) != frameBytes(system))
                return Error{"take " + std::to_string(number) + ": there is no frame " +
                                 std::to_string(index) + " of '" + take.picture + "'",
                             "use a picture that does not end", 0};
            const auto stamped = m_stamp.stamp(frame);
            if (index == count - 1)
                m_last.assign(stamped.begin(), stamped.end());
            if (!m_receiver(stamped) || !goesOn())
                return stopped();
        }
        if (take.junkBytesAfter > 0 && !m_receiver(junk(take.junkBytesAfter)))
            return stopped();
        return std::nullopt;
    }

    bool goesOn() {
        ++m_framesDone;
        return !m_progress || m_framesDone % kProgressEveryFrames != 0 ||
               m_progress(m_framesDone, m_framesInAll);
    }

    const TapeScenario& m_scenario;
    const TapeMaker::Receiver& m_receiver;
    const TapeMaker::Progress& m_progress;
    std::int64_t m_framesInAll;
    std::int64_t m_framesDone = 0;
    TapeStamp m_stamp;
    std::vector<std::uint8_t> m_last;
};

} // namespace

TapeMaker::TapeMaker(TapeScenario scenario) : m_scenario(std::move(scenario)) {}

std::vector<std::string> TapeMaker::pictureNames() {
    return PictureSource::names();
}

std::int64_t TapeMaker::frameCount() const {
    std::int64_t frames = 0;
    for (const auto& take : m_scenario.takes)
        frames += framesOf(take, take.system.value_or(m_scenario.system));
    return frames;
}

std::optional<Error> TapeMaker::check() const {
    if (m_scenario.takes.empty())
        return Error{"the scenario has no takes", {}, 0};
    if (m_scenario.tailBytes < 0 || m_scenario.tailBytes >= frameBytes(m_scenario.system))
        return Error{"the tail must be shorter than a frame", {}, 0};
    for (std::size_t number = 0; number < m_scenario.takes.size(); ++number) {
        const Take& take = m_scenario.takes[number];
        const auto problem = problemOfTake(take, take.system.value_or(m_scenario.system));
        if (!problem.empty())
            return Error{"take " + std::to_string(number + 1) + ": " + problem, {}, 0};
    }
    return std::nullopt;
}

std::optional<Error> TapeMaker::deliver(const Receiver& receiver, const Progress& progress) {
    if (auto error = check())
        return error;
    return TapeRun(m_scenario, receiver, progress, frameCount()).run();
}

std::optional<Error> TapeMaker::write(const std::string& path, ExistingFile existing,
                                      const Progress& progress) {
    const auto files = makeOutputFiles();
    if (existing == ExistingFile::Keep && files->exists(path))
        return fileError("write the tape", path, EEXIST);
    std::string partPath;
    int code = 0;
    auto file = createBeside(*files, path, "part", partPath, code);
    if (!file)
        return fileError("write the tape", path, code);

    std::int64_t position = 0;
    auto error = deliver(
        [&](std::span<const std::uint8_t> bytes) {
            position += static_cast<std::int64_t>(file->write(bytes, position, code));
            return code == 0;
        },
        progress);
    file.reset();
    if (code == 0 && !error) {
        if (existing == ExistingFile::Keep)
            code = files->renameWithoutReplacing(partPath, path);
        else if (std::rename(partPath.c_str(), path.c_str()) != 0)
            code = errno;
    }
    if (code != 0)
        error = fileError("write the tape", path, code);
    if (error)
        files->remove(partPath);
    return error;
}

} // namespace merro::platform::ffmpeg
