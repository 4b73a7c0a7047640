#include "dv/FrameTimecode.h"

#include "dv/DVConstants.h"
#include "dv/DVDifSequence.h"
#include "timecode/BXMCTimecodeUtils.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <stdexcept>

namespace merro {
namespace {

/// A timecode and how many sequences carry it so far.
struct Candidate {
    SMPTETime timecode;
    unsigned votes = 0;
};

std::optional<SMPTETime> timecodeOfSequence(const platform::FrameBytes& frame, unsigned index) {
    DVDifSequence sequence(frame, index);
    try {
        sequence.decodeTimecode();
    } catch (const std::out_of_range&) {
        return std::nullopt;
    }
    return sequence.timecodeOk() ? std::optional(sequence.timeCode()) : std::nullopt;
}

/// The candidates in the order of their first sequences, so that the first one with the most votes wins a
/// tie.
class Vote {
public:
    void add(const SMPTETime& timecode) {
        auto* const end = m_candidates.begin() + m_count;
        auto* candidate = std::find_if(m_candidates.begin(), end, [&](const Candidate& other) {
            return BXMCTimecodeUtils::timecodeCompareWith(other.timecode, timecode) == 0;
        });
        if (candidate == end) {
            candidate->timecode = timecode;
            ++m_count;
        }
        ++candidate->votes;
    }

    [[nodiscard]] const Candidate* leader() const {
        const auto cast = candidates();
        const auto first =
            std::max_element(cast.begin(), cast.end(),
                             [](const Candidate& a, const Candidate& b) { return a.votes < b.votes; });
        return first == cast.end() ? nullptr : &*first;
    }

    /// Whether `votesLeft` more votes cannot change the leader.
    [[nodiscard]] bool isSettled(unsigned votesLeft) const {
        const Candidate* const first = leader();
        if (first == nullptr || votesLeft > first->votes)
            return false;
        return std::ranges::all_of(candidates(), [&](const Candidate& other) {
            const unsigned most = other.votes + votesLeft;
            return &other == first || most < first->votes || (most == first->votes && first < &other);
        });
    }

private:
    [[nodiscard]] std::span<const Candidate> candidates() const { return {m_candidates.data(), m_count}; }

    std::array<Candidate, DIF_SEQ_COUNT_MAX> m_candidates{};
    unsigned m_count = 0;
};

} // namespace

TimecodeValue frameTimecode(const platform::FrameBytes& frame) {
    const auto sequences = static_cast<unsigned>(
        std::min<std::size_t>(frame.size() / SEQUENCE_SIZE, static_cast<std::size_t>(DIF_SEQ_COUNT_MAX)));
    const platform::FrameBytes borrowed = frame.borrowed();
    Vote vote;
    for (unsigned index = 0; index < sequences && !vote.isSettled(sequences - index); ++index) {
        if (const auto timecode = timecodeOfSequence(borrowed, index))
            vote.add(*timecode);
    }
    const Candidate* const winner = vote.leader();
    return winner == nullptr ? TimecodeValue{} : TimecodeValue::valueWithSMPTETime(winner->timecode);
}

} // namespace merro
