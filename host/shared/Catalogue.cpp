#include "host/shared/Catalogue.h"

#include "host/shared/Failure.h"
#include "host/shared/Soci.h"

#include <fmt/format.h>

namespace merro::host {

namespace {

/// Runs `body` and turns the database's complaint into one line that names the catalogue.
template <typename Body>
auto speaking(const Database& database, Body body) {
    try {
        return body();
    } catch (const soci::soci_error& error) {
        throw Failure(fmt::format("The catalogue {}: {}", database.path(), error.get_error_message()));
    }
}

/// An optional text on its way into the database: SOCI wants the value and whether it counts side by side.
struct OptionalText {
    explicit OptionalText(const std::optional<std::string>& from)
        : text(from.value_or("")), indicator(from ? soci::i_ok : soci::i_null) {}
    std::string text;
    soci::indicator indicator;
};

struct ClipTexts {
    explicit ClipTexts(const ClipEntry& clip)
        : recordingDate(clip.recordingDate), startTimecode(clip.startTimecode), endTimecode(clip.endTimecode),
          duration(clip.duration), moviePath(clip.moviePath), thumbnailPath(clip.thumbnailPath),
          posterPath(clip.posterPath) {}
    OptionalText recordingDate, startTimecode, endTimecode, duration, moviePath, thumbnailPath, posterPath;
};

std::optional<std::string> optionalText(const soci::row& row, std::size_t column) {
    if (row.get_indicator(column) == soci::i_null)
        return std::nullopt;
    return row.get<std::string>(column);
}

void runClipStatement(soci::session& session, const char* statement, const ClipEntry& clip) {
    ClipTexts texts(clip);
    const std::string clipId = clip.clipId();
    session << statement, soci::use(clip.number, "number"), soci::use(clipId, "id"),
        soci::use(clip.tapeId, "tape"),
        soci::use(texts.recordingDate.text, texts.recordingDate.indicator, "date"),
        soci::use(texts.startTimecode.text, texts.startTimecode.indicator, "start"),
        soci::use(texts.endTimecode.text, texts.endTimecode.indicator, "end"),
        soci::use(texts.duration.text, texts.duration.indicator, "duration"),
        soci::use(clip.aspectRatio, "aspect"),
        soci::use(texts.moviePath.text, texts.moviePath.indicator, "movie"),
        soci::use(texts.thumbnailPath.text, texts.thumbnailPath.indicator, "thumbnail"),
        soci::use(texts.posterPath.text, texts.posterPath.indicator, "poster"),
        soci::use(clip.framesLost, "lost"), soci::use(clip.problem, "problem");
}

ClipEntry clipFromRow(const soci::row& row) {
    ClipEntry clip;
    clip.number = row.get<int>(0);
    clip.tapeId = row.get<int>(1);
    clip.recordingDate = optionalText(row, 2);
    clip.startTimecode = optionalText(row, 3);
    clip.endTimecode = optionalText(row, 4);
    clip.duration = optionalText(row, 5);
    clip.aspectRatio = row.get<int>(6);
    clip.moviePath = optionalText(row, 7);
    clip.thumbnailPath = optionalText(row, 8);
    clip.posterPath = optionalText(row, 9);
    clip.framesLost = row.get<long long>(10);
    clip.problem = row.get<std::string>(11);
    return clip;
}

} // namespace

Catalogue Catalogue::openForWriting(const std::string& path) {
    return Catalogue(Database::openForWriting(path));
}

Catalogue Catalogue::openForReading(const std::string& path) {
    return Catalogue(Database::openForReading(path));
}

void Catalogue::inOneTransaction(const std::function<void()>& changes) {
    speaking(m_database, [&] {
        soci::transaction transaction(m_database.session());
        changes();
        transaction.commit();
    });
}

std::int64_t Catalogue::addTape(const TapeEntry& tape) {
    return speaking(m_database, [&] {
        soci::session& session = m_database.session();
        long long last = 0;
        session << "SELECT COALESCE(MAX(tape_id), 0) FROM tapes", soci::into(last);
        const long long tapeId = last + 1;
        session << "INSERT INTO tapes (tape_id, name, source, system, frames, logged_at, settings)"
                   " VALUES (:id, :name, :source, :system, :frames, :logged, :settings)",
            soci::use(tapeId, "id"), soci::use(tape.name, "name"), soci::use(tape.source, "source"),
            soci::use(tape.system, "system"), soci::use(tape.frames, "frames"),
            soci::use(tape.loggedAt, "logged"), soci::use(tape.settings, "settings");
        return std::int64_t{tapeId};
    });
}

void Catalogue::updateTape(const TapeEntry& tape) {
    speaking(m_database, [&] {
        soci::session& session = m_database.session();
        session << "UPDATE tapes SET name = :name, source = :source, system = :system, frames = :frames,"
                   " logged_at = :logged, settings = :settings WHERE tape_id = :id",
            soci::use(tape.name, "name"), soci::use(tape.source, "source"), soci::use(tape.system, "system"),
            soci::use(tape.frames, "frames"), soci::use(tape.loggedAt, "logged"),
            soci::use(tape.settings, "settings"), soci::use(tape.tapeId, "id");
        session << "DELETE FROM findings WHERE tape_id = :id", soci::use(tape.tapeId, "id");
        for (const FindingEntry& finding : tape.findings)
            session << "INSERT INTO findings (tape_id, offset_bytes, length_bytes, what)"
                       " VALUES (:id, :offset, :length, :what)",
                soci::use(tape.tapeId, "id"), soci::use(finding.offsetBytes, "offset"),
                soci::use(finding.lengthBytes, "length"), soci::use(finding.what, "what");
    });
}

void Catalogue::addClip(const ClipEntry& clip) {
    speaking(m_database, [&] {
        runClipStatement(m_database.session(),
                         "INSERT INTO clips (clip_number, clip_id, tape_id, recording_date, start_timecode,"
                         " end_timecode, duration, aspect_ratio, movie_path, thumbnail_path, poster_path,"
                         " frames_lost, problem) VALUES (:number, :id, :tape, :date, :start, :end, :duration,"
                         " :aspect, :movie, :thumbnail, :poster, :lost, :problem)",
                         clip);
    });
}

void Catalogue::updateClip(const ClipEntry& clip) {
    speaking(m_database, [&] {
        runClipStatement(m_database.session(),
                         "UPDATE clips SET clip_id = :id, tape_id = :tape, recording_date = :date,"
                         " start_timecode = :start, end_timecode = :end, duration = :duration,"
                         " aspect_ratio = :aspect, movie_path = :movie, thumbnail_path = :thumbnail,"
                         " poster_path = :poster, frames_lost = :lost, problem = :problem"
                         " WHERE clip_number = :number",
                         clip);
    });
}

std::vector<TapeEntry> Catalogue::tapes() {
    return speaking(m_database, [&] {
        std::vector<TapeEntry> tapes;
        const soci::rowset<soci::row> rows =
            (m_database.session().prepare << "SELECT tape_id, name, source, system, frames,"
                                             " logged_at, settings FROM tapes ORDER BY tape_id");
        for (const soci::row& row : rows) {
            TapeEntry tape;
            tape.tapeId = row.get<int>(0);
            tape.name = row.get<std::string>(1);
            tape.source = row.get<std::string>(2);
            tape.system = row.get<std::string>(3);
            tape.frames = row.get<long long>(4);
            tape.loggedAt = row.get<std::string>(5);
            tape.settings = row.get<std::string>(6);
            tapes.push_back(std::move(tape));
        }
        for (TapeEntry& tape : tapes) {
            const soci::rowset<soci::row> found =
                (m_database.session().prepare
                     << "SELECT offset_bytes, length_bytes,"
                        " what FROM findings WHERE tape_id = :id ORDER BY offset_bytes",
                 soci::use(tape.tapeId, "id"));
            for (const soci::row& row : found)
                tape.findings.push_back(
                    {row.get<long long>(0), row.get<long long>(1), row.get<std::string>(2)});
        }
        return tapes;
    });
}

std::vector<ClipEntry> Catalogue::clips() {
    return speaking(m_database, [&] {
        std::vector<ClipEntry> clips;
        const soci::rowset<soci::row> rows =
            (m_database.session().prepare
             << "SELECT clip_number, tape_id, recording_date, start_timecode, end_timecode, duration,"
                " aspect_ratio, movie_path, thumbnail_path, poster_path, frames_lost, problem FROM clips"
                " ORDER BY clip_number");
        for (const soci::row& row : rows)
            clips.push_back(clipFromRow(row));
        return clips;
    });
}

int Catalogue::lastClipNumber() {
    return speaking(m_database, [&] {
        int last = 0;
        m_database.session() << "SELECT COALESCE(MAX(clip_number), 0) FROM clips", soci::into(last);
        return last;
    });
}

} // namespace merro::host
