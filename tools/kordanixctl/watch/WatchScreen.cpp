#include "watch/WatchScreen.h"

#include "figures/TextFormat.h"
#include "overlays/OverlayState.h"
#include "watch/FrameSummary.h"
#include "watch/ReportJson.h"
#include "watch/Terminal.h"
#include "watch/TextGraph.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <sstream>

namespace control {

namespace {

using figures::Figure;

constexpr std::uint32_t RGB = 0xFFFFFF;
constexpr int GAP = 3;          // between columns of figures
constexpr int WIDE = 76;        // enough for two columns of figures
constexpr int VERY_WIDE = 120;  // for three
constexpr int NAME_COLUMNS = 8;
constexpr int VALUE_COLUMNS = 8;
constexpr int MARK_COLUMNS = 2;

bool isOn(std::string_view property) {
    return displayedValue(property) == "true";
}

gui::WidgetType widgetOf(const WatchScreen::Switch& entry) {
    return entry.key == '1'   ? gui::WidgetType::FPS
           : entry.key == '2' ? gui::WidgetType::CPU_GPU
                              : gui::WidgetType::MEMORY;
}

std::string padded(const std::string& text, int columns, bool isRight = false) {
    const auto width = static_cast<std::size_t>(columns);
    if (text.size() >= width) {
        return text;
    }
    const std::string blanks(width - text.size(), ' ');
    return isRight ? blanks + text : text + blanks;
}

/// Ends in dots where something is left out.
std::string cut(const std::string& text, int columns) {
    const auto width = static_cast<std::size_t>(std::max(columns, 3));
    return text.size() <= width ? text : text.substr(0, width - 3) + "...";
}

/// Where the figure's scale ends at least, so that its graph does not magnify noise.
double topOf(const Figure& figure) {
    return std::string_view(figure.format.unit) == "percent" ? 100.0 : 0.0;
}

/// From 0xAARRGGBB or "#RRGGBB".
std::uint32_t colorOf(const std::string& property) {
    const std::string text = displayedValue(property);
    return static_cast<std::uint32_t>(std::strtoul(text.c_str() + 1, nullptr, 16)) & RGB;
}

}  // namespace

const WatchScreen::Switch WatchScreen::SWITCHES[] = {
    {'1', "widget_fps", "Frame rate"},          {'2', "widget_cpu_gpu", "CPU and GPU"},
    {'3', "widget_memory", "Memory"},           {'4', "widget_frame_time", "Frame times"},
    {'5', "widget_gpu_activity", "GPU passes"}, {'o', "status", "Overlay"},
};
const std::size_t WatchScreen::SWITCH_COUNT = std::size(SWITCHES);

void WatchScreen::add(const platform::FigureReport& report) {
    mReport = report;
    mHistory.add(report);
}

bool WatchScreen::isShown(const Figure& figure) const {
    return mReport && readingOf(*mReport, figure).has_value();
}

int WatchScreen::rowsOf(gui::WidgetType widget) const {
    const auto rows = figures::catalogue();
    return 1 + static_cast<int>(std::count_if(rows.begin(), rows.end(), [&](const Figure& figure) {
               return figure.widget == widget && isShown(figure);
           }));
}

void WatchScreen::draw(Terminal& terminal) {
    terminal.clear();
    mSelectable.clear();
    drawHead(terminal);
    drawFoot(terminal);
    const int end = terminal.height() - 2;  // of what lies between
    const int columns = terminal.width() >= VERY_WIDE ? 3 : terminal.width() >= WIDE ? 2 : 1;
    const int heights[] = {rowsOf(gui::WidgetType::FPS), rowsOf(gui::WidgetType::CPU_GPU),
                           rowsOf(gui::WidgetType::MEMORY)};
    const int figureRows = columns == 3   ? *std::max_element(heights, heights + 3)
                           : columns == 2 ? std::max(heights[0] + 1 + heights[2], heights[1])
                                          : heights[0] + heights[1] + heights[2] + 2;
    constexpr int LEAST = 3;
    constexpr int MOST = 12;
    constexpr int AROUND = 5;  // head, two blanks, the frames' title and the missing figures
    const int graphRows = std::clamp(end - AROUND - figureRows, LEAST, MOST);
    const int top = drawFrames(terminal, 2, graphRows) + 1;
    const int width = (terminal.width() - 2 - GAP * (columns - 1)) / columns;
    int row = drawGroup(terminal, SWITCHES[0], top, 1, width, end);
    if (columns == 1) {
        row = drawGroup(terminal, SWITCHES[1], row + 1, 1, width, end);
        drawGroup(terminal, SWITCHES[2], row + 1, 1, width, end);
    } else if (columns == 2) {
        drawGroup(terminal, SWITCHES[2], row + 1, 1, width, end);
        drawGroup(terminal, SWITCHES[1], top, 1 + width + GAP, width, end);
    } else {
        drawGroup(terminal, SWITCHES[1], top, 1 + width + GAP, width, end);
        drawGroup(terminal, SWITCHES[2], top, 1 + 2 * (width + GAP), width, end);
    }
    const std::string missing = missingFigures();
    if (!missing.empty() && top + figureRows < end) {
        terminal.put(end - 1, 1, cut(missing, terminal.width() - 2), Terminal::OWN_COLOR, Terminal::DIM);
    }
    if (mSelected == nullptr && !mSelectable.empty()) {
        mSelected = mSelectable.front();
    }
    terminal.show();
}

void WatchScreen::drawHead(Terminal& terminal) const {
    std::string text = " " + baseName(mTarget.name) + "  process " + std::to_string(mTarget.process);
    if (mReport) {
        text += mReport->api == 1 ? "  Vulkan" : "  OpenGL";
        text += "  " + std::to_string(mReport->width) + " x " + std::to_string(mReport->height);
    }
    const std::string state = isOn("status") ? "overlay on " : "overlay off ";
    const int rest = terminal.width() - static_cast<int>(state.size());
    terminal.put(0, 0, padded(text, terminal.width()), Terminal::OWN_COLOR,
                 Terminal::REVERSE | Terminal::BOLD);
    terminal.put(0, rest, state, Terminal::OWN_COLOR, Terminal::REVERSE | Terminal::BOLD);
}

/// Returns the row below.
int WatchScreen::drawFrames(Terminal& terminal, int row, int rows) const {
    constexpr int MARGIN = 9;  // for the scale
    const int columns = std::max(terminal.width() - MARGIN - 1, 1);
    terminal.put(row, 1, "Frame times", Terminal::OWN_COLOR, Terminal::BOLD);
    if (!mReport) {
        terminal.put(row + 2, 1, "waiting for a frame ...", Terminal::OWN_COLOR, Terminal::DIM);
        return row + 1 + rows;
    }
    const FrameSummary summary(*mReport, static_cast<std::size_t>(columns));
    const std::uint32_t colors[] = {colorOf("widget_frame_time_cpu_color"),
                                    colorOf("widget_frame_time_gpu_color"),
                                    colorOf("widget_frame_time_swap_color")};
    int column = 14;
    const char* const names[] = {"program", "GPU", "swap"};
    for (int i = 0; i < 3; ++i) {
        terminal.put(row, column, terminal.isUnicode() ? "■" : "#", colors[i]);
        terminal.put(row, column + 2, names[i]);
        column += 4 + static_cast<int>(std::string(names[i]).size());
    }
    const std::string& statistics = summary.text();
    terminal.put(row, std::max(terminal.width() - 1 - static_cast<int>(statistics.size()), column),
                 statistics);
    const int bottom = row + rows;
    terminal.put(row + 1, 1, padded(figures::formatNumber(summary.top(), 0, "ms"), MARGIN - 3, true),
                 Terminal::OWN_COLOR, Terminal::DIM);
    terminal.put(bottom, 1, padded("0", MARGIN - 5, true), Terminal::OWN_COLOR, Terminal::DIM);
    const std::vector<FrameSummary::Parts>& frames = summary.frames();
    for (std::size_t i = 0; i < frames.size(); ++i) {
        StackedBar bar;
        bar.colors = colors;
        bar.parts[0] = frames[i].program / summary.top();
        bar.parts[1] = frames[i].gpu / summary.top();
        bar.parts[2] = frames[i].swap / summary.top();
        const auto x = MARGIN + columns - static_cast<int>(frames.size()) + static_cast<int>(i);
        drawBar(terminal, bar, x, bottom, rows);
    }
    return bottom + 1;
}

/// Returns the row below.
int WatchScreen::drawGroup(Terminal& terminal, const Switch& widget, int row, int column, int columns,
                           int end) {
    if (row >= end) {
        return row;
    }
    terminal.put(row, column, widget.name, Terminal::OWN_COLOR, Terminal::BOLD);
    if (!isOn(widget.property)) {
        terminal.put(row, column + static_cast<int>(std::string(widget.name).size()) + 1,
                     "(not on the overlay)", Terminal::OWN_COLOR, Terminal::DIM);
    }
    ++row;
    for (const Figure& figure : figures::catalogue()) {
        if (figure.widget == widgetOf(widget) && isShown(figure) && row < end) {
            drawFigure(terminal, figure, row++, column, columns);
            if (!figure.isNote()) {
                mSelectable.push_back(&figure);
            }
        }
    }
    return row;
}

void WatchScreen::drawFigure(Terminal& terminal, const Figure& figure, int row, int column,
                             int columns) const {
    const bool isMarked = &figure == mSelected;
    const unsigned int style = isMarked ? Terminal::REVERSE : Terminal::PLAIN;
    const char* mark = " ";
    if (!figure.isNote()) {
        const bool isSwitchedOn = isOn(figure.settings.property);
        mark = terminal.isUnicode() ? (isSwitchedOn ? "●" : "○") : (isSwitchedOn ? "*" : "-");
    }
    terminal.put(row, column, mark, Terminal::OWN_COLOR, Terminal::DIM);
    terminal.put(row, column + MARK_COLUMNS, padded(figure.label, NAME_COLUMNS), Terminal::OWN_COLOR, style);
    const std::string value = figures::format(figure, readingOf(*mReport, figure));
    terminal.put(row, column + MARK_COLUMNS + NAME_COLUMNS, padded(value, VALUE_COLUMNS, true),
                 Terminal::OWN_COLOR, style | Terminal::BOLD);
    const int before = MARK_COLUMNS + NAME_COLUMNS + VALUE_COLUMNS + 1;
    const std::uint32_t color =
        figure.isNote() ? Terminal::OWN_COLOR : colorOf(std::string(figure.settings.property) + "_color");
    if (columns > before) {
        terminal.put(row, column + before,
                     sparkline(mHistory.of(figure), columns - before, topOf(figure), terminal.isUnicode()),
                     color);
    }
}

std::string WatchScreen::missingFigures() const {
    std::string names;
    for (const Figure& figure : figures::catalogue()) {
        if (mReport && !isShown(figure)) {
            names += (names.empty() ? "" : ", ") + std::string(figure.name);
        }
    }
    return names.empty() ? names : "Not told here: " + names;
}

void WatchScreen::drawFoot(Terminal& terminal) const {
    const int row = terminal.height() - 1;
    terminal.put(row - 1, 1, mMessage, Terminal::OWN_COLOR, Terminal::BOLD);
    int column = 1;
    const auto add = [&](const std::string& key, const std::string& text, unsigned int style) {
        terminal.put(row, column, key, Terminal::OWN_COLOR, Terminal::REVERSE);
        terminal.put(row, column + static_cast<int>(key.size()) + 1, text, Terminal::OWN_COLOR, style);
        column += static_cast<int>(key.size() + text.size()) + 3;
    };
    for (const Switch& each : SWITCHES) {
        add({each.key}, each.name, isOn(each.property) ? Terminal::BOLD : Terminal::DIM);
    }
    add("space", "figure", Terminal::PLAIN);
    add("q", "quit", Terminal::PLAIN);
}

void WatchScreen::select(int step) {
    if (mSelectable.empty()) {
        return;
    }
    const auto found = std::find(mSelectable.begin(), mSelectable.end(), mSelected);
    const auto count = static_cast<int>(mSelectable.size());
    const auto index = found == mSelectable.end() ? 0 : static_cast<int>(found - mSelectable.begin()) + step;
    mSelected = mSelectable[static_cast<std::size_t>((index + count) % count)];
}

}  // namespace control
