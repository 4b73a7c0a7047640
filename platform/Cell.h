// A field that two threads touch.
#pragma once

#include <mutex>
#include <utility>

namespace merro::platform {

/// A value with a private mutex around its copy in and out. Nothing is ever called while the mutex is held
/// but the value's own copy, so a Cell cannot take part in a deadlock. The old value is destroyed after the
/// mutex is released.
template <typename T>
class Cell {
public:
    Cell() = default;
    explicit Cell(T value) : m_value(std::move(value)) {}

    [[nodiscard]] T get() const {
        const std::lock_guard lock(m_mutex);
        return m_value;
    }

    void set(T value) { (void)exchange(std::move(value)); }

    [[nodiscard]] T exchange(T value) {
        const std::lock_guard lock(m_mutex);
        std::swap(m_value, value);
        return value;
    }

private:
    mutable std::mutex m_mutex;
    T m_value{};
};

} // namespace merro::platform
