// What the parts of a capture framework share. Any thread.
#pragma once

#include "platform/session/CaptureFramework.h"

#include <atomic>

namespace merro::platform::session {

struct CaptureContext {
    Threads& threads;
    MovieRecorderFactory* recorders;
    WhenFull whenFull;
    CaptureEvents events;
    std::atomic<std::int64_t> framesLost{0};
    std::atomic<bool> hasToldOfMissingRecorders{false};

    void addFramesLost(std::int64_t frames) {
        framesLost += frames;
        if (events.framesLost)
            events.framesLost(frames);
    }

    void tell(const Error& problem) const {
        if (events.problem)
            events.problem(problem);
    }
};

} // namespace merro::platform::session
