// The catalogue of a folder: its tapes, their clips and where the clips' files lie.
//
// One thread at a time. Every operation throws Failure with one line when the database does not do as told.
#pragma once

#include "host/shared/Database.h"
#include "host/shared/Entries.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace merro::host {

class Catalogue {
public:
    /// "catalogue.sqlite" in its folder.
    static constexpr const char* kFileName = "catalogue.sqlite";

    [[nodiscard]] static Catalogue openForWriting(const std::string& path);
    [[nodiscard]] static Catalogue openForReading(const std::string& path);

    /// Everything that `changes` does is on the disk when this returns, or nothing of it when this throws.
    void inOneTransaction(const std::function<void()>& changes);

    /// Adds a run and answers its identifier. Findings are kept by updateTape.
    [[nodiscard]] std::int64_t addTape(const TapeEntry& tape);
    /// Replaces what is kept under `tape.tapeId`, findings included.
    void updateTape(const TapeEntry& tape);

    /// Adds a clip; a number that is there already is refused.
    void addClip(const ClipEntry& clip);
    /// Replaces what is kept under `clip.number`.
    void updateClip(const ClipEntry& clip);

    [[nodiscard]] std::vector<TapeEntry> tapes(); ///< in the order in which they were logged
    [[nodiscard]] std::vector<ClipEntry> clips(); ///< by number
    [[nodiscard]] int lastClipNumber();           ///< 0 when there is none

private:
    explicit Catalogue(Database database) : m_database(std::move(database)) {}

    Database m_database;
};

} // namespace merro::host
