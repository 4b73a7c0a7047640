// The SQL database behind a catalogue: opening it, and the schema in the version that this program knows.
//
// One thread at a time. The only place that knows that the database is SQLite; statements elsewhere keep to
// standard SQL, so that a server database can stand in.
#pragma once

#include <memory>
#include <string>

namespace soci {
class session;
}

namespace merro::host {

class Database {
public:
    /// The version of the schema that this program writes, kept in the file as `PRAGMA user_version`.
    static constexpr int kSchemaVersion = 1;

    /// Opens the catalogue at `path`; creates it when there is no file or an empty one. Throws Failure: the
    /// catalogue is of a newer version or no catalogue at all (the file is left untouched), or it cannot be
    /// opened or written.
    [[nodiscard]] static Database openForWriting(const std::string& path);

    /// Opens an existing catalogue and never writes to it. Throws Failure.
    [[nodiscard]] static Database openForReading(const std::string& path);

    /// Throws Failure when the file at `path` is there but is no catalogue that this program can use. Reads
    /// the file's header only; the database is not opened.
    static void requireUsable(const std::string& path);

    Database(Database&& other) noexcept;
    Database& operator=(Database&& other) noexcept;
    ~Database();

    [[nodiscard]] soci::session& session() { return *m_session; }
    [[nodiscard]] const std::string& path() const { return m_path; }

private:
    Database(std::string path, std::unique_ptr<soci::session> session);

    std::string m_path;
    std::unique_ptr<soci::session> m_session;
};

} // namespace merro::host
