#include "platform/native/Wakeup.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <system_error>
#include <unistd.h>

namespace merro::platform::native {

Wakeup::Wakeup() {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0)
        throw std::system_error(errno, std::generic_category(), "no file descriptors left");
    m_readEnd = ends[0];
    m_writeEnd = ends[1];
}

Wakeup::~Wakeup() {
    (void)::close(m_readEnd);
    (void)::close(m_writeEnd);
}

void Wakeup::raise() const noexcept {
    const int savedError = errno; // a signal handler leaves no trace
    const char byte = 0;
    if (::write(m_writeEnd, &byte, 1) < 0) {
        // A full pipe is readable already.
    }
    errno = savedError;
}

void Wakeup::clear() const noexcept {
    char bytes[64];
    while (::read(m_readEnd, bytes, sizeof bytes) > 0) {
    }
}

bool waitUntilReadable(int descriptor, const Wakeup& wakeup) {
    for (;;) {
        pollfd waits[] = {{wakeup.descriptor(), POLLIN, 0}, {descriptor, POLLIN, 0}};
        if (::poll(waits, 2, -1) < 0)
            continue; // interrupted by a signal
        if (waits[0].revents != 0)
            return false;
        if (waits[1].revents != 0)
            return true;
    }
}

} // namespace merro::platform::native
