// The two worlds that keep the same promises: real threads in real time, and virtual time.
#pragma once

#include "platform/native/Clock.h"
#include "platform/native/RunLoop.h"
#include "platform/native/Threads.h"
#include "platform/virtualtime/Clock.h"
#include "platform/virtualtime/RunLoop.h"
#include "platform/virtualtime/Threads.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

namespace merro::platform {

struct NativeWorld {
    native::Clock clock;
    native::RunLoop loop{clock};
    native::Threads threads{clock};
};

struct VirtualWorld {
    virtualtime::Scheduler scheduler;
    virtualtime::Clock clock{scheduler};
    virtualtime::RunLoop loop{scheduler};
    virtualtime::Threads threads{scheduler};
};

/// The same with things due at one moment shuffled.
struct ShuffledWorld {
    virtualtime::Scheduler scheduler{20050317};
    virtualtime::Clock clock{scheduler};
    virtualtime::RunLoop loop{scheduler};
    virtualtime::Threads threads{scheduler};
};

using Worlds = testing::Types<NativeWorld, VirtualWorld, ShuffledWorld>;

struct WorldNames {
    template <typename World>
    static std::string GetName(int) {
        if constexpr (std::is_same_v<World, NativeWorld>)
            return "Native";
        else
            return std::is_same_v<World, VirtualWorld> ? "Virtual" : "Shuffled";
    }
};

} // namespace merro::platform
