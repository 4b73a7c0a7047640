// What a view draws with.
//
// Coordinates are in points, the origin at the lower left, y upwards. One thread at a time: the main thread.
#pragma once

#include <memory>
#include <string>
#include <vector>

namespace merro::platform {

struct Point {
    float x = 0;
    float y = 0;
    friend bool operator==(const Point&, const Point&) = default;
};

struct Rect {
    float x = 0;
    float y = 0;
    float width = 0;
    float height = 0;
    friend bool operator==(const Rect&, const Rect&) = default;
};

/// Device RGB, 0.0 to 1.0.
struct Color {
    float red = 0;
    float green = 0;
    float blue = 0;
    float alpha = 1;
    friend bool operator==(const Color&, const Color&) = default;
};

inline constexpr Color kBlack{0, 0, 0, 1};
inline constexpr Color kWhite{1, 1, 1, 1};

/// The outline of a rectangle with rounded corners.
struct RoundedRect {
    Rect rect;
    float cornerRadius = 0;
    friend bool operator==(const RoundedRect&, const RoundedRect&) = default;
};

enum class TextAlignment { Left, Right, Centred };
enum class LineBreak { Wrap, Clip, TruncateTail };

struct TextAttributes {
    std::string fontName; ///< empty, or not on this machine: the system font
    float fontSize = 12;
    Color color = kBlack;
    TextAlignment alignment = TextAlignment::Left;
    LineBreak lineBreak = LineBreak::Wrap;
    float firstLineIndent = 0;
    friend bool operator==(const TextAttributes&, const TextAttributes&) = default;
};

class GraphicsContext {
public:
    virtual ~GraphicsContext() = default;

    /// Colours and line width from here on are forgotten at the matching restoreState.
    virtual void saveState() = 0;
    virtual void restoreState() = 0;

    virtual void setFillColor(const Color& color) = 0;
    virtual void setStrokeColor(const Color& color) = 0;
    virtual void setLineWidth(float width) = 0;

    virtual void fill(const RoundedRect& path) = 0;
    virtual void stroke(const RoundedRect& path) = 0;

    /// Draws one text inside `rect`.
    virtual void drawText(const std::string& text, const Rect& rect, const TextAttributes& attributes) = 0;
};

} // namespace merro::platform
