// Tells when a file descriptor has something to read.
#pragma once

#include "platform/native/Wakeup.h"

#include <functional>
#include <thread>

namespace merro::platform::native {

/// Waits on a thread of its own for as long as it lives. `isReadable` is called on that thread, reads what is
/// there, and answers whether to go on watching; it hands on with MainRunLoop::postFromOutside what belongs
/// to the main thread. Not destroyed from within `isReadable`.
class DescriptorWatch {
public:
    DescriptorWatch(int descriptor, std::function<bool()> isReadable);
    ~DescriptorWatch(); ///< waits for a call under way
    DescriptorWatch(const DescriptorWatch&) = delete;
    DescriptorWatch& operator=(const DescriptorWatch&) = delete;

private:
    Wakeup m_end;
    std::thread m_thread;
};

} // namespace merro::platform::native
