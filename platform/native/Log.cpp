#include "platform/native/Log.h"

#include "platform/native/FileError.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <unistd.h>

namespace merro::platform::native {

Log::Log(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    if (descriptor < 0)
        line(fileError("open the log", path, errno).text());
    else
        m_descriptor = descriptor;
}

Log::~Log() {
    if (m_descriptor != STDERR_FILENO)
        (void)::close(m_descriptor);
}

void Log::line(std::string_view text) {
    std::string whole(text);
    std::replace(whole.begin(), whole.end(), '\n', ' ');
    whole += '\n';
    std::string_view rest = whole;
    const std::lock_guard lock(m_mutex);
    while (!rest.empty()) {
        const auto written = ::write(m_descriptor, rest.data(), rest.size());
        if (written < 0 && errno != EINTR)
            return; // a log that cannot be written has nobody to tell
        rest.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
}

} // namespace merro::platform::native
