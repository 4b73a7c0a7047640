// What can go wrong at a deck, on request and the same in every run with the same seed.
//
// Damaged frames, missing dates and broken timecode come from the tape itself; these are the faults of the
// deck and the cable.
#pragma once

#include "platform/Clock.h"

#include <atomic>
#include <cstdint>
#include <string>

namespace merro::platform::deck {

/// As it stands, nothing goes wrong.
struct DeckFaults {
    std::uint64_t seed = 1;

    /// Frames that pass in play and do not arrive, of a million. A good cable loses none; 10 to 1000 is a bad
    /// one. The same frames of the tape are lost each time they pass. The next frame that arrives says how
    /// many were lost.
    int framesLostPerMillion = 0;

    /// The device goes away when this frame would have been delivered; -1 never. Once.
    std::int64_t goesAwayAtFrame = -1;
    /// How long it is away; zero or less: for good. A bus reset takes 0.5 to 3 s.
    Duration awayFor = std::chrono::seconds(2);

    /// Every command is carried out so much later. 0 to 2 s.
    Duration commandDelay{};
    /// Commands that the deck accepts and does nothing about, of a hundred. Up to 20.
    int commandsIgnoredPercent = 0;
    /// Commands that the deck refuses, of a hundred, posting no notification; it goes on as it was. For a
    /// host that is the same as ignoring, and the log of refusals (Deck::refusedCommands) tells them apart.
    int commandsRefusedPercent = 0;
};

/// "seed 1, …": the faults that are on, for messages and for repeating a run. Empty when none is.
[[nodiscard]] std::string describe(const DeckFaults& faults);

enum class CommandFate { Obeyed, Ignored, Refused };

/// Draws the faults. Any thread.
class FaultDice {
public:
    explicit FaultDice(const DeckFaults& faults) : m_faults(faults) {}

    [[nodiscard]] bool losesFrame(std::int64_t index) const;
    [[nodiscard]] CommandFate fateOfNextCommand();

private:
    DeckFaults m_faults;
    std::atomic<std::uint64_t> m_commands{0};
};

} // namespace merro::platform::deck
