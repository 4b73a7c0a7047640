#include "capture/QTNoCompressionOptions.h"

#include <memory>

namespace merro {

const std::shared_ptr<QTNoCompressionOptions>& QTNoCompressionOptions::shared() {
    // Kept in memory that is never given back: choices are still compared while the process ends.
    static const auto& instance =
        *new std::shared_ptr<QTNoCompressionOptions>(std::make_shared<QTNoCompressionOptions>());
    return instance;
}

const platform::CompressionOptionsRef& QTNoCompressionOptions::noCompressionOptions() {
    static const auto& options = *new platform::CompressionOptionsRef(shared());
    return options;
}

void QTNoCompressionOptions::localize(const platform::Localization& localization) {
    shared()->m_displayName.set(localization.text("None"));
}

} // namespace merro
