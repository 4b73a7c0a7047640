#include "host/shared/TimeZone.h"

#include "host/shared/Failure.h"

#include <fmt/format.h>

#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>

namespace merro::host {

namespace {

bool isInDatabase(const std::string& name) {
    if (name.empty() || name.front() == '/' || name.find("..") != std::string::npos)
        return false;
    const char* folder = std::getenv("TZDIR"); // NOLINT(concurrency-mt-unsafe): no other thread yet
    const std::filesystem::path path =
        std::filesystem::path(folder != nullptr ? folder : "/usr/share/zoneinfo") / name;
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error))
        return false;
    std::ifstream file(path, std::ios::binary);
    char magic[4] = {};
    return file.read(magic, sizeof magic) && std::memcmp(magic, "TZif", sizeof magic) == 0;
}

} // namespace

void useTimeZone(const std::string& choice) {
    if (choice == "system")
        return;
    if (choice != "none" && !isInDatabase(choice))
        throw Failure(
            fmt::format("There is no time zone \"{}\": none, system, or a name as in Europe/Berlin is "
                        "wanted (the package tzdata holds the names)",
                        choice),
            ExitStatus::Usage);
    // NOLINTNEXTLINE(concurrency-mt-unsafe): no other thread yet
    ::setenv("TZ", choice == "none" ? "UTC0" : choice.c_str(), 1);
    ::tzset();
}

} // namespace merro::host
