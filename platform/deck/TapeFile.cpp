#include "platform/deck/TapeFile.h"

#include "dv/DVConstants.h"
#include "platform/deck/FrameScanner.h"
#include "platform/deck/MappedFile.h"
#include "platform/deck/RawTape.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <utility>

namespace merro::platform::deck {

namespace {

using Bytes = std::span<const std::uint8_t>;

TapeError refusal(TapeProblem problem, const std::string& path, const std::string& what, std::string remedy,
                  int systemCode = 0) {
    return {problem, {"\"" + path + "\" " + what, std::move(remedy), systemCode}};
}

std::optional<TapeError> refusalBeforeReading(const std::string& path) {
    struct stat status {};
    if (::stat(path.c_str(), &status) != 0) {
        const int code = errno;
        if (code == ENOENT || code == ENOTDIR)
            return refusal(TapeProblem::NoSuchFile, path, "does not exist", {}, code);
        return refusal(TapeProblem::Unreadable, path, "cannot be read", std::generic_category().message(code),
                       code);
    }
    if (S_ISDIR(status.st_mode))
        return refusal(TapeProblem::Folder, path, "is a folder", "name a DV file in it");
    if (!S_ISREG(status.st_mode))
        return refusal(TapeProblem::Unreadable, path, "is no file", "name a DV file");
    if (status.st_size == 0)
        return refusal(TapeProblem::Empty, path, "is empty", {});
    return std::nullopt;
}

bool hasText(Bytes bytes, std::size_t offset, std::string_view text) {
    return bytes.size() >= offset + text.size() &&
           std::memcmp(bytes.data() + offset, text.data(), text.size()) == 0;
}

/// RIFF (AVI) or one of the boxes that QuickTime files begin with.
bool isContainer(Bytes bytes) {
    constexpr std::array boxes{std::string_view("ftyp"), std::string_view("moov"), std::string_view("mdat"),
                               std::string_view("wide"), std::string_view("free"), std::string_view("skip"),
                               std::string_view("pnot")};
    const bool isAvi = hasText(bytes, 0, "RIFF") && hasText(bytes, 8, "AVI ");
    return isAvi || std::ranges::any_of(boxes, [&](std::string_view box) { return hasText(bytes, 4, box); });
}

/// MPEG transport stream (ISO/IEC 13818-1): 47 every 188 bytes, or every 192 with a time stamp before each
/// packet.
bool isTransportStream(Bytes bytes) {
    constexpr std::size_t packets = 8;
    constexpr std::uint8_t syncByte = 0x47;
    for (const std::size_t distance : {std::size_t{188}, std::size_t{192}}) {
        for (std::size_t start = 0; start < distance && start + (packets - 1) * distance < bytes.size();
             ++start) {
            std::size_t found = 0;
            while (found < packets && bytes[start + found * distance] == syncByte)
                ++found;
            if (found == packets)
                return true;
        }
    }
    return false;
}

/// More than 25 Mb/s: the VAUX source pack (60) names another compression (STYPE), or a header block says
/// second channel.
bool isFasterThan25Mbs(Bytes bytes, std::size_t frameStart) {
    constexpr std::size_t sourcePack = 5 * BLOCKS_SIZE + 48; // in VA2
    constexpr unsigned compression422 = 4;
    constexpr unsigned firstHighDefinition = 0x14;
    constexpr unsigned noInformation = 0x1F;
    const std::uint8_t* const frame = bytes.data() + frameStart;
    if (isFrameStart(bytes, frameStart) && frame[sourcePack] == 0x60) {
        const unsigned stype = frame[sourcePack + 3] & 0x1FU;
        if (stype == compression422 || (stype >= firstHighDefinition && stype != noInformation))
            return true;
    }
    const std::array<std::size_t, 2> secondChannels{frameStart + FRAME_SIZE_525_60,
                                                    frameStart + FRAME_SIZE_625_50};
    return std::ranges::any_of(secondChannels, [&](std::size_t start) {
        return isFrameStart(bytes, start) && (bytes[start + 1] & 0x08) != 0;
    });
}

} // namespace

TapeOrError openTape(const std::string& path, const ContainerOpener& openContainer) {
    if (std::optional<TapeError> error = refusalBeforeReading(path))
        return std::move(*error);
    auto mapped = MappedFile::map(path);
    if (const Error* error = std::get_if<Error>(&mapped))
        return TapeError{TapeProblem::Unreadable, *error};
    const auto& file = std::get<std::shared_ptr<MappedFile>>(mapped);
    const Bytes bytes = file->bytes();
    if (isContainer(bytes)) {
        if (openContainer)
            return openContainer(path);
        return refusal(TapeProblem::NotDV, path,
                       "is an AVI or QuickTime file, which this program cannot read",
                       "copy the DV out of it: ffmpeg -i FILE -map 0:v -c copy -f rawvideo FILE.dv");
    }
    if (isTransportStream(bytes))
        return refusal(TapeProblem::HDV, path, "is HDV, not DV",
                       "play the tape back with the camcorder's DV down-conversion switched on");
    auto tape = std::make_unique<RawTape>(file);
    const std::optional<TapeFrame> first = tape->frameAt(0);
    if (!first)
        return refusal(TapeProblem::NotDV, path, "holds no DV frame", "name a raw DV file of 25 Mb/s");
    if (isFasterThan25Mbs(bytes, static_cast<std::size_t>(first->offsetBytes)))
        return refusal(TapeProblem::FiftyMbs, path, "is DV of 50 or 100 Mb/s",
                       "only DV of 25 Mb/s can be read");
    return tape;
}

} // namespace merro::platform::deck
