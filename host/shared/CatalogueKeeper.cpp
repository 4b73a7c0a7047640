#include "host/shared/CatalogueKeeper.h"

#include "host/shared/AtomicFile.h"
#include "host/shared/Catalogue.h"
#include "host/shared/ClipsJson.h"
#include "host/shared/Failure.h"

#include <algorithm>
#include <utility>

namespace merro::host {

CatalogueKeeper::CatalogueKeeper(Places places, TapeEntry tape,
                                 std::function<void(const std::string& line)> problem)
    : m_places(std::move(places)), m_problem(std::move(problem)), m_tape(std::move(tape)),
      m_worker([this] { save(); }) {
    m_worker.post([] {}); // the tape is in the catalogue before its first clip has ended
}

CatalogueKeeper::~CatalogueKeeper() = default;

void CatalogueKeeper::addClip(ClipEntry clip) {
    m_worker.post([this, clip = std::move(clip)] {
        ClipEntry& added = m_clips.emplace_back(clip);
        const auto [first, last] = m_earlyChanges.equal_range(clip.number);
        for (auto early = first; early != last; ++early)
            early->second(added);
        m_earlyChanges.erase(first, last);
        m_changed.insert(clip.number);
    });
}

void CatalogueKeeper::changeClip(int number, std::function<void(ClipEntry& clip)> change) {
    m_worker.post([this, number, change = std::move(change)] {
        if (ClipEntry* clip = find(number)) {
            change(*clip);
            m_changed.insert(number);
        } else {
            m_earlyChanges.emplace(number, change);
        }
    });
}

void CatalogueKeeper::changeTape(std::function<void(TapeEntry& tape)> change) {
    m_worker.post([this, change = std::move(change)] {
        change(m_tape);
        m_tapeChanged = true;
    });
}

void CatalogueKeeper::finish() {
    if (std::exchange(m_isFinished, true))
        return;
    m_worker.finish();
    if (m_failure) // what failed may work by now
        save();
}

ClipEntry* CatalogueKeeper::find(int number) {
    const auto found = std::find_if(m_clips.begin(), m_clips.end(),
                                    [number](const ClipEntry& clip) { return clip.number == number; });
    return found == m_clips.end() ? nullptr : &*found;
}

void CatalogueKeeper::save() {
    try {
        saveToCatalogue();
        std::vector<ClipEntry> clips = m_earlierClips;
        clips.insert(clips.end(), m_clips.begin(), m_clips.end());
        // It can be had again from the catalogue, so the disk is not waited for.
        writeFileAtomically(m_places.clipsJson, clipsJson(m_tape, clips), Durable::No);
        m_failure.reset();
    } catch (const std::exception& problem) {
        m_failure = problem.what();
        if (!std::exchange(m_saidProblem, true) && m_problem)
            m_problem(*m_failure);
    }
}

void CatalogueKeeper::saveToCatalogue() {
    if (!m_catalogue) {
        auto catalogue = std::make_unique<Catalogue>(Catalogue::openForWriting(m_places.catalogue));
        m_earlierClips = catalogue->clips();
        m_catalogue = std::move(catalogue);
    }
    std::int64_t tapeId = m_tape.tapeId;
    m_catalogue->inOneTransaction([&] {
        if (tapeId == 0)
            tapeId = m_catalogue->addTape(m_tape);
        if (m_tapeChanged) {
            TapeEntry tape = m_tape;
            tape.tapeId = tapeId;
            m_catalogue->updateTape(tape);
        }
        for (const int number : m_changed) {
            ClipEntry clip = *find(number);
            clip.tapeId = tapeId;
            if (m_added.contains(number))
                m_catalogue->updateClip(clip);
            else
                m_catalogue->addClip(clip);
        }
    });
    m_tapeChanged = false;
    m_tape.tapeId = tapeId;
    for (ClipEntry& clip : m_clips)
        clip.tapeId = tapeId;
    m_added.insert(m_changed.begin(), m_changed.end());
    m_changed.clear();
}

} // namespace merro::host
