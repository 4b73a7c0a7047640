// What several fakes did, in one order. Any thread.
#pragma once

#include <mutex>
#include <string>
#include <utility>
#include <vector>

namespace merro::test {

class Journal {
public:
    void add(std::string entry) {
        const std::lock_guard lock(m_mutex);
        m_entries.push_back(std::move(entry));
    }

    [[nodiscard]] std::vector<std::string> entries() const {
        const std::lock_guard lock(m_mutex);
        return m_entries;
    }

    void clear() {
        const std::lock_guard lock(m_mutex);
        m_entries.clear();
    }

private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_entries;
};

} // namespace merro::test
