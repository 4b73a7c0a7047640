#include "platform/native/DefaultsFile.h"

#include "platform/native/FileError.h"
#include "platform/native/JsonValue.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <stdexcept>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace merro::platform::native {

namespace {

constexpr std::string_view kFormat = "BXMerroCapture defaults";
constexpr int kVersion = 1;

/// A descriptor that closes itself.
class Descriptor {
public:
    explicit Descriptor(int descriptor) : m_descriptor(descriptor) {}
    ~Descriptor() {
        if (m_descriptor >= 0)
            (void)::close(m_descriptor);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    [[nodiscard]] int get() const { return m_descriptor; }
    [[nodiscard]] bool isOpen() const { return m_descriptor >= 0; }

private:
    const int m_descriptor;
};

std::string realPath(const std::string& path) {
    std::error_code ignored;
    const auto real = std::filesystem::weakly_canonical(std::filesystem::absolute(path, ignored), ignored);
    return real.empty() ? path : real.string();
}

Error damaged(const std::string& path, const std::string& why) {
    return {"The settings file " + path + " is damaged (" + why + ")",
            "mend it or move it away; until then it is not written, and settings last as long as this run",
            0};
}

Error newer(const std::string& path, int version) {
    return {"The settings file " + path + " is of a newer version of this program (" +
                std::to_string(version) + ")",
            "update this program; until then the file is not written, and settings last as long as this run",
            0};
}

DefaultsFile::Contents contentsOfText(const std::string& path, const std::string& text) {
    try {
        const auto json = nlohmann::json::parse(text);
        if (json.at("format").get<std::string>() != kFormat)
            throw std::invalid_argument("it is something else");
        if (const int version = json.at("version").get<int>(); version > kVersion)
            return {{}, newer(path, version)};
        const auto& object = json.at("values");
        if (!object.is_object())
            throw std::invalid_argument("its values are no object");
        DefaultsFile::Contents contents;
        for (const auto& [key, value] : object.items())
            contents.values.emplace(key, valueFromJson(value));
        return contents;
    } catch (const std::exception& wrong) { // what the JSON library says, or what a value is not
        return {{}, damaged(path, wrong.what())};
    }
}

std::string textOf(const Dictionary& values) {
    auto object = nlohmann::json::object();
    for (const auto& [key, value] : values)
        object[key] = jsonFromValue(value);
    const nlohmann::json json{{"format", kFormat}, {"version", kVersion}, {"values", std::move(object)}};
    return json.dump(2) + '\n';
}

bool writeAll(int descriptor, std::string_view text) {
    while (!text.empty()) {
        const auto written = ::write(descriptor, text.data(), text.size());
        if (written < 0 && errno != EINTR)
            return false;
        text.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
    return true;
}

} // namespace

DefaultsFile::DefaultsFile(const std::string& path) : m_path(realPath(path)) {}

DefaultsFile::Contents DefaultsFile::read() const {
    const Descriptor file(::open(m_path.c_str(), O_RDONLY | O_CLOEXEC));
    if (!file.isOpen())
        return errno == ENOENT ? Contents{}
                               : Contents{{}, fileError("read the settings file", m_path, errno)};
    std::string text;
    char part[16384];
    for (;;) {
        const auto count = ::read(file.get(), part, sizeof part);
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return {{}, fileError("read the settings file", m_path, errno)};
        if (count == 0)
            return contentsOfText(m_path, text);
        text.append(part, static_cast<std::size_t>(count));
    }
}

DefaultsFile::Contents DefaultsFile::update(const std::function<bool(Dictionary& values)>& change) const {
    std::error_code failure;
    std::filesystem::create_directories(std::filesystem::path(m_path).parent_path(), failure);
    if (failure)
        return {{}, fileError("make the folder of the settings file", m_path, failure.value())};
    const std::string lockPath = m_path + ".lock";
    const Descriptor lock(::open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600));
    if (!lock.isOpen())
        return {{}, fileError("open the lock of the settings file", lockPath, errno)};
    while (::flock(lock.get(), LOCK_EX) != 0) { // released when the descriptor closes
        if (errno != EINTR)
            return {{}, fileError("lock the settings file", lockPath, errno)};
    }
    Contents contents = read();
    if (!contents.error && change(contents.values))
        contents.error = replaceWith(textOf(contents.values));
    return contents;
}

std::optional<Error> DefaultsFile::replaceWith(const std::string& text) const {
    std::string temporaryPath = m_path + ".XXXXXX";
    const Descriptor file(::mkostemp(temporaryPath.data(), O_CLOEXEC));
    struct stat before {};
    const bool keepsMode = ::stat(m_path.c_str(), &before) == 0;
    const bool isReplaced = file.isOpen() &&
                            (!keepsMode || ::fchmod(file.get(), before.st_mode & 07777) == 0) &&
                            writeAll(file.get(), text) && ::fsync(file.get()) == 0 &&
                            ::rename(temporaryPath.c_str(), m_path.c_str()) == 0;
    const int systemCode = errno;
    if (isReplaced)
        return std::nullopt;
    if (file.isOpen())
        (void)::unlink(temporaryPath.c_str());
    return fileError("write the settings file", m_path, systemCode);
}

} // namespace merro::platform::native
