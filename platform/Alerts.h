// Modal alerts.
#pragma once

#include "platform/Error.h"

#include <string>

namespace merro::platform {

struct Alert {
    std::string messageText;
    std::string informativeText;
};

/// What `Alerts::runModal` answers for the default button, "OK".
inline constexpr int kAlertDefaultReturn = 1;

class Alerts {
public:
    virtual ~Alerts() = default;

    /// Shows the alert and blocks the calling thread, whichever it is, until it is answered. On the main
    /// thread the run loop goes on in the modal-panel mode meanwhile. On another thread the main thread is
    /// never waited for while it is busy in component code: an alert of the delivery thread is up while the
    /// main thread works.
    [[nodiscard]] virtual int runModal(const Alert& alert) = 0;

    /// The platform's own alert for an error.
    void runForError(const Error& error) { (void)runModal({error.message, error.remedy}); }
};

} // namespace merro::platform
