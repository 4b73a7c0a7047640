#include "platform/ffmpeg/MovieFile.h"

#include "platform/ffmpeg/Libav.h"

#include <algorithm>
#include <cerrno>

namespace merro::platform::ffmpeg {

namespace {

constexpr std::int64_t kReserveStepBytes = std::int64_t{1} << 20;
/// Of the movie's index: a chunk offset for the picture and, for each of two sound tracks, a chunk offset and
/// a run of equal chunks, 8 + 2 × (8 + 12) bytes; the rest is margin.
constexpr std::int64_t kIndexBytesPerFrame = 64;

std::int64_t reserveFor(std::int64_t frames) {
    const std::int64_t needed = kReserveStepBytes + frames * kIndexBytesPerFrame;
    return (needed + kReserveStepBytes - 1) / kReserveStepBytes * kReserveStepBytes;
}

bool isDiskFull(int error) {
    return error == ENOSPC || error == EDQUOT;
}

} // namespace

MovieFile::MovieFile(std::shared_ptr<OutputFiles> files, std::string path)
    : m_files(std::move(files)), m_path(std::move(path)) {}

MovieFile::~MovieFile() {
    dropReserve();
}

std::optional<Error> MovieFile::open() {
    if (m_files->exists(m_path))
        return fileError("write the movie", m_path, EEXIST);
    int error = 0;
    m_file = createBeside(*m_files, m_path, "part", m_partPath, error);
    if (!m_file)
        return fileError("write the movie", m_path, error);
    m_largest = m_files->largestFileBytes(m_path);
    m_reserve = createBeside(*m_files, m_path, "reserve", m_reservePath, error);
    growReserve(1);
    if (m_failure) {
        dropReserve();
        discard();
        return m_failure;
    }
    return std::nullopt;
}

void MovieFile::growReserve(std::int64_t frames) {
    const std::int64_t needed = reserveFor(frames);
    if (!m_reserve || needed <= m_reserved)
        return;
    const int error = m_reserve->allocate(needed);
    if (error == 0)
        m_reserved = needed;
    else if (isDiskFull(error))
        fail(fileError("write the movie", m_path, error));
    // A file system that cannot set room aside: the movie does without.
}

void MovieFile::dropReserve() {
    if (!m_reserve)
        return;
    m_reserve.reset();
    m_reserved = 0;
    m_files->remove(m_reservePath);
}

void MovieFile::prepareFor(std::int64_t frames, std::size_t bytes) {
    growReserve(frames);
    const auto afterwards = m_end + static_cast<std::int64_t>(bytes);
    if (afterwards > m_largest - reserveFor(frames))
        fail({"cannot go on with the movie '" + m_path + "' (no larger file is possible there)",
              "record to a disk with another file system, or into shorter movies", EFBIG});
}

bool MovieFile::write(std::span<const std::uint8_t> bytes) {
    while (!bytes.empty() && !m_isBroken) {
        int error = 0;
        const std::size_t written = m_file->write(bytes, m_position, error);
        m_position += static_cast<std::int64_t>(written);
        m_end = std::max(m_end, m_position);
        bytes = bytes.subspan(written);
        if (error == 0)
            continue;
        fail(fileError("write the movie", m_path, error));
        m_isBroken = !isDiskFull(error) || m_reserve == nullptr;
        dropReserve();
    }
    // What could not be written keeps its place, so that what comes after it is still found.
    m_position += static_cast<std::int64_t>(bytes.size());
    return !m_isBroken;
}

std::optional<Error> MovieFile::complete(bool flushToDisk) {
    dropReserve();
    int error = flushToDisk ? m_file->flushToDisk() : 0;
    m_file.reset();
    if (error == 0)
        error = m_files->renameWithoutReplacing(m_partPath, m_path);
    if (error == 0)
        return std::nullopt;
    Error failure = fileError("give the movie its name", m_path, error);
    failure.remedy += (failure.remedy.empty() ? "" : "; ") + ("the movie is in '" + m_partPath + "'");
    return failure;
}

void MovieFile::discard() {
    m_file.reset();
    m_files->remove(m_partPath);
}

void MovieFile::fail(const Error& error) {
    if (!m_failure)
        m_failure = error;
}

} // namespace merro::platform::ffmpeg
