#include "platform/native/FileError.h"

#include <cerrno>
#include <system_error>

namespace merro::platform::native {

namespace {

const char* remedyFor(int systemCode) {
    switch (systemCode) {
    case ENOSPC:
        return "free some space on that disk, or choose another folder";
    case EDQUOT:
        return "your quota on that disk is used up: free some space, or choose another folder";
    case EFBIG:
        return "raise the file size limit (ulimit -f), or choose a disk that takes larger files";
    case EACCES:
    case EPERM:
        return "choose a folder that you may write to, or change its permissions";
    case EROFS:
        return "the disk is read-only: choose another folder";
    case ENOENT:
        return "make the folder first";
    case ENOTDIR:
        return "a part of the path is a file, not a folder: choose another folder";
    case EISDIR:
        return "that is a folder: choose another name";
    case EEXIST:
        return "move that file away first; it is not overwritten";
    case EXDEV:
        return "both must be on the same disk";
    case EIO:
        return "the disk may be failing: check it, and choose another one";
    case EMFILE:
    case ENFILE:
        return "too many files are open: close some programs, or raise the limit (ulimit -n)";
    case ENAMETOOLONG:
        return "choose a shorter name";
    default:
        return "";
    }
}

} // namespace

Error fileError(const std::string& action, const std::string& path, int systemCode) {
    return {"Cannot " + action + " " + path + ": " + std::generic_category().message(systemCode),
            remedyFor(systemCode), systemCode};
}

} // namespace merro::platform::native
