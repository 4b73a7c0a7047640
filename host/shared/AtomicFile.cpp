#include "host/shared/AtomicFile.h"

#include "host/shared/Failure.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <system_error>
#include <unistd.h>

namespace merro::host {

namespace {

/// 0, or the reason why not all was written.
int writeWhole(int file, std::string_view text) {
    while (!text.empty()) {
        const ssize_t written = ::write(file, text.data(), text.size());
        if (written < 0 && errno == EINTR)
            continue;
        if (written < 0)
            return errno;
        text.remove_prefix(static_cast<std::size_t>(written));
    }
    return 0;
}

std::string temporaryName(const std::string& path) {
    const std::filesystem::path final(path);
    return (final.parent_path() / fmt::format(".{}.part", final.filename().string())).string();
}

} // namespace

void writeFileAtomically(const std::string& path, std::string_view text, Durable durable) {
    const std::string temporary = temporaryName(path);
    const int file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    int reason = file < 0 ? errno : 0;
    if (file >= 0) {
        reason = writeWhole(file, text);
        if (reason == 0 && durable == Durable::Yes && ::fdatasync(file) != 0)
            reason = errno;
        if (::close(file) != 0 && reason == 0)
            reason = errno;
        if (reason == 0 && std::rename(temporary.c_str(), path.c_str()) != 0)
            reason = errno;
        if (reason != 0)
            ::unlink(temporary.c_str());
    }
    if (reason != 0)
        throw Failure(fmt::format("{} cannot be written: {}", path, std::generic_category().message(reason)));
}

} // namespace merro::host
