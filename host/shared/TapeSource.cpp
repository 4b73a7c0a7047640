#include "host/shared/TapeSource.h"

#include "dv/DVConstants.h"
#include "host/shared/Failure.h"
#include "host/shared/Movies.h"
#include "platform/deck/TapeFile.h"

#include <fmt/format.h>

#include <filesystem>

namespace merro::host {

namespace deck = platform::deck;

std::string systemOfFrame(std::size_t frameBytes) {
    if (frameBytes == FRAME_SIZE_525_60)
        return "525/60";
    return frameBytes == FRAME_SIZE_625_50 ? "625/50" : "";
}

TapeSource openTapeSource(const std::string& path) {
    deck::TapeOrError opened = deck::openTape(
        path, [](const std::string& container) { return movieLibrary().openContainerTape(container); });
    if (const auto* problem = std::get_if<deck::TapeError>(&opened))
        throw Failure(problem->error.text(), problem->isNotDV() ? ExitStatus::NotDV : ExitStatus::Failed);
    TapeSource source;
    source.tape = std::move(std::get<std::unique_ptr<deck::Tape>>(opened));
    const std::filesystem::path file(path);
    std::error_code error;
    source.path = std::filesystem::absolute(file, error).lexically_normal().string();
    source.name = file.stem().string();
    const auto first = source.tape->frameAt(0);
    if (!first)
        throw Failure(fmt::format("{} holds no DV frame", path), ExitStatus::NotDV);
    source.system = systemOfFrame(first->bytes.size());
    source.framesPerSecond = first->bytes.size() == FRAME_SIZE_525_60 ? TIMEBASE_525_60 : TIMEBASE_625_50;
    return source;
}

} // namespace merro::host
