#include "platform/ffmpeg/Libav.h"

#include <array>
#include <cerrno>
#include <mutex>
#include <system_error>

namespace merro::platform::ffmpeg {

std::string libavText(int code) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(code, text.data(), text.size());
    return text.data();
}

void silenceLibav() {
    static std::once_flag once;
    std::call_once(once, [] { av_log_set_level(AV_LOG_QUIET); });
}

std::string systemText(int code) {
    return std::generic_category().message(code);
}

Error fileError(const std::string& what, const std::string& path, int code) {
    Error error{"cannot " + what + " '" + path + "' (" + systemText(code) + ")", {}, code};
    if (code == ENOSPC || code == EDQUOT)
        error.remedy = "make room on the disk, or choose another folder";
    else if (code == EACCES || code == EPERM || code == EROFS)
        error.remedy = "choose a folder that you may write to";
    else if (code == EEXIST)
        error.remedy = "it exists already and is left as it is";
    return error;
}

} // namespace merro::platform::ffmpeg
