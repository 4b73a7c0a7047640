// A file mapped into memory for reading, of which only what lies around the place being read stays in memory.
//
// One thread at a time, but the bytes may be read by any thread as long as someone holds the mapping.
#pragma once

#include "platform/Error.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <variant>

namespace merro::platform::deck {

class MappedFile {
public:
    /// Maps a regular file that is not empty. The error names the path and carries the errno.
    [[nodiscard]] static std::variant<std::shared_ptr<MappedFile>, Error> map(const std::string& path);

    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    /// The file as it was when it was mapped. Bytes beyond currentSize() must not be touched.
    [[nodiscard]] std::span<const std::uint8_t> bytes() const { return m_bytes; }

    /// The reading has come to `offset`: the stretch of the file around it is brought into memory in one go,
    /// which costs far less than a fault for every few pages, and what lies far from it is given back.
    void moveTo(std::size_t offset);

    /// How long the file is now, at most as long as it was when it was mapped.
    [[nodiscard]] std::size_t currentSize() const;

private:
    MappedFile(int descriptor, std::span<const std::uint8_t> bytes);
    void giveBack(std::size_t from, std::size_t to) const;

    int m_descriptor;
    std::span<const std::uint8_t> m_bytes;
    std::size_t m_stretch = static_cast<std::size_t>(-1);
    std::size_t m_touchedFrom = 0;
    std::size_t m_touchedTo = 0;
};

} // namespace merro::platform::deck
