#include "platform/native/BackgroundFiles.h"

#include "platform/native/FileError.h"

#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <deque>
#include <fcntl.h>
#include <mutex>
#include <pthread.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

namespace merro::platform::native {

namespace {

/// A file as the writing thread knows it; no other thread looks inside.
struct OpenFile {
    explicit OpenFile(std::string filePath) : path(std::move(filePath)) {}
    ~OpenFile() { close(); }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    [[nodiscard]] std::optional<Error> open() {
        descriptor = ::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
        if (descriptor < 0)
            return fileError("open", path, errno);
        struct stat status {};
        if (::fstat(descriptor, &status) == 0)
            sizeBefore = status.st_size;
        return std::nullopt;
    }

    /// Writes all of `bytes` at `end`, or nothing.
    [[nodiscard]] std::optional<Error> append(std::span<const std::uint8_t> bytes) {
        off_t position = end;
        while (!bytes.empty()) {
            const auto written = ::pwrite(descriptor, bytes.data(), bytes.size(), position);
            if (written < 0 && errno == EINTR)
                continue;
            if (written <= 0) {
                const Error error = fileError("write", path, written < 0 ? errno : ENOSPC);
                cutOffPart();
                return error;
            }
            position += written;
            bytes = bytes.subspan(static_cast<std::size_t>(written));
        }
        end = position;
        return std::nullopt;
    }

    /// What is left of an older, longer file is not ours to cut.
    void cutOffPart() const {
        if (sizeBefore <= end && ::ftruncate(descriptor, end) != 0) {
            // The part stays: the error that led here is told anyway.
        }
    }

    void close() {
        if (descriptor >= 0)
            (void)::close(std::exchange(descriptor, -1));
    }

    const std::string path;
    int descriptor = -1;
    off_t end = 0;
    off_t sizeBefore = 0;
    std::int64_t framesLost = 0;
    bool hasFailed = false; ///< nothing more is written to it
    bool isSlownessTold = false;
};

using OpenFileRef = std::shared_ptr<OpenFile>;

} // namespace

/// The queue and the thread that works it off.
class BackgroundFiles::Writer {
public:
    Writer(BackgroundFilesEvents events, BackgroundFilesLimits limits)
        : m_events(std::move(events)), m_limits(limits), m_thread([this] { run(); }) {}

    /// Does what is queued and takes nothing more.
    void end() {
        {
            const std::lock_guard lock(m_mutex);
            m_isEnding = true;
            m_changed.notify_all();
        }
        m_thread.join();
        m_events = {}; // what they refer to may go now, though handles keep this object
    }

    /// Queues `work`. False when the writer takes nothing any more.
    bool post(std::function<void()> work, std::size_t bytes = 0) {
        const std::lock_guard lock(m_mutex);
        if (m_isEnding && !isWriterThread())
            return false;
        m_queue.push_back({std::move(work), bytes});
        m_queuedBytes += bytes;
        m_changed.notify_all();
        return true;
    }

    /// Waits until `bytes` more may be queued; false when they may not be, and it is not allowed to wait.
    [[nodiscard]] bool makeRoom(std::size_t bytes) {
        if (isWriterThread())
            return true; // it would wait for itself
        std::unique_lock lock(m_mutex);
        const auto hasRoom = [&] {
            return m_queuedBytes == 0 || m_queuedBytes + bytes <= m_limits.queuedBytes || m_isEnding;
        };
        if (m_limits.whenFull == session::WhenFull::Wait)
            m_changed.wait(lock, hasRoom);
        return hasRoom();
    }

    void drain() {
        if (isWriterThread())
            return;
        std::unique_lock lock(m_mutex);
        const auto goal = m_doneCount + m_queue.size() + (m_isWorking ? 1 : 0);
        m_changed.wait(lock, [&] { return m_doneCount >= goal; });
    }

    // On the writing thread:

    void open(const OpenFileRef& file) {
        if (const auto error = file->open())
            fail(*file, *error);
    }

    void append(const OpenFileRef& file, const FrameBytes& bytes) {
        if (file->hasFailed) {
            ++file->framesLost;
            return;
        }
        if (const auto error = file->append(bytes.bytes())) {
            ++file->framesLost;
            fail(*file, *error);
        }
    }

    void lose(const OpenFileRef& file) {
        ++file->framesLost;
        if (!std::exchange(file->isSlownessTold, true) && !file->hasFailed)
            tell({"The disk is too slow for " + file->path + ", frames are being lost",
                  "choose a faster disk, or close other programs that use it"});
    }

