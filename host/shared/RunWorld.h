// Time and threads of one run: real, or virtual and as fast as the machine can.
//
// Made on the main thread of the run and destroyed there, after everything that was made with it.
#pragma once

#include "platform/Clock.h"
#include "platform/MainRunLoop.h"
#include "platform/Threads.h"

#include <memory>

namespace merro::host {

enum class RunTime { Virtual, Real };

class RunWorld {
public:
    virtual ~RunWorld() = default; ///< waits for the threads of this world
    [[nodiscard]] virtual platform::Clock& clock() = 0;
    [[nodiscard]] virtual platform::MainRunLoop& runLoop() = 0;
    [[nodiscard]] virtual platform::Threads& threads() = 0;
};

[[nodiscard]] std::unique_ptr<RunWorld> makeRunWorld(RunTime time);

} // namespace merro::host
