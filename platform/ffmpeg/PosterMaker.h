// Small still pictures of DV frames, for lists of clips.
//
// One thread at a time for each maker; making one is dear, using it again is cheap. Results belong to the
// caller.
#pragma once

#include "platform/Error.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace merro::platform::ffmpeg {

/// A picture with square pixels: `height` rows of `width` pixels of red, green and blue, from the top left.
struct Poster {
    int width = 0;
    int height = 0;
    std::vector<std::uint8_t> rgb;
};

class PosterMaker {
public:
    static constexpr int kWidth = 320;
    static constexpr int kHeight4By3 = 240;
    static constexpr int kHeight16By9 = 180;

    PosterMaker();
    ~PosterMaker();
    PosterMaker(const PosterMaker&) = delete;
    PosterMaker& operator=(const PosterMaker&) = delete;

    /// Decodes one DV frame of 120000 or 144000 bytes into `poster`. Only its first field is shown, so that
    /// movement leaves no comb. A damaged frame gives what can be seen of it. The error says why there is no
    /// picture.
    [[nodiscard]] std::optional<Error> makePoster(std::span<const std::uint8_t> frame, Poster& poster);

    /// makePoster, written as a PNG file that appears at `path` when it is whole. A file that is there
    /// already is never overwritten, but an error.
    [[nodiscard]] std::optional<Error> writePoster(std::span<const std::uint8_t> frame,
                                                   const std::string& path);

private:
    struct Decoding;
    std::unique_ptr<Decoding> m_decoding;
};

} // namespace merro::platform::ffmpeg
