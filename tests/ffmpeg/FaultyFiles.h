// A file system that can be small, broken or slow. What is not broken goes to the real one.
#pragma once

#include "platform/ffmpeg/OutputFiles.h"

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace merro::test {

class FaultyFiles final : public platform::ffmpeg::OutputFiles {
public:
    std::int64_t diskBytes = std::numeric_limits<std::int64_t>::max(); ///< room for all files together
    std::int64_t largestFile = std::numeric_limits<std::int64_t>::max();
    std::int64_t failAtBytes = -1; ///< a write that goes beyond this place of a file fails
    int failWith = EIO;
    std::function<void()> beforeRename;

    /// Writing waits from now on until `open` is called.
    void shutGate() { setGate(false); }
    void openGate() { setGate(true); }
    /// Blocks until somebody waits at the shut gate.
    void waitForWriter() {
        std::unique_lock lock(m_mutex);
        m_changed.wait(lock, [&] { return m_writersWaiting > 0; });
    }

    /// The largest room that was ever set aside in one file.
    [[nodiscard]] std::int64_t largestAllocation() const {
        const std::lock_guard lock(m_mutex);
        return m_largestAllocation;
    }

    std::unique_ptr<platform::ffmpeg::OutputFile> create(const std::string& path, int& error) override {
        auto file = m_real->create(path, error);
        return file ? std::make_unique<File>(*this, path, std::move(file)) : nullptr;
    }
    bool exists(const std::string& path) const override { return m_real->exists(path); }
    void remove(const std::string& path) override {
        {
            const std::lock_guard lock(m_mutex);
            m_used.erase(path);
        }
        m_real->remove(path);
    }
    int renameWithoutReplacing(const std::string& from, const std::string& to) override {
        if (beforeRename)
            beforeRename();
        return m_real->renameWithoutReplacing(from, to);
    }
    std::int64_t largestFileBytes(const std::string&) const override { return largestFile; }

private:
    class File final : public platform::ffmpeg::OutputFile {
    public:
        File(FaultyFiles& files, std::string path, std::unique_ptr<OutputFile> real)
            : m_files(files), m_path(std::move(path)), m_real(std::move(real)) {}

        std::size_t write(std::span<const std::uint8_t> bytes, std::int64_t offset, int& error) override {
            m_files.passGate();
            const auto end = offset + static_cast<std::int64_t>(bytes.size());
            if (m_files.failAtBytes >= 0 && end > m_files.failAtBytes) {
                error = m_files.failWith;
                return 0;
            }
            const auto fitting = static_cast<std::size_t>(m_files.use(m_path, offset, end) - offset);
            const std::size_t written = m_real->write(bytes.first(fitting), offset, error);
            if (error == 0 && fitting < bytes.size())
                error = ENOSPC;
            return written;
        }
        int allocate(std::int64_t length) override {
            return m_files.use(m_path, 0, length, true) == length ? 0 : ENOSPC;
        }
        int flushToDisk() override { return m_real->flushToDisk(); }

    private:
        FaultyFiles& m_files;
        std::string m_path;
        std::unique_ptr<OutputFile> m_real;
    };

    /// How far the file may grow towards `end`; never less than `offset`, which is where it was.
    std::int64_t use(const std::string& path, std::int64_t offset, std::int64_t end,
                     bool isAllocation = false) {
        const std::lock_guard lock(m_mutex);
        std::int64_t others = 0;
        for (const auto& [name, bytes] : m_used)
            others += name == path ? 0 : bytes;
        const std::int64_t room = std::max(std::min(end, diskBytes - others), offset);
        if (!isAllocation || room == end)
            m_used[path] = std::max(m_used[path], room);
        if (isAllocation)
            m_largestAllocation = std::max(m_largestAllocation, end);
        return room;
    }

    void setGate(bool isOpen) {
        const std::lock_guard lock(m_mutex);
        m_isGateOpen = isOpen;
        m_changed.notify_all();
    }

    void passGate() {
        std::unique_lock lock(m_mutex);
        ++m_writersWaiting;
        m_changed.notify_all();
        m_changed.wait(lock, [&] { return m_isGateOpen; });
        --m_writersWaiting;
    }

    std::shared_ptr<platform::ffmpeg::OutputFiles> m_real = platform::ffmpeg::makeOutputFiles();
    mutable std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_isGateOpen = true;
    int m_writersWaiting = 0;
    std::int64_t m_largestAllocation = 0;
    std::map<std::string, std::int64_t> m_used;
};

} // namespace merro::test
