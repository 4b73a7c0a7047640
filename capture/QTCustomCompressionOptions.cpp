#include "capture/QTCustomCompressionOptions.h"

#include <memory>

namespace merro {

const std::shared_ptr<QTCustomCompressionOptions>& QTCustomCompressionOptions::shared() {
    // Kept in memory that is never given back: choices are still compared while the process ends.
    static const auto& instance =
        *new std::shared_ptr<QTCustomCompressionOptions>(std::make_shared<QTCustomCompressionOptions>());
    return instance;
}

const platform::CompressionOptionsRef& QTCustomCompressionOptions::customCompressionOptions() {
    static const auto& options = *new platform::CompressionOptionsRef(shared());
    return options;
}

void QTCustomCompressionOptions::localize(const platform::Localization& localization) {
    shared()->m_displayName.set(localization.text("Custom..."));
}

} // namespace merro
