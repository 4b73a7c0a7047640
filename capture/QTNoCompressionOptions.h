// The choice "None": movies hold the tape's own DV.
//
// One shared instance, made on first use and never destroyed; any thread.
#pragma once

#include "platform/Cell.h"
#include "platform/Localization.h"
#include "platform/QTCompressionOptions.h"

#include <string>

namespace merro {

class QTNoCompressionOptions : public platform::QTCompressionOptions {
public:
    /// The shared instance; "None" is chosen when the choice is this object.
    [[nodiscard]] static const platform::CompressionOptionsRef& noCompressionOptions();

    /// Gives the shared instance its name in the user's language. English until then.
    static void localize(const platform::Localization& localization);

    [[nodiscard]] std::string localizedDisplayName() const override { return m_displayName.get(); }

private:
    [[nodiscard]] static const std::shared_ptr<QTNoCompressionOptions>& shared();

    platform::Cell<std::string> m_displayName{"None"};
};

} // namespace merro
