// The running timecode and recording date of a made tape, and the faults of its frames.
//
// One thread at a time.
#pragma once

#include "platform/ffmpeg/TapeScenario.h"
#include "platform/SMPTETime.h"

#include <cstdint>
#include <span>
#include <vector>

namespace merro::platform::ffmpeg {

class TapeStamp {
public:
    /// Begins a take: from here on its timecode and date count. `take` must outlive the next call.
    void begin(const Take& take, TapeSystem system);

    /// Stamps the take's next frame and gives it its faults. Valid until the next call.
    [[nodiscard]] std::span<const std::uint8_t> stamp(std::span<const std::uint8_t> frame);

private:
    void advanceTimecode();
    [[nodiscard]] CalendarFields dateNow() const;
    void applyFault(const TakeFault& fault, deck::DVFrameBuilder& builder) const;

    const Take* m_take = nullptr;
    TapeSystem m_system = TapeSystem::System625_50;
    std::int64_t m_frameOfTake = 0;
    std::int64_t m_frameOfTape = 0;
    SMPTETime m_timecode; ///< of the next frame
    CalendarFields m_date{2000, 1, 1, 0, 0, 0};
    std::int64_t m_framesSinceDate = 0;
    std::vector<std::uint8_t> m_bytes;
};

} // namespace merro::platform::ffmpeg
