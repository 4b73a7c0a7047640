// The time zone in which the camera's clock is read.
#pragma once

#include <string>

namespace merro::host {

/// "none": one without daylight saving, so that the camera's clock is taken as it stands; "system": the
/// machine's; otherwise a name of the time zone database ("Europe/Berlin"). Sets TZ for the whole process: to
/// be called before any thread is started and any date made. Throws Failure for a name that the machine's
/// database does not have.
void useTimeZone(const std::string& choice);

} // namespace merro::host
