// A subscription: while the object lives, the callback is called.
#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace merro::platform {

/// Ends the subscription when destroyed. May be destroyed on any thread; a call already under way on another
/// thread may still finish afterwards, so callbacks reach their owner through something that says whether it
/// still lives.
class Observation {
public:
    Observation() = default;
    explicit Observation(std::function<void()> end) : m_end(std::move(end)) {}
    Observation(Observation&& other) noexcept : m_end(std::exchange(other.m_end, nullptr)) {}
    Observation& operator=(Observation&& other) noexcept {
        if (this != &other) {
            finish();
            m_end = std::exchange(other.m_end, nullptr);
        }
        return *this;
    }
    Observation(const Observation&) = delete;
    Observation& operator=(const Observation&) = delete;
    ~Observation() { finish(); }

private:
    void finish() {
        if (auto end = std::exchange(m_end, nullptr))
            end();
    }

    std::function<void()> m_end;
};

} // namespace merro::platform
