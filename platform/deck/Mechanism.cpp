#include "platform/deck/Mechanism.h"

#include <algorithm>
#include <cstdlib>

namespace merro::platform::deck {

namespace {

constexpr std::int64_t ticksPerNanosecond = 3;

constexpr std::int64_t floorDivided(std::int64_t value, std::int64_t divisor) {
    const std::int64_t quotient = value / divisor;
    return value % divisor < 0 ? quotient - 1 : quotient;
}

constexpr std::int64_t ceilDivided(std::int64_t value, std::int64_t divisor) {
    return -floorDivided(-value, divisor);
}

constexpr std::int64_t ticks(Moment moment) {
    return moment.count() * ticksPerNanosecond;
}

/// The first moment that is not before `ticks`.
constexpr Moment momentFromTicks(std::int64_t value) {
    return Moment(ceilDivided(value, ticksPerNanosecond));
}

constexpr std::int64_t slowestStep = 1000;
constexpr std::int64_t fastestStep = 19000;
constexpr std::int64_t betweenSteps = 3000;

TransportState onScale(TransportState wanted) {
    const std::int64_t magnitude =
        std::min(std::abs(std::clamp(wanted.speed, -fastestStep, fastestStep)), fastestStep);
    const std::int64_t step =
        slowestStep +
        (std::max<std::int64_t>(magnitude - slowestStep, 0) + betweenSteps / 2) / betweenSteps * betweenSteps;
    if (wanted.speed == 0)
        return {0, wanted.mode != 0 ? 1 : 0};
    return {wanted.speed < 0 ? -step : step, wanted.mode != 0 ? 1 : 0};
}

} // namespace

MechanismSettings MechanismSettings::ideal() {
    MechanismSettings settings;
    settings.reaction = settings.threading = settings.starting = settings.changing = settings.winding =
        Duration::zero();
    return settings;
}

Mechanism::Mechanism(MechanismSettings settings, Moment now)
    : m_settings(settings), m_motionStart(now), m_since(ticks(now)) {}

void Mechanism::setTapeLength(std::optional<std::int64_t> frames) {
    m_length = frames;
}

void Mechanism::setFramePeriod(Moment now, FramePeriod period) {
    if (period == m_period)
        return;
    const Place place = placeAt(now);
    const bool isNormalSpeed = m_speed.numerator == 1 && m_speed.denominator == 1;
    if (isNormalSpeed) {
        m_since = ticks(now) - place.offset;
        m_place = {place.frame, 0};
    } else {
        m_since = ticks(now);
        m_place = {place.frame,
                   place.offset * (static_cast<Ticks>(period) / 1000) / (ticksPerFrame() / 1000)};
    }
    m_period = period;
}

void Mechanism::command(Moment now, TransportState wanted, Duration delay) {
    advance(now);
    m_wanted = onScale(wanted);
    if (m_phase == Phase::Changing) {
        m_phaseEnd = now + delay + changeTime(m_state, m_wanted);
    } else if (m_wanted == m_state) {
        m_phase = Phase::Settled;
    } else {
        m_phase = Phase::Reacting;
        m_phaseEnd = now + delay + m_settings.reaction;
    }
    advance(now);
}

void Mechanism::halt(Moment now) {
    advance(now);
    m_phase = Phase::Settled;
    move(now, placeAt(now), {0, 1});
    setState({0, 0});
}

void Mechanism::advance(Moment now) {
    while (const std::optional<Moment> next = nextChange()) {
        if (*next > now)
            return;
        const std::optional<Moment> end = endOfMotion();
        if (end != next) {
            endPhase();
            continue;
        }
        const bool isForward = m_speed.numerator > 0;
        move(*end, {isForward ? *m_length : 0, 0}, {0, 1});
        setState({0, 0});
    }
}

std::optional<Moment> Mechanism::nextChange() const {
    const std::optional<Moment> end = endOfMotion();
    if (m_phase == Phase::Settled)
        return end;
    return end ? std::min(*end, m_phaseEnd) : m_phaseEnd;
}

std::int64_t Mechanism::frameUnderHead(Moment now) const {
    const Place place = placeAt(now);
    std::int64_t frame = place.frame;
    if (m_speed.numerator < 0 && place.offset == 0)
        --frame;
    if (m_length)
        frame = std::min(frame, *m_length);
    return std::max<std::int64_t>(frame, -1);
}

std::int64_t Mechanism::firstFrameFrom(Moment now) const {
    const Place place = placeAt(now);
    return place.offset == 0 ? place.frame : place.frame + 1;
}

std::optional<Moment> Mechanism::momentOfFrame(std::int64_t index) const {
    if (m_speed.numerator <= 0)
        return std::nullopt;
    const Ticks distance = (index - m_place.frame) * ticksPerFrame() - m_place.offset;
    return momentFromTicks(
        m_since + std::max<Ticks>(0, ceilDivided(distance * m_speed.denominator, m_speed.numerator)));
}

std::optional<Moment> Mechanism::endOfMotion() const {
    if (m_speed.numerator == 0)
        return std::nullopt;
    if (m_speed.numerator > 0)
        return m_length ? momentOfFrame(*m_length) : std::nullopt;
    const Ticks distance = m_place.frame * ticksPerFrame() + m_place.offset;
    return momentFromTicks(m_since + ceilDivided(distance * m_speed.denominator, -m_speed.numerator));
}

// Where the tape is at `now`, however far that lies beyond the tape's end.
Mechanism::Place Mechanism::placeAt(Moment now) const {
    const Ticks moved = floorDivided((ticks(now) - m_since) * m_speed.numerator, m_speed.denominator);
    const Ticks offset = m_place.offset + moved;
    const std::int64_t frames = floorDivided(offset, ticksPerFrame());
    return {m_place.frame + frames, offset - frames * ticksPerFrame()};
}

void Mechanism::move(Moment at, Place from, TapeSpeed speed) {
    m_since = ticks(at);
    m_place = from;
    m_speed = speed;
    m_motionStart = at;
    ++m_motions;
}

void Mechanism::setState(TransportState state) {
    if (state != m_state)
        ++m_changes;
    m_state = state;
}

void Mechanism::endPhase() {
    const Moment at = m_phaseEnd;
    const Place place = placeAt(at);
    if (m_phase == Phase::Reacting) {
        m_phase = Phase::Changing;
        m_phaseEnd = at + changeTime(m_state, m_wanted);
        move(at, place, {0, 1});
        return;
    }
    m_phase = Phase::Settled;
    move(at, place, tapeSpeed(m_wanted));
    setState(m_wanted);
}

TapeSpeed Mechanism::tapeSpeed(TransportState state) const {
    if (state.stands())
        return {0, 1};
    const auto& speeds = state.mode == 1 ? m_settings.searchSpeeds : m_settings.windSpeeds;
    TapeSpeed speed = speeds[static_cast<std::size_t>((std::abs(state.speed) - slowestStep) / betweenSteps)];
    if (state.speed < 0)
        speed.numerator = -speed.numerator;
    return speed;
}

Duration Mechanism::changeTime(TransportState from, TransportState to) const {
    const auto winds = [](TransportState state) { return state.mode == 0 && !state.stands(); };
    if (from.mode != to.mode)
        return m_settings.threading + (winds(from) || winds(to) ? m_settings.winding : Duration::zero());
    if (from.mode == 0)
        return m_settings.winding;
    return from.stands() ? m_settings.starting : m_settings.changing;
}

} // namespace merro::platform::deck
