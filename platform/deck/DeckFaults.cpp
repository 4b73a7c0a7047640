#include "platform/deck/DeckFaults.h"

namespace merro::platform::deck {

namespace {

/// A number that depends on all bits of both, the same on every machine (the finaliser of SplitMix64).
std::uint64_t mixed(std::uint64_t seed, std::uint64_t number) {
    std::uint64_t bits = seed + number * 0x9E3779B97F4A7C15U;
    bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9U;
    bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EBU;
    return bits ^ (bits >> 31);
}

std::string milliseconds(Duration duration) {
    return std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(duration).count()) + " ms";
}

} // namespace

std::string describe(const DeckFaults& faults) {
    std::string text;
    if (faults.framesLostPerMillion > 0)
        text += ", " + std::to_string(faults.framesLostPerMillion) + " frames of a million lost";
    if (faults.goesAwayAtFrame >= 0)
        text += ", gone at frame " + std::to_string(faults.goesAwayAtFrame) +
                (faults.awayFor > Duration::zero() ? " for " + milliseconds(faults.awayFor) : " for good");
    if (faults.commandDelay > Duration::zero())
        text += ", commands " + milliseconds(faults.commandDelay) + " late";
    if (faults.commandsIgnoredPercent > 0)
        text += ", " + std::to_string(faults.commandsIgnoredPercent) + " % of commands ignored";
    if (faults.commandsRefusedPercent > 0)
        text += ", " + std::to_string(faults.commandsRefusedPercent) + " % of commands refused";
    return text.empty() ? text : "seed " + std::to_string(faults.seed) + text;
}

bool FaultDice::losesFrame(std::int64_t index) const {
    return m_faults.framesLostPerMillion > 0 &&
           mixed(m_faults.seed, static_cast<std::uint64_t>(index)) % 1'000'000 <
               static_cast<std::uint64_t>(m_faults.framesLostPerMillion);
}

CommandFate FaultDice::fateOfNextCommand() {
    if (m_faults.commandsIgnoredPercent <= 0 && m_faults.commandsRefusedPercent <= 0)
        return CommandFate::Obeyed;
    const auto draw = static_cast<int>(mixed(~m_faults.seed, m_commands++) % 100);
    if (draw < m_faults.commandsIgnoredPercent)
        return CommandFate::Ignored;
    return draw < m_faults.commandsIgnoredPercent + m_faults.commandsRefusedPercent ? CommandFate::Refused
                                                                                    : CommandFate::Obeyed;
}

} // namespace merro::platform::deck
