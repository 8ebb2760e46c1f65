#pragma once

#include <cstdint>
#include <deque>
#include <string>

namespace control {

class Terminal;

/// The last values as a line of blocks, one a column and the newest at the right, of `columns` columns. The
/// highest block is `top` or the largest value, if that is larger; what is NaN is a blank. In ASCII if not
/// `isUnicode`.
std::string sparkline(const std::deque<double>& values, int columns, double top, bool isUnicode);

/// One column of bars that stand on each other, from `bottom` upwards over `rows` rows of the screen.
struct StackedBar {
    static constexpr int PARTS = 3;
    double parts[PARTS] = {};               ///< of the height, 0 to 1, from below
    const std::uint32_t* colors = nullptr;  ///< of each part, 0xRRGGBB
};
void drawBar(Terminal& terminal, const StackedBar& bar, int column, int bottom, int rows);

}  // namespace control
