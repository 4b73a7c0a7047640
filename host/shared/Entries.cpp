#include "host/shared/Entries.h"

#include <fmt/format.h>

namespace merro::host {

std::string clipIdOfNumber(int number) {
    return fmt::format("{:04}", number);
}

std::string ClipEntry::clipId() const {
    return clipIdOfNumber(number);
}

} // namespace merro::host
