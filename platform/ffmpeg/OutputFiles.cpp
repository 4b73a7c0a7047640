#include "platform/ffmpeg/OutputFiles.h"

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace merro::platform::ffmpeg {

namespace {

class PosixOutputFile final : public OutputFile {
public:
    explicit PosixOutputFile(int descriptor) : m_descriptor(descriptor) {}
    ~PosixOutputFile() override { ::close(m_descriptor); }

    std::size_t write(std::span<const std::uint8_t> bytes, std::int64_t offsetBytes, int& error) override {
        std::size_t written = 0;
        error = 0;
        while (written < bytes.size()) {
            const ssize_t result = ::pwrite(m_descriptor, bytes.data() + written, bytes.size() - written,
                                            offsetBytes + static_cast<std::int64_t>(written));
            if (result < 0 && errno == EINTR)
                continue;
            if (result <= 0) {
                error = result < 0 ? errno : ENOSPC;
                break;
            }
            written += static_cast<std::size_t>(result);
        }
        return written;
    }

    int allocate(std::int64_t lengthBytes) override {
        return ::posix_fallocate(m_descriptor, 0, lengthBytes);
    }

    int flushToDisk() override { return ::fsync(m_descriptor) == 0 ? 0 : errno; }

private:
    int m_descriptor;
};

std::string folderOf(const std::string& path) {
    const auto folder = std::filesystem::path(path).parent_path();
    return folder.empty() ? "." : folder.string();
}

class PosixOutputFiles final : public OutputFiles {
public:
    std::unique_ptr<OutputFile> create(const std::string& path, int& error) override {
        const int descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        error = descriptor < 0 ? errno : 0;
        return descriptor < 0 ? nullptr : std::make_unique<PosixOutputFile>(descriptor);
    }

    bool exists(const std::string& path) const override {
        struct stat status {};
        return ::lstat(path.c_str(), &status) == 0;
    }

    void remove(const std::string& path) override { ::unlink(path.c_str()); }

    int renameWithoutReplacing(const std::string& from, const std::string& to) override {
        if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
            return 0;
        if (errno != EINVAL && errno != ENOSYS)
            return errno;
        // File systems that do not know the flag: a hard link never replaces either.
        if (::link(from.c_str(), to.c_str()) == 0)
            return ::unlink(from.c_str()) == 0 ? 0 : errno;
        if (errno != EPERM && errno != EOPNOTSUPP && errno != ENOSYS)
            return errno;
        if (exists(to))
            return EEXIST;
        return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
    }

    std::int64_t largestFileBytes(const std::string& path) const override {
        constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
        std::int64_t largest = kLargest;
        // FAT says 32: no file of 4 GiB or more.
        const long bits = ::pathconf(folderOf(path).c_str(), _PC_FILESIZEBITS);
        if (bits > 0 && bits < 63)
            largest = (std::int64_t{1} << bits) - 1;
        rlimit limit{};
        if (::getrlimit(RLIMIT_FSIZE, &limit) == 0 && limit.rlim_cur < static_cast<rlim_t>(largest))
            largest = static_cast<std::int64_t>(limit.rlim_cur);
        return largest;
    }
};

} // namespace

std::shared_ptr<OutputFiles> makeOutputFiles() {
    return std::make_shared<PosixOutputFiles>();
}

std::unique_ptr<OutputFile> createBeside(OutputFiles& files, const std::string& path,
                                         const std::string& suffix, std::string& createdPath, int& error) {
    constexpr int kTries = 1000; // leftovers of runs that were killed
    const std::filesystem::path wanted(path);
    std::string hidden = ".";
    hidden += wanted.filename().string();
    for (int number = 1; number <= kTries; ++number) {
        std::string name = hidden;
        if (number > 1)
            name.append(".").append(std::to_string(number));
        name.append(".").append(suffix);
        createdPath = (wanted.parent_path() / name).string();
        auto file = files.create(createdPath, error);
        if (file || error != EEXIST)
            return file;
    }
    return nullptr;
}

} // namespace merro::platform::ffmpeg
