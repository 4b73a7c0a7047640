// The choice "Custom...": movies are compressed as set in the platform's compression dialog.
//
// One shared instance, made on first use and never destroyed; any thread. It stands for whatever settings are
// stored; the options that an output is given are made from these each time.
#pragma once

#include "platform/Cell.h"
#include "platform/Localization.h"
#include "platform/QTCompressionOptions.h"

#include <string>

namespace merro {

class QTCustomCompressionOptions : public platform::QTCompressionOptions {
public:
    /// The shared instance; custom settings are chosen when the choice is this object.
    [[nodiscard]] static const platform::CompressionOptionsRef& customCompressionOptions();

    /// Gives the shared instance its name in the user's language. English until then.
    static void localize(const platform::Localization& localization);

    [[nodiscard]] std::string localizedDisplayName() const override { return m_displayName.get(); }

private:
    [[nodiscard]] static const std::shared_ptr<QTCustomCompressionOptions>& shared();

    platform::Cell<std::string> m_displayName{"Custom..."};
};

} // namespace merro
