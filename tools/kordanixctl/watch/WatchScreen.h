#pragma once

#include "ostra/FigureReport.h"
#include "watch/FigureHistory.h"
#include "watch/WatchTarget.h"

#include <optional>
#include <string>
#include <vector>

namespace control {

class Terminal;

/// What the terminal view shows of a program. Draws anew each time; reads the properties for the switches.
class WatchScreen {
public:
    /// A key and the switch that it turns.
    struct Switch {
        char key;
        const char* property;  ///< short name
        const char* name;
    };
    static const Switch SWITCHES[];
    static const std::size_t SWITCH_COUNT;

    explicit WatchScreen(WatchTarget target) : mTarget(std::move(target)) {}

    void add(const platform::FigureReport& report);

    /// A line for the user above the keys.
    void setMessage(const std::string& message) { mMessage = message; }

    void draw(Terminal& terminal);

    /// Moves the mark to another figure of those that were drawn last and have a switch.
    void select(int step);

    /// The marked figure; null before there was one.
    const figures::Figure* selected() const { return mSelected; }

private:
    void drawHead(Terminal& terminal) const;
    int drawFrames(Terminal& terminal, int row, int rows) const;
    int drawGroup(Terminal& terminal, const Switch& widget, int row, int column, int columns, int end);
    void drawFigure(Terminal& terminal, const figures::Figure& figure, int row, int column,
                    int columns) const;
    void drawFoot(Terminal& terminal) const;
    int rowsOf(gui::WidgetType widget) const;
    bool isShown(const figures::Figure& figure) const;
    std::string missingFigures() const;

    WatchTarget mTarget;
    std::optional<platform::FigureReport> mReport;
    FigureHistory mHistory;
    std::string mMessage;
    const figures::Figure* mSelected = nullptr;
    std::vector<const figures::Figure*> mSelectable;  ///< in the order in which they were drawn
};

}  // namespace control
