#include "dv/FrameDate.h"

#include "dv/DVConstants.h"
#include "dv/DVDifSequence.h"
#include "platform/Log.h"

#include <stdexcept>
#include <string>

namespace merro {

FrameDate findFrameDate(const platform::FrameBytes& frame) {
    FrameDate found;
    if (frame.isNull())
        return found;
    const platform::FrameBytes borrowed = frame.borrowed();
    for (int index = 0; index < DIF_SEQ_COUNT_MIN && !found.date; ++index) {
        DVDifSequence sequence(borrowed, static_cast<unsigned>(index));
        try {
            sequence.decodeSequence();
        } catch (const std::out_of_range& error) {
            platform::processLog().line("Cannot decode DIF sequence " + std::to_string(index) + ": " +
                                        error.what());
            continue;
        }
        found = {.date = sequence.date(),
                 .captureDateTime = sequence.captureDateTime(),
                 .aspectRatio = sequence.aspectRatio(),
                 .pixelSampling = sequence.pixelSampling(),
                 .stillPicture = sequence.stillPicture(),
                 .interlaced = sequence.interlaced(),
                 .sequenceIndex = index};
    }
    return found;
}

} // namespace merro