    void close(const OpenFileRef& file) {
        file->close();
        if (file->framesLost > 0 && m_events.framesLost)
            m_events.framesLost(file->path, file->framesLost);
    }

private:
    struct Work {
        std::function<void()> run;
        std::size_t bytes = 0;
    };

    [[nodiscard]] bool isWriterThread() const { return t_writer == this; }

    void fail(OpenFile& file, const Error& problem) {
        file.hasFailed = true;
        tell(problem);
    }

    void tell(const Error& problem) {
        if (m_events.problem)
            m_events.problem(problem);
    }

    void run() {
        t_writer = this;
        // A file that outgrows the limit of the process is an error to tell, not a reason to die.
        sigset_t fileSizeSignal;
        (void)sigemptyset(&fileSizeSignal);
        (void)sigaddset(&fileSizeSignal, SIGXFSZ);
        (void)pthread_sigmask(SIG_BLOCK, &fileSizeSignal, nullptr);

        std::unique_lock lock(m_mutex);
        for (;;) {
            m_changed.wait(lock, [this] { return !m_queue.empty() || m_isEnding; });
            if (m_queue.empty())
                return;
            Work work = std::move(m_queue.front());
            m_queue.pop_front();
            m_isWorking = true;
            lock.unlock();
            std::exchange(work.run, nullptr)();
            lock.lock();
            m_isWorking = false;
            ++m_doneCount;
            m_queuedBytes -= work.bytes;
            m_changed.notify_all();
        }
    }

    static thread_local const Writer* t_writer; ///< the writer whose thread this is

    BackgroundFilesEvents m_events;
    const BackgroundFilesLimits m_limits;

    std::mutex m_mutex; ///< guards what follows
    std::condition_variable m_changed;
    std::deque<Work> m_queue;
    std::size_t m_queuedBytes = 0;
    std::uint64_t m_doneCount = 0;
    bool m_isWorking = false;
    bool m_isEnding = false;

    std::thread m_thread; ///< last: it uses all of the above
};

thread_local const BackgroundFiles::Writer* BackgroundFiles::Writer::t_writer = nullptr;

class BackgroundFiles::Handle final : public FileHandle {
public:
    Handle(std::shared_ptr<Writer> writer, const std::string& path)
        : m_writer(std::move(writer)), m_file(std::make_shared<OpenFile>(path)) {
        (void)m_writer->post([writer = m_writer.get(), file = m_file] { writer->open(file); });
    }

    ~Handle() override { close(); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    void append(const FrameBytes& bytes) override {
        if (!m_file)
            return;
        auto* const writer = m_writer.get();
        if (writer->makeRoom(bytes.size()))
            (void)writer->post([writer, file = m_file, bytes] { writer->append(file, bytes); }, bytes.size());
        else
            (void)writer->post([writer, file = m_file] { writer->lose(file); });
    }

    void close() override {
        if (auto file = std::exchange(m_file, nullptr))
            (void)m_writer->post([writer = m_writer.get(), file = std::move(file)] { writer->close(file); });
    }

private:
    const std::shared_ptr<Writer> m_writer;
    OpenFileRef m_file; ///< null once closed
};

BackgroundFiles::BackgroundFiles(BackgroundFilesEvents events, BackgroundFilesLimits limits)
    : m_writer(std::make_shared<Writer>(std::move(events), limits)) {}

BackgroundFiles::~BackgroundFiles() {
    m_writer->end();
}

std::unique_ptr<FileHandle> BackgroundFiles::openForWriting(const std::string& path) {
    return std::make_unique<Handle>(m_writer, path);
}

void BackgroundFiles::finish(const std::string& path, const std::string& finalPath,
                             std::function<void(const std::optional<Error>& error)> done) {
    post([path, finalPath, done = std::move(done)] {
        const auto error = renameWithoutReplacing(path, finalPath);
        if (done)
            done(error);
    });
}

void BackgroundFiles::post(std::function<void()> function) {
    (void)m_writer->post(std::move(function));
}

void BackgroundFiles::drain() {
    m_writer->drain();
}

std::optional<Error> renameWithoutReplacing(const std::string& from, const std::string& to) {
    int result = ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
    if (result != 0 && (errno == EINVAL || errno == ENOSYS)) { // a file system that cannot do it in one step
        result = ::link(from.c_str(), to.c_str());
        if (result == 0)
            result = ::unlink(from.c_str());
    }
    if (result == 0)
        return std::nullopt;
    const int systemCode = errno;
    return fileError("give " + from + " its final name", to, systemCode);
}

} // namespace merro::platform::native
