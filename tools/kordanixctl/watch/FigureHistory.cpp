#include "watch/FigureHistory.h"

#include "watch/ReportJson.h"

#include <limits>

namespace control {

void FigureHistory::add(const platform::FigureReport& report) {
    for (const figures::Figure& figure : figures::catalogue()) {
        std::deque<double>& values = mValues[figures::indexOf(figure)];
        values.push_back(readingOf(report, figure).value_or(std::numeric_limits<double>::quiet_NaN()));
        if (values.size() > LENGTH) {
            values.pop_front();
        }
    }
}

}  // namespace control
