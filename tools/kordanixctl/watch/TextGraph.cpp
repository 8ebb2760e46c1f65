#include "watch/TextGraph.h"

#include "watch/Terminal.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace control {

namespace {

constexpr int EIGHTHS = 8;
constexpr std::array<const char*, EIGHTHS + 1> BLOCKS = {" ", "▁", "▂", "▃", "▄", "▅", "▆", "▇", "█"};
constexpr std::array<const char*, EIGHTHS + 1> LETTERS = {" ", ".", ".", ":", ":", "+", "+", "#", "#"};

/// How many eighths of a row are below `height` rows, from 0 to 8.
int eighthsIn(double height, int row) {
    return std::clamp(static_cast<int>(std::lround((height - row) * EIGHTHS)), 0, EIGHTHS);
}

}  // namespace

std::string sparkline(const std::deque<double>& values, int columns, double top, bool isUnicode) {
    const auto& symbols = isUnicode ? BLOCKS : LETTERS;
    const auto count = std::min<std::size_t>(values.size(), static_cast<std::size_t>(std::max(columns, 0)));
    const auto first = values.end() - static_cast<std::ptrdiff_t>(count);
    for (auto value = first; value != values.end(); ++value) {
        top = std::isnan(*value) ? top : std::max(top, *value);
    }
    std::string text(static_cast<std::size_t>(std::max(columns, 0)) - count, ' ');
    for (auto value = first; value != values.end(); ++value) {
        // What is there and small has one eighth all the same, and no block is whole: lines below each other
        // stay apart.
        const double height = top > 0.0 ? *value / top * (EIGHTHS - 1) / EIGHTHS : 0.0;
        const int eighths = std::isnan(*value) ? 0 : std::max(eighthsIn(height, 0), 1);
        text += symbols[static_cast<std::size_t>(eighths)];
    }
    return text;
}

void drawBar(Terminal& terminal, const StackedBar& bar, int column, int bottom, int rows) {
    std::array<double, StackedBar::PARTS> ends{};  // in rows
    double end = 0.0;
    for (std::size_t i = 0; i < ends.size(); ++i) {
        end += bar.parts[i];
        ends[i] = std::clamp(end, 0.0, 1.0) * rows;
    }
    for (int row = 0; row < rows; ++row) {
        // A cell has two colours at most: that of the part at its lower edge, and of what lies above.
        std::size_t part = 0;
        while (part + 1 < ends.size() && eighthsIn(ends[part], row) == 0) {
            ++part;
        }
        const int filled = eighthsIn(ends[part], row);
        if (filled == 0) {
            return;
        }
        const bool hasNext = part + 1 < ends.size() && eighthsIn(ends[part + 1], row) > filled;
        if (terminal.isUnicode()) {
            terminal.put(bottom - row, column, BLOCKS[static_cast<std::size_t>(filled)], bar.colors[part],
                         Terminal::PLAIN, hasNext ? bar.colors[part + 1] : Terminal::OWN_COLOR);
        } else {
            terminal.put(bottom - row, column, LETTERS[static_cast<std::size_t>(filled)], bar.colors[part]);
        }
    }
}

}  // namespace control
