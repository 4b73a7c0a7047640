// How a run of the program ends, and the one clear line with which it fails.
#pragma once

#include <stdexcept>
#include <string>

namespace merro::host {

/// Exit statuses of the program.
enum class ExitStatus : int {
    Done = 0,
    Failed = 1,
    Usage = 2,
    NotDV = 3, ///< the source holds no DV frame
    Interrupted = 130,
};

/// Thrown inside the host only, never through the component. `what()` is one line for people, without a full
/// stop at its end.
class Failure : public std::runtime_error {
public:
    explicit Failure(const std::string& line, ExitStatus status = ExitStatus::Failed)
        : std::runtime_error(line), m_status(status) {}

    [[nodiscard]] ExitStatus status() const { return m_status; }

private:
    ExitStatus m_status;
};

} // namespace merro::host
