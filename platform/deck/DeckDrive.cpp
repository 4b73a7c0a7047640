#include "platform/deck/DeckDrive.h"

#include "dv/DVConstants.h"
#include "dv/FrameTimecode.h"
#include "platform/deck/TimecodeContinuity.h"

#include <algorithm>
#include <utility>

namespace merro::platform::deck {

namespace {

constexpr int asleep = 0;
constexpr int awake = 1;
constexpr int running = 0;
constexpr int ended = 1;

} // namespace

DeckDrive::DeckDrive(Clock& clock, Threads& threads, std::unique_ptr<Tape> tape, DeckSettings settings,
                     std::function<void()> stateChanged)
    : m_clock(clock), m_settings(std::move(settings)), m_stateChanged(std::move(stateChanged)),
      m_dice(m_settings.faults), m_tape(std::move(tape)), m_gate(threads),
      m_wake(threads.makeConditionLock(asleep)), m_end(threads.makeConditionLock(running)),
      m_mechanism(m_settings.mechanism, clock.now()) {
    m_position.frameCount = m_tape->frameCount();
    m_position.isFrameCountExact = m_tape->isFrameCountExact();
    if (m_position.isFrameCountExact)
        m_mechanism.setTapeLength(m_position.frameCount);
}

std::optional<TransportState> DeckDrive::state() const {
    const Lock lock(m_mutex);
    if (m_isAway)
        return std::nullopt;
    return mechanismAt(m_clock.now()).state();
}

void DeckDrive::command(TransportState wanted) {
    const CommandFate fate = m_dice.fateOfNextCommand();
    {
        const Lock lock(m_mutex);
        if (fate == CommandFate::Refused)
            ++m_refusedCommands;
        if (fate != CommandFate::Obeyed || m_isAway)
            return;
        m_commands.push_back({m_clock.now(), wanted});
    }
    wake();
}

bool DeckDrive::open() {
    const Lock lock(m_mutex);
    m_isOpen = !m_isAway;
    return m_isOpen;
}

void DeckDrive::close() {
    const Lock lock(m_mutex);
    m_isOpen = false;
}

bool DeckDrive::isOpen() const {
    const Lock lock(m_mutex);
    return m_isOpen;
}

void DeckDrive::setReceiver(session::FrameReceiver* receiver) {
    {
        const Lock lock(m_mutex);
        if (receiver == m_receiver)
            return;
        m_receiver = receiver;
        m_hasNewReceiver = true;
    }
    wake();
}

DeckPosition DeckDrive::position() const {
    const Lock lock(m_mutex);
    DeckPosition position = m_position;
    const Mechanism mechanism = mechanismAt(m_clock.now());
    if (m_receiver == nullptr || !mechanism.state().hasPicture() || position.offsetBytes < 0) {
        const std::int64_t index = std::max<std::int64_t>(mechanism.frameUnderHead(m_clock.now()), 0);
        if (index != position.frameIndex)
            position.offsetBytes = -1;
        position.frameIndex = std::min(index, std::max<std::int64_t>(position.frameCount - 1, 0));
    }
    return position;
}

std::int64_t DeckDrive::framesLost() const {
    const Lock lock(m_mutex);
    return m_framesLost;
}

std::int64_t DeckDrive::refusedCommands() const {
    const Lock lock(m_mutex);
    return m_refusedCommands;
}

void DeckDrive::run() {
    m_deliveryThread = std::this_thread::get_id();
    Lock lock(m_mutex);
    while (!m_quits) {
        if (!handleNext(lock))
            continue;
        tellOfChanges(lock);
    }
    lock.unlock();
    m_end->lock();
    m_end->unlockWithCondition(ended);
}

void DeckDrive::quit() {
    {
        const Lock lock(m_mutex);
        m_quits = true;
        m_receiver = nullptr;
    }
    wake();
    if (m_deliveryThread.load() == std::this_thread::get_id())
        return;
    m_end->lockWhenCondition(ended);
    m_end->unlock();
}

void DeckDrive::wake() {
    // Woken already and not yet running: it will see what has just been added. Waiting for the lock would let
    // it deliver frames, in virtual time, before the caller gets on.
    if (m_wake->condition() == awake)
        return;
    m_wake->lock();
    m_wake->unlockWithCondition(awake);
}

// What other threads see: the mechanism as the delivery thread left it, and what has happened since.
Mechanism DeckDrive::mechanismAt(Moment now) const {
    Mechanism mechanism = m_mechanism;
    for (const Command& command : m_commands)
        mechanism.command(command.at, command.wanted, m_settings.faults.commandDelay);
    mechanism.advance(now);
    return mechanism;
}

bool DeckDrive::isPlaying() const {
    return m_mechanism.state().isPlay();
}

// Finds the frame to begin with when the tape has begun to move differently, or somebody else receives.
void DeckDrive::startMotion() {
    const bool movesAsBefore = m_motion == m_mechanism.motionCount();
    if (movesAsBefore && !m_hasNewReceiver)
        return;
    const Moment from = movesAsBefore ? m_clock.now() : m_mechanism.motionStart();
    m_motion = m_mechanism.motionCount();
    if (std::exchange(m_hasNewReceiver, false))
        m_lostBefore = 0;
    m_busyFrom = m_busyUntil = from;
    m_nextFrame = m_mechanism.firstFrameFrom(from);
    m_tickStart = from;
    m_nextTick = 0;
}

std::optional<Moment> DeckDrive::frameDue() {
    startMotion();
    if (m_receiver == nullptr || m_isAway || !m_mechanism.moves() || !m_mechanism.state().hasPicture())
        return std::nullopt;
    return isPlaying() ? m_mechanism.momentOfFrame(m_nextFrame) : tick(m_nextTick);
}

Moment DeckDrive::tick(std::int64_t number) const {
    return m_tickStart + Duration((number * static_cast<std::int64_t>(m_mechanism.framePeriod()) + 2) / 3);
}

// Where the tape's length is only estimated, the end has to be looked for when the tape comes to it.
std::optional<Moment> DeckDrive::lookForEndDue() const {
    if (m_position.isFrameCountExact)
        return std::nullopt;
    return m_mechanism.momentOfFrame(m_position.frameCount);
}

// Handles the earliest of what is due, or waits for it. False when it only waited.
bool DeckDrive::handleNext(Lock& lock) {
    const std::optional<Moment> frame = frameDue();
    const std::optional<Moment> lookForEnd = lookForEndDue();
    const std::optional<Moment> change = m_mechanism.nextChange();
    const Moment never = Moment::max();
    const Moment command = m_commands.empty() ? never : m_commands.front().at;
    const Moment next = std::min({frame.value_or(never), lookForEnd.value_or(never), change.value_or(never),
                                  command, m_backAt.value_or(never)});
    if (next > m_clock.now()) {
        wait(lock, next == never ? std::nullopt : std::optional(next));
        return false;
    }
    if (frame == next) {
        handleFrame(lock, next);
    } else if (lookForEnd == next) {
        (void)readTape(lock, m_position.frameCount);
    } else if (change == next) {
        m_mechanism.advance(next);
    } else if (m_backAt == next) {
        comeBack(lock);
    } else {
        m_mechanism.command(command, m_commands.front().wanted, m_settings.faults.commandDelay);
        m_commands.erase(m_commands.begin());
    }
    return true;
}

void DeckDrive::wait(Lock& lock, std::optional<Moment> until) {
    lock.unlock();
    if (!until) {
        m_wake->lockWhenCondition(awake);
        m_wake->unlockWithCondition(asleep);
    } else if (m_wake->lockWhenConditionBefore(awake, *until)) {
        m_wake->unlockWithCondition(asleep);
    }
    lock.lock();
}

void DeckDrive::tellOfChanges(Lock& lock) {
    while (m_changesTold < m_mechanism.changeCount()) {
        ++m_changesTold;
        lock.unlock();
        m_stateChanged();
        lock.lock();
    }
}

std::optional<TapeFrame> DeckDrive::readTape(Lock& lock, std::int64_t index) {
    lock.unlock();
    std::optional<TapeFrame> frame = m_tape->frameAt(index);
    const std::int64_t count = m_tape->frameCount();
    const bool isExact = !frame || m_tape->isFrameCountExact();
    lock.lock();
    m_position.frameCount = frame ? std::max(count, index + 1) : count;
    if (isExact && !m_position.isFrameCountExact)
        m_mechanism.setTapeLength(m_position.frameCount);
    m_position.isFrameCountExact = isExact;
    return frame;
}

void DeckDrive::handleFrame(Lock& lock, Moment due) {
    std::int64_t index = m_nextFrame;
    if (isPlaying()) {
        const bool lost = isLost(lock, due);
        ++m_nextFrame;
        if (lost) {
            countLostFrame();
            return;
        }
    } else {
        while (tick(m_nextTick + 1) <= m_busyUntil)
            ++m_nextTick;
        due = tick(m_nextTick++);
        index = m_mechanism.frameUnderHead(due);
        if (index < 0)
            return;
    }
    if (const std::optional<TapeFrame> frame = readTape(lock, index)) {
        if (!frame->bytes.isNull())
            passFrame(lock, due, index, *frame);
    }
}

// Whether the frame passed from its beginning to its end while the receiver was busy. The last one before the
// tape stops is kept for the receiver, which would otherwise never hear of those lost before it.
bool DeckDrive::isLost(Lock& lock, Moment due) {
    const std::optional<Moment> passed = m_mechanism.momentOfFrame(m_nextFrame + 1);
    if (due <= m_busyFrom || !passed || *passed > m_busyUntil)
        return false;
    if (const std::optional<Moment> change = m_mechanism.nextChange(); change && *change <= *passed)
        return false;
    return m_position.isFrameCountExact || readTape(lock, m_nextFrame + 1).has_value();
}

void DeckDrive::countLostFrame() {
    ++m_lostBefore;
    ++m_framesLost;
}

// A frame that is not blank is under the head.
void DeckDrive::passFrame(Lock& lock, Moment due, std::int64_t index, const TapeFrame& frame) {
    adoptSystem(due, frame);
    const std::int64_t goesAwayAt = m_settings.faults.goesAwayAtFrame;
    if (goesAwayAt >= 0 && index >= goesAwayAt && !m_wentAway)
        goAway(lock, due);
    else if (isPlaying() && m_dice.losesFrame(index))
        countLostFrame();
    else
        deliver(lock, index, frame);
}

void DeckDrive::adoptSystem(Moment due, const TapeFrame& frame) {
    const bool is525 = frame.bytes.size() == FRAME_SIZE_525_60;
    if (!is525 && frame.bytes.size() != FRAME_SIZE_625_50)
        return;
    const FramePeriod period = is525 ? FramePeriod::System525 : FramePeriod::System625;
    if (period == m_mechanism.framePeriod())
        return;
    m_mechanism.setFramePeriod(due, period);
    m_tickStart = due;
    m_nextTick = 1;
}

void DeckDrive::deliver(Lock& lock, std::int64_t index, const TapeFrame& frame) {
    session::FrameReceiver* const receiver = m_receiver;
    if (receiver == nullptr)
        return;
    const bool playing = isPlaying();
    const std::int64_t lostBefore = std::exchange(m_lostBefore, 0);
    m_position.frameIndex = index;
    m_position.offsetBytes = frame.offsetBytes;
    m_gate.enter();
    lock.unlock();
    const QTSampleBuffer sample = sampleBuffer(frame, playing);
    m_busyFrom = m_clock.now();
    receiver->frame(sample, lostBefore);
    m_busyUntil = m_clock.now();
    m_gate.leave();
    lock.lock();
}

QTSampleBuffer DeckDrive::sampleBuffer(const TapeFrame& frame, bool playing) {
    QTSampleBuffer sample;
    sample.bytesForAllSamples = frame.bytes;
    sample.timecode = frameTimecode(frame.bytes);
    const bool runsOn = playing ? timecodeRunsOn(m_lastTimecode, sample.timecode)
                                : static_cast<bool>(m_lastTimecode) == static_cast<bool>(sample.timecode);
    if (m_hasDelivered && !runsOn)
        sample.sceneChange = QTSampleBufferTimeStampDiscontinuitySceneChange;
    m_hasDelivered = true;
    m_lastTimecode = sample.timecode;
    return sample;
}

void DeckDrive::goAway(Lock& lock, Moment now) {
    m_wentAway = true;
    m_isAway = true;
    m_isOpen = false;
    m_commands.clear();
    m_mechanism.halt(now);
    m_changesTold = m_mechanism.changeCount();
    if (m_settings.faults.awayFor > Duration::zero())
        m_backAt = now + m_settings.faults.awayFor;
    tellOfConnection(lock, false);
}

void DeckDrive::comeBack(Lock& lock) {
    m_isAway = false;
    m_backAt.reset();
    tellOfConnection(lock, true);
}

void DeckDrive::tellOfConnection(Lock& lock, bool isConnected) const {
    if (!m_settings.connectionChanged)
        return;
    lock.unlock();
    m_settings.connectionChanged(isConnected);
    lock.lock();
}

} // namespace merro::platform::deck
