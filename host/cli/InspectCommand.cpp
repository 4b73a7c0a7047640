// merro inspect: what each frame of a tape says about itself.
#include "host/cli/Commands.h"
#include "host/shared/FrameInspector.h"
#include "host/shared/TapeSource.h"

#include <fmt/format.h>

#include <cstdio>

namespace merro::host {

namespace {

/// False when nobody reads any more.
bool writeLine(std::string line) {
    line += '\n';
    return std::fwrite(line.data(), 1, line.size(), stdout) == line.size();
}

} // namespace

ExitStatus runInspect(const InspectArguments& arguments) {
    const FrameRange range = arguments.frames.empty() ? FrameRange{} : parseFrameRange(arguments.frames);
    TapeSource source = openTapeSource(arguments.source);
    if (!arguments.json)
        (void)writeLine(headingForPeople());
    const std::int64_t count =
        forEachFrame(*source.tape, range, [&](std::int64_t index, const platform::deck::TapeFrame& frame) {
            return writeLine(arguments.json ? frameJson(index, frame) : frameLine(index, frame));
        });
    (void)std::fflush(stdout);
    for (const auto& finding : source.tape->findings())
        fmt::print(stderr, "At byte {}: {} bytes skipped, {}\n", finding.offsetBytes, finding.lengthBytes,
                   finding.what);
    if (count == 0)
        throw Failure(fmt::format("{} ends before frame {}", arguments.source, range.first));
    return ExitStatus::Done;
}

} // namespace merro::host
