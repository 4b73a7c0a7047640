#include "platform/ffmpeg/DVFrameFacts.h"

#include "dv/FrameDate.h"

namespace merro::platform::ffmpeg {

namespace {

constexpr std::size_t kBlockBytes = 80;
constexpr std::size_t kSequenceBytes = 150 * kBlockBytes;
constexpr std::size_t kPackBytes = 5;

using Pack = std::span<const std::uint8_t, kPackBytes>;

enum PackId : std::uint8_t {
    kTimecode = 0x13,
    kSourceControl = 0x61,
};

/// Calls `visit` with every subcode pack: six to each of blocks 1 and 2, eight bytes apart.
template <typename Visit>
void forEachSubcodePack(std::span<const std::uint8_t> frame, Visit visit) {
    for (std::size_t sequence = 0; sequence < frame.size(); sequence += kSequenceBytes)
        for (std::size_t block = 1; block <= 2; ++block)
            for (std::size_t sync = 0; sync < 6; ++sync)
                visit(Pack(frame.subspan(sequence + block * kBlockBytes + 6 + 8 * sync).first<kPackBytes>()));
}

/// Calls `visit` with the pack of each sequence that lies where source control belongs: in odd sequences the
/// second of block 3, in even ones the eleventh of block 5.
template <typename Visit>
void forEachSourceControlPack(std::span<const std::uint8_t> frame, Visit visit) {
    for (std::size_t sequence = 0; sequence < frame.size() / kSequenceBytes; ++sequence) {
        const std::size_t place = sequence % 2 == 1 ? 3 * kBlockBytes + 8 : 5 * kBlockBytes + 53;
        visit(Pack(frame.subspan(sequence * kSequenceBytes + place).first<kPackBytes>()));
    }
}

/// DV cameras are not older than this, and players misread the date of a movie from before 1970.
constexpr int kFirstYearOfDV = 1995;

/// A recording date that no calendar has, or no camera can have meant, is none.
std::optional<CalendarFields> recordingDate(std::span<const std::uint8_t> frame) {
    const std::shared_ptr<const void> unowned(std::shared_ptr<const void>(), frame.data());
    const auto found = findFrameDate({unowned, frame}).captureDateTime;
    if (!found || !found->isFullySet())
        return std::nullopt;
    const CalendarFields fields{found->year(),      found->monthOfYear(),  found->dayOfMonth(),
                                found->hourOfDay(), found->minuteOfHour(), found->secondOfMinute()};
    const bool isReal = fields.year >= kFirstYearOfDV && fields == normalisedCalendar(fields);
    return isReal ? std::optional(fields) : std::nullopt;
}

} // namespace

DVFrameFacts factsOfFrame(std::span<const std::uint8_t> frame) {
    DVFrameFacts facts;
    facts.is525_60 = frame.size() == kFrameBytes525_60;
    const int trackApplication = frame[4] & 0x07; // 0 in IEC 61834, 1 in SMPTE 314M
    facts.is411 = facts.is525_60 || trackApplication == 1;

    int wideVotes = 0;
    forEachSourceControlPack(frame, [&](Pack pack) {
        if (pack[0] != kSourceControl)
            return;
        // 2 is 16:9. 7 is 16:9 in IEC 61834 as well; 1 is a letterbox inside a picture of 4:3.
        const int display = pack[2] & 0x07;
        const bool isEmpty = pack[1] == 0xFF && pack[2] == 0xFF && pack[3] == 0xFF;
        if (!isEmpty)
            wideVotes += display == 2 || (display == 7 && trackApplication == 0) ? 1 : -1;
    });
    facts.isWide = wideVotes > 0;

    int dropFrameVotes = 0;
    forEachSubcodePack(frame, [&](Pack pack) {
        if (pack[0] == kTimecode && (pack[1] != 0xFF || pack[2] != 0xFF))
            dropFrameVotes += (pack[1] & 0x40) != 0 ? 1 : -1;
    });
    facts.isDropFrame = facts.is525_60 && dropFrameVotes > 0;
    facts.recordingDate = recordingDate(frame);
    return facts;
}

} // namespace merro::platform::ffmpeg
