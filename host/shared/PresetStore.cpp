#include "host/shared/PresetStore.h"

#include "host/shared/Database.h"
#include "host/shared/Failure.h"
#include "host/shared/Soci.h"
#include "platform/native/JsonValue.h"

#include <fmt/format.h>

#include <filesystem>

namespace merro::host {

namespace {

/// The preset key under which a preset carries its display name.
constexpr const char* kPresetNameKey = "optionsName";

template <typename Body>
auto speaking(const std::string& path, Body body) {
    try {
        return body();
    } catch (const soci::soci_error& error) {
        throw Failure(fmt::format("The presets in {}: {}", path, error.get_error_message()));
    }
}

platform::Dictionary dictionaryFromText(const std::string& path, const std::string& text) {
    try {
        const platform::Value value = platform::native::valueFromJson(nlohmann::json::parse(text));
        if (const auto* dictionary = value.getIf<platform::Dictionary>())
            return *dictionary;
    } catch (const std::exception&) { // what is wrong with it helps nobody
    }
    throw Failure(fmt::format("The presets in {} are damaged", path));
}

bool thereIsAStore(const std::string& path) {
    std::error_code error;
    return std::filesystem::exists(path, error);
}

} // namespace

PresetStore PresetStore::besideSettings(const std::string& settingsPath) {
    return PresetStore(std::filesystem::path(settingsPath).replace_extension(".presets.sqlite").string());
}

std::vector<std::string> PresetStore::names() const {
    std::vector<std::string> names;
    if (!thereIsAStore(m_path))
        return names;
    Database database = Database::openForReading(m_path);
    return speaking(m_path, [&] {
        const soci::rowset<std::string> rows =
            (database.session().prepare << "SELECT name FROM presets ORDER BY name");
        names.assign(rows.begin(), rows.end());
        return names;
    });
}

std::optional<platform::Dictionary> PresetStore::preset(const std::string& name) const {
    if (!thereIsAStore(m_path))
        return std::nullopt;
    Database database = Database::openForReading(m_path);
    return speaking(m_path, [&]() -> std::optional<platform::Dictionary> {
        std::string settings;
        soci::session& session = database.session();
        session << "SELECT settings FROM presets WHERE name = :name", soci::use(name, "name"),
            soci::into(settings);
        if (!session.got_data())
            return std::nullopt;
        return dictionaryFromText(m_path, settings);
    });
}

void PresetStore::save(const std::string& name, platform::Dictionary preset) {
    preset.insert_or_assign(kPresetNameKey, platform::Value(name));
    std::error_code error;
    if (const auto folder = std::filesystem::path(m_path).parent_path(); !folder.empty()) {
        std::filesystem::create_directories(folder, error);
        if (error)
            throw Failure(fmt::format("The folder {} for presets cannot be made: {}", folder.string(),
                                      error.message()));
    }
    Database database = Database::openForWriting(m_path);
    const std::string settings = platform::native::jsonFromValue(preset).dump();
    speaking(m_path, [&] {
        soci::session& session = database.session();
        soci::transaction transaction(session);
        session << "DELETE FROM presets WHERE name = :name", soci::use(name, "name");
        session << "INSERT INTO presets (name, settings) VALUES (:name, :settings)", soci::use(name, "name"),
            soci::use(settings, "settings");
        transaction.commit();
    });
}

bool PresetStore::remove(const std::string& name) {
    if (!preset(name))
        return false;
    Database database = Database::openForWriting(m_path);
    speaking(m_path, [&] {
        database.session() << "DELETE FROM presets WHERE name = :name", soci::use(name, "name");
    });
    return true;
}

} // namespace merro::host
