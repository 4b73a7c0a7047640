// Files that exist in memory only. Any thread.
#pragma once

#include "platform/Files.h"

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace merro::test {

class MemoryFiles : public platform::Files {
public:
    struct File {
        std::vector<std::uint8_t> bytes;
        int timesOpened = 0;
        int openNow = 0;
    };

    /// The file at `path` as it is now; empty when there is none.
    [[nodiscard]] File file(const std::string& path) const {
        const std::lock_guard lock(m_state->mutex);
        const auto found = m_state->files.find(path);
        return found == m_state->files.end() ? File{} : found->second;
    }
    [[nodiscard]] std::vector<std::string> paths() const {
        const std::lock_guard lock(m_state->mutex);
        std::vector<std::string> all;
        for (const auto& [path, file] : m_state->files)
            all.push_back(path);
        return all;
    }
    void put(const std::string& path, std::vector<std::uint8_t> bytes) {
        const std::lock_guard lock(m_state->mutex);
        m_state->files[path].bytes = std::move(bytes);
    }

    [[nodiscard]] std::unique_ptr<platform::FileHandle> openForWriting(const std::string& path) override {
        return std::make_unique<Handle>(m_state, path);
    }

private:
    struct State {
        std::mutex mutex;
        std::map<std::string, File> files;
    };

    class Handle : public platform::FileHandle {
    public:
        Handle(std::shared_ptr<State> state, std::string path)
            : m_state(std::move(state)), m_path(std::move(path)) {
            const std::lock_guard lock(m_state->mutex);
            ++m_state->files[m_path].timesOpened;
            ++m_state->files[m_path].openNow;
        }
        ~Handle() override { finish(); }
        Handle(const Handle&) = delete;
        Handle& operator=(const Handle&) = delete;

        void append(const platform::FrameBytes& frame) override {
            const std::lock_guard lock(m_state->mutex);
            auto& bytes = m_state->files[m_path].bytes;
            bytes.resize(std::max(bytes.size(), m_offset + frame.size()));
            std::ranges::copy(frame.bytes(), bytes.begin() + static_cast<std::ptrdiff_t>(m_offset));
            m_offset += frame.size();
        }
        void close() override { finish(); }

    private:
        void finish() {
            const std::lock_guard lock(m_state->mutex);
            if (std::exchange(m_isOpen, false))
                --m_state->files[m_path].openNow;
        }

        std::shared_ptr<State> m_state;
        std::string m_path;
        std::size_t m_offset = 0;
        bool m_isOpen = true;
    };

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

} // namespace merro::test
