// How often the program has asked for memory.
#pragma once

#include <cstddef>

namespace merro::test {

/// Calls of operator new on this thread so far.
[[nodiscard]] std::size_t allocationCount();

} // namespace merro::test
