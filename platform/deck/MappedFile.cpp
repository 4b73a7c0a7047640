#include "platform/deck/MappedFile.h"

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace merro::platform::deck {

namespace {

/// A multiple of every page size.
constexpr std::size_t stretchSize = std::size_t{4} << 20;

/// How many stretches before and after the one being read stay in memory.
constexpr std::size_t stretchesKept = 4;

Error cannotRead(const std::string& path, int code) {
    return {"\"" + path + "\" cannot be read", std::generic_category().message(code), code};
}

} // namespace

std::variant<std::shared_ptr<MappedFile>, Error> MappedFile::map(const std::string& path) {
    const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (descriptor < 0)
        return cannotRead(path, errno);
    struct stat status {};
    if (::fstat(descriptor, &status) != 0) {
        const int code = errno;
        ::close(descriptor);
        return cannotRead(path, code);
    }
    const auto size = static_cast<std::size_t>(status.st_size);
    void* const address = ::mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
    if (address == MAP_FAILED) {
        const int code = errno;
        ::close(descriptor);
        return cannotRead(path, code);
    }
    ::madvise(address, size, MADV_SEQUENTIAL);
    return std::shared_ptr<MappedFile>(
        new MappedFile(descriptor, {static_cast<const std::uint8_t*>(address), size}));
}

MappedFile::MappedFile(int descriptor, std::span<const std::uint8_t> bytes)
    : m_descriptor(descriptor), m_bytes(bytes) {}

MappedFile::~MappedFile() {
    ::munmap(const_cast<std::uint8_t*>(m_bytes.data()), m_bytes.size());
    ::close(m_descriptor);
}

void MappedFile::moveTo(std::size_t offset) {
    const std::size_t stretch = offset / stretchSize;
    if (stretch == m_stretch)
        return;
    m_stretch = stretch;
    const std::size_t from = stretch * stretchSize;
    const std::size_t to = std::min(from + stretchSize, m_bytes.size());
    const std::size_t keepFrom = from - std::min(from, stretchesKept * stretchSize);
    const std::size_t keepTo = std::min(to + stretchesKept * stretchSize, m_bytes.size());
    giveBack(m_touchedFrom, std::min(keepFrom, m_touchedTo));
    giveBack(std::max(keepTo, m_touchedFrom), m_touchedTo);
    m_touchedFrom = std::clamp(m_touchedFrom, keepFrom, from);
    m_touchedTo = std::clamp(m_touchedTo, to, keepTo);
    // Not needed for anything to be right, and unknown to kernels before 5.14.
    (void)::madvise(const_cast<std::uint8_t*>(m_bytes.data()) + from, to - from, MADV_POPULATE_READ);
}

void MappedFile::giveBack(std::size_t from, std::size_t to) const {
    if (from < to)
        ::madvise(const_cast<std::uint8_t*>(m_bytes.data()) + from, to - from, MADV_DONTNEED);
}

std::size_t MappedFile::currentSize() const {
    struct stat status {};
    if (::fstat(m_descriptor, &status) != 0)
        return 0;
    return std::min(static_cast<std::size_t>(status.st_size), m_bytes.size());
}

} // namespace merro::platform::deck
