// Keeps catalogue and clips.json of a folder current while a tape is being logged.
//
// Operations may be called from any thread and return at once; a thread of the keeper's own does the writing.
// What arrives together is committed together: a report waits for nothing but the commit before it.
#pragma once

#include "host/shared/BackgroundWorker.h"
#include "host/shared/Entries.h"

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace merro::host {

class Catalogue;

class CatalogueKeeper {
public:
    struct Places {
        std::string catalogue;
        std::string clipsJson;
    };

    /// `problem` is told, on the keeper's thread, the first time something cannot be written; the keeper
    /// tries again with the next change and when it finishes.
    CatalogueKeeper(Places places, TapeEntry tape, std::function<void(const std::string& line)> problem);
    ~CatalogueKeeper(); ///< finishes
    CatalogueKeeper(const CatalogueKeeper&) = delete;
    CatalogueKeeper& operator=(const CatalogueKeeper&) = delete;

    /// A clip has been reported. Its tape is the keeper's own.
    void addClip(ClipEntry clip);
    /// Something more is known of a clip. What is known before the clip has been added waits for it.
    void changeClip(int number, std::function<void(ClipEntry& clip)> change);
    void changeTape(std::function<void(TapeEntry& tape)> change);

    /// Returns when all is on the disk, or will never be. The second call does nothing.
    void finish();

    // After finish().
    [[nodiscard]] const std::vector<ClipEntry>& clipsOfThisRun() const { return m_clips; }
    [[nodiscard]] const TapeEntry& tape() const { return m_tape; }
    /// What went wrong with the last attempt to write; none when everything is on the disk.
    [[nodiscard]] const std::optional<std::string>& failure() const { return m_failure; }

private:
    void save();
    void saveToCatalogue();
    [[nodiscard]] ClipEntry* find(int number);

    Places m_places;
    std::function<void(const std::string&)> m_problem;

    // The worker's thread only, until finish().
    TapeEntry m_tape;
    std::vector<ClipEntry> m_earlierClips;
    std::vector<ClipEntry> m_clips;
    std::multimap<int, std::function<void(ClipEntry&)>> m_earlyChanges;
    std::set<int> m_added;   ///< numbers that the catalogue has
    std::set<int> m_changed; ///< numbers whose newest state it has not
    bool m_tapeChanged = true;
    bool m_saidProblem = false;
    bool m_isFinished = false; ///< the owner's thread only
    std::optional<std::string> m_failure;
    std::unique_ptr<Catalogue> m_catalogue;

    BackgroundWorker m_worker; ///< last: its thread uses all of the above
};

} // namespace merro::host
