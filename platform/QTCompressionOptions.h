// One way of compressing a movie.
#pragma once

#include "platform/Value.h"

#include <cstdint>
#include <memory>
#include <string>

namespace merro::platform {

/// Compared by identity: two choices are the same when they are the same object. Immutable; any thread.
class QTCompressionOptions {
public:
    virtual ~QTCompressionOptions() = default;
    [[nodiscard]] virtual std::string localizedDisplayName() const = 0;
};

using CompressionOptionsRef = std::shared_ptr<const QTCompressionOptions>;

/// What the platform's compression component made of a set of settings; only the platform looks inside.
class CompressionSessionOptions {
public:
    virtual ~CompressionSessionOptions() = default;
    /// Sets a property, class and identifier being four-character codes.
    virtual void setProperty(std::uint32_t propertyClass, std::uint32_t identifier, std::uint32_t value) = 0;
};

/// Options with a codec, an output size and session options of one's own ("QTVideoCompressionOptions").
class QTVideoCompressionOptions : public QTCompressionOptions {
public:
    /// A width and height of 0 keep the codec's own size. `sessionOptions` may be null.
    QTVideoCompressionOptions(std::uint32_t codecType, int sizeMode, int width, int height,
                              std::shared_ptr<const CompressionSessionOptions> sessionOptions)
        : m_codecType(codecType), m_sizeMode(sizeMode), m_width(width), m_height(height),
          m_sessionOptions(std::move(sessionOptions)) {}

    [[nodiscard]] std::string localizedDisplayName() const override { return "Video"; }
    [[nodiscard]] std::uint32_t codecType() const { return m_codecType; }
    [[nodiscard]] int sizeMode() const { return m_sizeMode; }
    [[nodiscard]] int width() const { return m_width; }
    [[nodiscard]] int height() const { return m_height; }
    [[nodiscard]] const std::shared_ptr<const CompressionSessionOptions>& sessionOptions() const {
        return m_sessionOptions;
    }

private:
    std::uint32_t m_codecType;
    int m_sizeMode;
    int m_width;
    int m_height;
    std::shared_ptr<const CompressionSessionOptions> m_sessionOptions;
};

} // namespace merro::platform
