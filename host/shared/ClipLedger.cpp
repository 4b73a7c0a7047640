#include "host/shared/ClipLedger.h"

#include "capture/ClipInfoKeys.h"
#include "dv/DVConstants.h"
#include "host/shared/ClipsJson.h"
#include "host/shared/TapeText.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <optional>
#include <unistd.h>
#include <vector>

namespace merro::host {

using platform::Dictionary;
using platform::Value;

namespace {

std::string fileName(const std::string& path) {
    return std::filesystem::path(path).filename().string();
}

/// The number in front of the first dot: of "0007", "0007.mov", ".0007.thumbnails.part".
int clipNumber(std::string_view name) {
    if (name.starts_with('.'))
        name.remove_prefix(1);
    int number = 0;
    std::from_chars(name.data(), name.data() + name.size(), number);
    return number;
}

std::optional<std::string> timecodeEntry(const Dictionary& info, std::string_view key) {
    const Value* entry = find(info, key);
    const TimecodeValue* timecode = entry != nullptr ? entry->getIf<TimecodeValue>() : nullptr;
    return timecode != nullptr ? timecodeText(*timecode) : std::nullopt;
}

ClipEntry clipFromReport(const Dictionary& info) {
    ClipEntry clip;
    if (const Value* clipId = find(info, kBXMCClipId))
        clip.number = clipNumber(clipId->stringValue());
    const Value* date = find(info, kBXMCClipRecordingDate);
    if (const auto* recorded = date != nullptr ? date->getIf<platform::DateRef>() : nullptr)
        clip.recordingDate = wallClockText(*recorded);
    clip.startTimecode = timecodeEntry(info, kBXMCClipStartTimecode);
    clip.endTimecode = timecodeEntry(info, kBXMCClipEndTimecode);
    clip.duration = timecodeEntry(info, kBXMCClipDuration);
    if (const Value* aspect = find(info, kBXMCClipAspectRatio))
        clip.aspectRatio = static_cast<int>(aspect->integerValue());
    return clip;
}

/// The first frame of a thumbnails file; its header block says whether it is 525/60 or 625/50.
std::vector<std::uint8_t> firstFrame(const std::string& path) {
    std::vector<std::uint8_t> frame(FRAME_SIZE_625_50);
    std::ifstream file(path, std::ios::binary);
    file.read(reinterpret_cast<char*>(frame.data()), static_cast<std::streamsize>(frame.size()));
    frame.resize(static_cast<std::size_t>(file.gcount()));
    if (frame.size() < FRAME_SIZE_525_60)
        return {};
    const bool is625 = (frame[3] & 0x80U) != 0 && frame.size() == FRAME_SIZE_625_50;
    frame.resize(is625 ? FRAME_SIZE_625_50 : FRAME_SIZE_525_60);
    return frame;
}

void addProblem(ClipEntry& clip, const std::string& problem) {
    clip.problem += (clip.problem.empty() ? "" : "; ") + problem;
}

} // namespace

ClipLedger::ClipLedger(const LoggingFolder& folder, CatalogueKeeper& keeper,
                       platform::native::BackgroundFiles& files, RunMessages& messages, Settings settings)
    : m_folder(folder), m_keeper(keeper), m_files(files), m_messages(messages),
      m_settings(std::move(settings)), m_nextNumber(m_settings.firstNumber) {}

ClipLedger::~ClipLedger() = default;

Dictionary ClipLedger::willRecord() {
    const int number = m_nextNumber++;
    const ClipPaths paths = m_folder.paths(number);
    m_framesLostBefore = m_settings.framesLost();
    if (m_settings.movies) {
        const std::lock_guard lock(m_mutex);
        m_withoutMovie.insert(number);
    }
    m_messages.event({{"event", "willRecord"}, {"clipId", paths.clipId}});
    return {{std::string(kBXMCClipId), paths.clipId},
            {std::string(kBXMCMoviePath), paths.movie},
            {std::string(kBXMCThumbnailsPath), paths.thumbnailsInTheMaking}};
}

void ClipLedger::didRecord(const Dictionary& info) {
    ClipEntry clip = clipFromReport(info);
    clip.framesLost = m_settings.framesLost() - m_framesLostBefore;
    if (!clip.startTimecode) {
        const std::lock_guard lock(m_mutex);
        m_withoutTimecode.insert(clip.number);
    }
    ++m_clipCount;
    m_messages.event({{"event", "didRecord"}, {"clip", clipAsJson(clip)}});
    m_keeper.addClip(clip);
    finishThumbnails(clip.number);
}

void ClipLedger::finishThumbnails(int number) {
    m_files.post([this, number] {
        const ClipPaths paths = m_folder.paths(number);
        std::error_code error;
        if (std::filesystem::file_size(paths.thumbnailsInTheMaking, error) == 0 && !error) {
            ::unlink(paths.thumbnailsInTheMaking.c_str()); // a clip that got no frame
            return;
        }
        if (error)
            return; // the file could not be had, and the user has been told
        const auto problem =
            platform::native::renameWithoutReplacing(paths.thumbnailsInTheMaking, paths.thumbnails);
        if (problem) {
            m_messages.fail(*problem);
            return;
        }
        m_keeper.changeClip(
            number, [name = fileName(paths.thumbnails)](ClipEntry& clip) { clip.thumbnailPath = name; });
        if (m_settings.writePoster)
            m_posters.post([this, number] { makePoster(number); });
    });
}

void ClipLedger::makePoster(int number) {
    const ClipPaths paths = m_folder.paths(number);
    const std::vector<std::uint8_t> frame = firstFrame(paths.thumbnails);
    if (frame.empty())
        return;
    if (const auto problem = m_settings.writePoster(frame, paths.poster)) {
        m_messages.fail(*problem);
        m_keeper.changeClip(number, [text = problem->text()](ClipEntry& clip) { addProblem(clip, text); });
        return;
    }
    const std::string name = fileName(paths.poster);
    m_keeper.changeClip(number, [name](ClipEntry& clip) { clip.posterPath = name; });
    m_messages.event({{"event", "posterFinished"}, {"clipId", paths.clipId}, {"posterPath", name}});
}

void ClipLedger::movieFinished(const platform::session::RecordingResult& result) {
    const std::string name = fileName(result.path);
    const int number = clipNumber(name);
    {
        const std::lock_guard lock(m_mutex);
        m_withoutMovie.erase(number);
    }
    const std::string problem = result.error ? result.error->text() : std::string();
    const bool isThere = result.isPlayable;
    m_keeper.changeClip(number, [name, problem, isThere, lost = result.framesLost](ClipEntry& clip) {
        if (isThere)
            clip.moviePath = name;
        // Frames that had been handed over may be given up only after the clip has been reported.
        clip.framesLost = std::max(clip.framesLost, lost);
        if (!problem.empty())
            addProblem(clip, problem);
    });
    nlohmann::ordered_json event = {
        {"event", "movieFinished"},       {"clipId", clipIdOfNumber(number)}, {"moviePath", nullptr},
        {"frames", result.framesWritten}, {"framesLost", result.framesLost},  {"problem", nullptr}};
    if (isThere)
        event["moviePath"] = name;
    if (!problem.empty())
        event["problem"] = problem;
    m_messages.event(event);
    if (result.error)
        m_messages.fail(*result.error);
}

void ClipLedger::framesMissingInFile(const std::string& path, std::int64_t frames) {
    m_keeper.changeClip(clipNumber(fileName(path)), [frames](ClipEntry& clip) {
        addProblem(clip, fmt::format("{} sample frames are not in the thumbnails file", frames));
    });
}

void ClipLedger::finish() {
    m_posters.finish();
    std::set<int> withoutMovie;
    std::set<int> withoutTimecode;
    {
        const std::lock_guard lock(m_mutex);
        withoutMovie.swap(m_withoutMovie);
        withoutTimecode.swap(m_withoutTimecode);
    }
    for (const int number : withoutMovie) {
        const char* const why = withoutTimecode.contains(number)
                                    ? "no movie: the tape has no timecode here"
                                    : "no movie: none of its frames was recorded";
        m_keeper.changeClip(number, [why](ClipEntry& clip) { addProblem(clip, why); });
    }
    if (!withoutMovie.empty())
        m_messages.warn(
            fmt::format("{} of the clips got no movie, clip {} the first; their thumbnails and reports "
                        "are kept",
                        withoutMovie.size(), clipIdOfNumber(*withoutMovie.begin())));
}

} // namespace merro::host
