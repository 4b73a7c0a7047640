#include "host/shared/Movies.h"

#include "host/shared/Failure.h"

#include <fmt/format.h>

#include <dlfcn.h>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace merro::host {

using platform::ffmpeg::MovieLibrary;

namespace {

constexpr const char* kRemedy = "build or install merro again";

/// Beside the running program: as it is built, or as it is installed.
std::string libraryPath() {
    std::error_code error;
    const auto folder = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
    const auto in = [&folder](const char* libraries) {
        return (folder / libraries / "BXMerroCapture/merro_movies.so").lexically_normal();
    };
    const auto built = in("../lib");
    return (std::filesystem::exists(built, error) ? built : in(MERRO_INSTALLED_LIBRARIES)).string();
}

} // namespace

const MovieLibrary& movieLibrary() {
    static const MovieLibrary& library = loadMovieLibrary(libraryPath());
    return library;
}

const MovieLibrary& loadMovieLibrary(const std::string& path) {
    void* const module = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
    void* const function =
        module != nullptr ? ::dlsym(module, platform::ffmpeg::kMovieLibraryFunction) : nullptr;
    if (function == nullptr) {
        const char* const told = ::dlerror(); // NOLINT(concurrency-mt-unsafe): each thread has its own
        std::string_view why = told != nullptr ? told : "no reason given";
        if (why.starts_with(path + ": "))
            why.remove_prefix(path.size() + 2);
        throw Failure(fmt::format("movies need {}, which cannot be loaded ({}): {}", path, why, kRemedy));
    }
    const MovieLibrary& library = *reinterpret_cast<platform::ffmpeg::MovieLibraryFunction*>(function)();
    if (library.version != std::string_view(MERRO_VERSION))
        throw Failure(fmt::format("{} is of merro {}, and this is merro {}: {}", path, library.version,
                                  MERRO_VERSION, kRemedy));
    return library;
}

std::shared_ptr<platform::session::MovieRecorder>
MovieRecorders::startRecording(const std::string& path, const platform::CompressionOptionsRef& options,
                               platform::session::WhenFull whenFull,
                               platform::session::RecorderEvents events) {
    std::call_once(m_once, [this] { m_recorders = movieLibrary().makeRecorders(); });
    return m_recorders->startRecording(path, options, whenFull, std::move(events));
}

} // namespace merro::host
