#include "host/shared/Database.h"

#include "host/shared/Failure.h"
#include "host/shared/Soci.h"

#include <fmt/format.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <span>
#include <system_error>

namespace merro::host {

namespace {

/// "MERR" in the header field in which SQLite files say whose they are.
constexpr std::uint32_t kApplicationId = 0x4D455252;

/// The opening of an SQLite file: a fixed text, and among others two big-endian numbers.
constexpr std::size_t kHeaderSize = 100;
constexpr std::size_t kUserVersionOffset = 60;
constexpr std::size_t kApplicationIdOffset = 68;
constexpr char kMagic[] = "SQLite format 3";

constexpr const char* kSchema[] = {
    "CREATE TABLE tapes ("
    " tape_id INTEGER PRIMARY KEY, name TEXT NOT NULL, source TEXT NOT NULL, system TEXT NOT NULL,"
    " frames BIGINT NOT NULL, logged_at TEXT NOT NULL, settings TEXT NOT NULL)",
    "CREATE TABLE findings ("
    " tape_id INTEGER NOT NULL REFERENCES tapes (tape_id), offset_bytes BIGINT NOT NULL,"
    " length_bytes BIGINT NOT NULL, what TEXT NOT NULL)",
    "CREATE TABLE clips ("
    " clip_number INTEGER PRIMARY KEY, clip_id TEXT NOT NULL UNIQUE,"
    " tape_id INTEGER NOT NULL REFERENCES tapes (tape_id),"
    " recording_date TEXT, start_timecode TEXT, end_timecode TEXT, duration TEXT, aspect_ratio INTEGER NOT "
    "NULL,"
    " movie_path TEXT, thumbnail_path TEXT, poster_path TEXT, frames_lost BIGINT NOT NULL, problem TEXT NOT "
    "NULL)",
    "CREATE TABLE presets (name TEXT PRIMARY KEY, settings TEXT NOT NULL)",
};

std::uint32_t bigEndian(std::span<const unsigned char> bytes, std::size_t offset) {
    return (std::uint32_t{bytes[offset]} << 24) | (std::uint32_t{bytes[offset + 1]} << 16) |
           (std::uint32_t{bytes[offset + 2]} << 8) | std::uint32_t{bytes[offset + 3]};
}

/// A path with "=" would be read as an option of the connection, so such paths are quoted.
std::string connectionText(const std::string& path, bool readOnly) {
    if (path.find('"') != std::string::npos)
        throw Failure(
            fmt::format("The catalogue {} cannot be opened: its path has a quotation mark in it", path));
    return fmt::format("db=\"{}\" timeout=5{}", path, readOnly ? " readonly=true" : "");
}

std::unique_ptr<soci::session> connect(const std::string& path, bool readOnly) {
    try {
        return std::make_unique<soci::session>(soci::sqlite3, connectionText(path, readOnly));
    } catch (const soci::soci_error& error) {
        throw Failure(fmt::format("The catalogue {} cannot be opened: {}", path, error.get_error_message()));
    }
}

void createSchema(soci::session& session) {
    soci::transaction transaction(session);
    int version = 0;
    session << "PRAGMA user_version", soci::into(version);
    if (version == 0) { // or another program has been quicker
        for (const char* statement : kSchema)
            session << statement;
        session << fmt::format("PRAGMA application_id = {}", kApplicationId);
        session << fmt::format("PRAGMA user_version = {}", Database::kSchemaVersion);
    }
    transaction.commit();
}

} // namespace

void Database::requireUsable(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error) || std::filesystem::file_size(path, error) == 0)
        return;
    std::array<unsigned char, kHeaderSize> header{};
    std::ifstream file(path, std::ios::binary);
    if (!file.is_open())
        throw Failure(
            fmt::format("The catalogue {} cannot be read: {}", path, std::generic_category().message(errno)));
    file.read(reinterpret_cast<char*>(header.data()), static_cast<std::streamsize>(header.size()));
    if (file.gcount() != static_cast<std::streamsize>(kHeaderSize) ||
        std::memcmp(header.data(), kMagic, sizeof kMagic) != 0 ||
        bigEndian(header, kApplicationIdOffset) != kApplicationId)
        throw Failure(fmt::format("{} is not a catalogue of this program; it is left as it is", path));
    const std::uint32_t version = bigEndian(header, kUserVersionOffset);
    if (version > static_cast<std::uint32_t>(kSchemaVersion))
        throw Failure(
            fmt::format("The catalogue {} is of version {}, this program knows versions up to {}; it is "
                        "left as it is, please use a newer program",
                        path, version, kSchemaVersion));
}

Database Database::openForWriting(const std::string& path) {
    requireUsable(path);
    auto session = connect(path, false);
    try {
        // A commit is on the disk when it returns.
        *session << "PRAGMA synchronous = FULL";
        *session << "PRAGMA foreign_keys = ON";
        int version = 0;
        *session << "PRAGMA user_version", soci::into(version);
        if (version == 0)
            createSchema(*session);
    } catch (const soci::soci_error& error) {
        throw Failure(fmt::format("The catalogue {} cannot be written: {}", path, error.get_error_message()));
    }
    return {path, std::move(session)};
}

Database Database::openForReading(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error))
        throw Failure(fmt::format("There is no catalogue {}", path));
    requireUsable(path);
    return {path, connect(path, true)};
}

Database::Database(std::string path, std::unique_ptr<soci::session> session)
    : m_path(std::move(path)), m_session(std::move(session)) {}
Database::Database(Database&& other) noexcept = default;
Database& Database::operator=(Database&& other) noexcept = default;
Database::~Database() = default;

} // namespace merro::host
