// A graphics context that writes down what is drawn, one line each, in order.
//
// "save", "restore", "fill color R G B A", "stroke color R G B A", "line width W",
// "fill X Y W H radius R", "stroke X Y W H radius R", "text \"T\" X Y W H". The attributes of each text are
// kept beside.
#pragma once

#include "platform/GraphicsContext.h"

#include <initializer_list>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace merro::test {

class RecordingGraphicsContext : public platform::GraphicsContext {
public:
    std::vector<std::string> lines;
    std::vector<platform::TextAttributes> textAttributes;

    void saveState() override { lines.emplace_back("save"); }
    void restoreState() override { lines.emplace_back("restore"); }
    void setFillColor(const platform::Color& color) override { write("fill color", numbers(color)); }
    void setStrokeColor(const platform::Color& color) override { write("stroke color", numbers(color)); }
    void setLineWidth(float width) override { write("line width", numbers({width})); }
    void fill(const platform::RoundedRect& path) override { write("fill", numbers(path)); }
    void stroke(const platform::RoundedRect& path) override { write("stroke", numbers(path)); }
    void drawText(const std::string& text, const platform::Rect& rect,
                  const platform::TextAttributes& attributes) override {
        write("text \"" + text + "\"", numbers({rect.x, rect.y, rect.width, rect.height}));
        textAttributes.push_back(attributes);
    }

private:
    static std::string numbers(std::initializer_list<float> values) {
        std::ostringstream out;
        for (const float value : values)
            out << ' ' << value;
        return out.str();
    }
    static std::string numbers(const platform::Color& color) {
        return numbers({color.red, color.green, color.blue, color.alpha});
    }
    static std::string numbers(const platform::RoundedRect& path) {
        return numbers({path.rect.x, path.rect.y, path.rect.width, path.rect.height}) + " radius" +
               numbers({path.cornerRadius});
    }
    void write(const std::string& what, const std::string& values) { lines.push_back(what + values); }
};

} // namespace merro::test
