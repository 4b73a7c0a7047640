// The tape transport of a deck as a function of time: where the tape stands, what the mechanism does, what
// comes next.
//
// Knows neither threads nor clocks nor tapes: it is told the time, and the time it is told never goes back.
// One thread at a time.
#pragma once

#include "platform/Clock.h"

#include <array>
#include <cstdint>
#include <optional>

namespace merro::platform::deck {

/// What the transport attribute says. The speed is one of the fifteen steps from -19000 to 19000 in steps of
/// 3000, and 0.
struct TransportState {
    std::int64_t speed = 0;
    std::int64_t mode =
        0; ///< 1: the tape lies at the heads (playing, paused, searching); 0: stopped or winding

    [[nodiscard]] bool isPlay() const { return speed == 10000 && mode == 1; }
    [[nodiscard]] bool hasPicture() const { return speed != 0 && mode == 1; }
    [[nodiscard]] bool stands() const { return speed == 0; }

    friend bool operator==(const TransportState&, const TransportState&) = default;
};

/// A multiple of the normal tape speed, as a fraction.
struct TapeSpeed {
    int numerator = 1;
    int denominator = 1;
};

/// Times and speeds of a mechanism. As it stands it is a consumer camcorder.
struct MechanismSettings {
    /// From the command until the mechanism begins to change; the tape goes on as before. 0 to 0.5 s.
    Duration reaction = std::chrono::milliseconds(80);
    /// The tape is threaded round the drum (from stop or wind to play, pause, search) or taken off it. 0.8 to
    /// 4 s.
    Duration threading = std::chrono::milliseconds(1500);
    /// From standing at the heads to a steady picture, in any direction. 0.2 to 1 s.
    Duration starting = std::chrono::milliseconds(400);
    /// From one motion with picture to another, or to standing. 0.05 to 1 s.
    Duration changing = std::chrono::milliseconds(150);
    /// Starting, turning or stopping a wind. 0.3 to 2 s.
    Duration winding = std::chrono::milliseconds(700);

    /// Tape speeds of the steps 1000, 4000, … 19000 with picture; the same backwards.
    std::array<TapeSpeed, 7> searchSpeeds{{{1, 10}, {1, 5}, {1, 2}, {1, 1}, {5, 1}, {9, 1}, {14, 1}}};
    /// The same without picture. A 60-minute cassette winds in about two minutes.
    std::array<TapeSpeed, 7> windSpeeds{{{1, 1}, {2, 1}, {5, 1}, {10, 1}, {30, 1}, {40, 1}, {50, 1}}};

    /// No time passes between a command and what it asks for: for logging files.
    [[nodiscard]] static MechanismSettings ideal();
};

/// How long one frame passes the head at normal speed, exact in thirds of a nanosecond: 1/25 s or 1001/30000
/// s.
enum class FramePeriod : std::int64_t { System625 = 120'000'000, System525 = 100'100'000 };

class Mechanism {
public:
    /// Stands stopped at the start of the tape at `now`.
    explicit Mechanism(MechanismSettings settings, Moment now = Moment::zero());

    /// Frames on the tape, when that is known: the motion ends there. Not known, the tape runs on.
    void setTapeLength(std::optional<std::int64_t> frames);

    /// Frames last `period` from the one on that is under the head at `now`. In play the change takes place
    /// exactly where that frame begins.
    void setFramePeriod(Moment now, FramePeriod period);
    [[nodiscard]] FramePeriod framePeriod() const { return m_period; }

    /// A command. A speed that is no step is taken as the nearest one, a mode other than 0 as 1. A command
    /// that comes before the one before has been carried out takes its place.
    void command(Moment now, TransportState wanted, Duration delay = Duration::zero());

    /// Stops dead where the tape stands (power gone).
    void halt(Moment now);

    /// Lets time pass: everything that happens until `now`, `now` included, has happened.
    void advance(Moment now);

    /// How often the reported state has changed so far.
    [[nodiscard]] std::int64_t changeCount() const { return m_changes; }
    /// How often the tape has begun to move differently, or to stand, so far.
    [[nodiscard]] std::int64_t motionCount() const { return m_motions; }
    /// Since when it moves, or stands, as it does now.
    [[nodiscard]] Moment motionStart() const { return m_motionStart; }

    /// As of the last advance.
    [[nodiscard]] TransportState state() const { return m_state; }
    /// Whether the tape moves with the reported state. False while the mechanism is on its way to another
    /// one.
    [[nodiscard]] bool moves() const { return m_phase != Phase::Changing && !m_state.stands(); }

    /// The next moment at which something changes by itself; none while all stands still or runs on.
    [[nodiscard]] std::optional<Moment> nextChange() const;

    /// The frame under the head. In reverse, the one that is being read backwards: at the very start of frame
    /// 5 it is frame 4. -1 before the start of the tape; the tape's length, when it is known, past its last
    /// frame.
    [[nodiscard]] std::int64_t frameUnderHead(Moment now) const;

    /// The first frame that begins to pass at `now` or later, the tape moving forward.
    [[nodiscard]] std::int64_t firstFrameFrom(Moment now) const;

    /// When the tape, moving forward, comes to the start of frame `index`; none when it does not as things
    /// stand.
    [[nodiscard]] std::optional<Moment> momentOfFrame(std::int64_t index) const;

private:
    /// Thirds of a nanosecond.
    using Ticks = std::int64_t;
    enum class Phase { Settled, Reacting, Changing };

    struct Place {
        std::int64_t frame;
        Ticks offset; ///< into the frame, at normal speed
    };

    [[nodiscard]] Place placeAt(Moment now) const;
    void move(Moment at, Place from, TapeSpeed speed);
    void setState(TransportState state);
    void endPhase();
    [[nodiscard]] TapeSpeed tapeSpeed(TransportState state) const;
    [[nodiscard]] Duration changeTime(TransportState from, TransportState to) const;
    [[nodiscard]] std::optional<Moment> endOfMotion() const;
    [[nodiscard]] Ticks ticksPerFrame() const { return static_cast<Ticks>(m_period); }

    MechanismSettings m_settings;
    std::optional<std::int64_t> m_length;
    FramePeriod m_period = FramePeriod::System625;

    TransportState m_state;
    std::int64_t m_changes = 0;
    Phase m_phase = Phase::Settled;
    TransportState m_wanted;
    Moment m_phaseEnd{};

    std::int64_t m_motions = 0;
    Moment m_motionStart{};
    // The tape was at m_place at m_since and has moved at m_speed since then.
    Ticks m_since = 0;
    Place m_place{0, 0};
    TapeSpeed m_speed{0, 1};
};

} // namespace merro::platform::deck
