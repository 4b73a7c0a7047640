#include "platform/native/JsonUserDefaults.h"

#include "platform/native/DefaultsFile.h"

#include <cstdlib>
#include <pwd.h>
#include <set>
#include <unistd.h>
#include <utility>

namespace merro::platform::native {

namespace {

std::string environment(const char* name) {
    const char* const value = std::getenv(name); // NOLINT(concurrency-mt-unsafe): nobody sets it
    return value ? value : "";
}

std::string homeFolder() {
    if (std::string home = environment("HOME"); !home.empty())
        return home;
    passwd entry{};
    passwd* found = nullptr;
    char texts[4096];
    if (::getpwuid_r(::getuid(), &entry, texts, sizeof texts, &found) == 0 && found != nullptr)
        return found->pw_dir;
    return "/";
}

} // namespace

std::string JsonUserDefaults::defaultPath() {
    const std::string configured = environment("XDG_CONFIG_HOME");
    // A relative path there is to be ignored (XDG Base Directory Specification).
    const std::string folder = configured.starts_with('/') ? configured : homeFolder() + "/.config";
    return folder + "/BXMerroCapture/defaults.json";
}

JsonUserDefaults::JsonUserDefaults(const std::string& path, std::function<void(const Error& problem)> problem)
    : m_problem(std::move(problem)), m_file(std::make_unique<DefaultsFile>(path)) {
    auto contents = m_file->read();
    for (auto& [key, value] : contents.values)
        m_values.store(std::move(value), key);
    if (!contents.error)
        return;
    m_file.reset();
    if (m_problem)
        m_problem(*contents.error);
}

JsonUserDefaults::~JsonUserDefaults() = default;

std::optional<Value> JsonUserDefaults::objectForKey(std::string_view key) const {
    return m_values.objectForKey(key);
}

void JsonUserDefaults::setObjectForKey(Value value, std::string_view key) {
    change(std::move(value), key);
}

void JsonUserDefaults::removeObjectForKey(std::string_view key) {
    change(std::nullopt, key);
}

Observation JsonUserDefaults::addObserver(std::string key,
                                          std::function<void(const std::string& key)> observer) {
    return m_values.addObserver(std::move(key), std::move(observer));
}

void JsonUserDefaults::change(std::optional<Value> value, std::string_view key) {
    bool writesNow = false;
    {
        const std::lock_guard lock(m_mutex);
        m_values.store(value, key);
        m_changes.insert_or_assign(std::string(key), std::move(value));
        writesNow = m_holds == 0;
    }
    if (writesNow)
        writeChanges();
    m_values.callObservers(key);
}

std::shared_ptr<void> JsonUserDefaults::holdWriting() {
    const std::lock_guard lock(m_mutex);
    ++m_holds;
    return {nullptr, [this](void*) { finishHold(); }};
}

void JsonUserDefaults::finishHold() {
    bool writesNow = false;
    {
        const std::lock_guard lock(m_mutex);
        writesNow = --m_holds == 0;
    }
    if (writesNow)
        writeChanges();
}

void JsonUserDefaults::writeChanges() {
    std::vector<std::string> changedByOthers;
    std::optional<Error> error;
    {
        const std::lock_guard fileLock(m_fileMutex);
        if (!m_file)
            return;
        Changes changes;
        {
            const std::lock_guard lock(m_mutex);
            changes.swap(m_changes);
        }
        if (changes.empty())
            return; // another thread has just written them
        auto contents = m_file->update([&](Dictionary& values) { return apply(changes, values); });
        if (contents.error)
            m_file.reset();
        else
            changedByOthers = takeOver(contents.values);
        error = std::move(contents.error);
    }
    if (error && m_problem)
        m_problem(*error);
    for (const auto& key : changedByOthers)
        m_values.callObservers(key);
}

bool JsonUserDefaults::apply(const Changes& changes, Dictionary& values) {
    bool hasChanged = false;
    for (const auto& [key, value] : changes) {
        const auto found = values.find(key);
        const bool isSame = value ? found != values.end() && found->second == *value : found == values.end();
        if (isSame)
            continue;
        hasChanged = true;
        if (value)
            values.insert_or_assign(key, *value);
        else
            values.erase(found);
    }
    return hasChanged;
}

std::vector<std::string> JsonUserDefaults::takeOver(const Dictionary& values) {
    const std::lock_guard lock(m_mutex);
    const Dictionary mine = m_values.dictionary();
    std::set<std::string, std::less<>> keys;
    for (const auto& [key, value] : mine)
        keys.insert(key);
    for (const auto& [key, value] : values)
        keys.insert(key);

    std::vector<std::string> changed;
    for (const auto& key : keys) {
        const Value* const here = find(mine, key);
        const Value* const there = find(values, key);
        const bool isSame = here && there ? *here == *there : here == there;
        if (isSame || m_changes.contains(key)) // changed here since, and about to be written
            continue;
        m_values.store(there ? std::optional(*there) : std::nullopt, key);
        changed.push_back(key);
    }
    return changed;
}

} // namespace merro::platform::native
