#pragma once

#include "figures/Catalogue.h"
#include "ostra/FigureReport.h"

#include <array>
#include <cstddef>
#include <deque>

namespace control {

/// The last values of each figure, one a refresh. A plain value type.
class FigureHistory {
public:
    static constexpr std::size_t LENGTH = 240;

    void add(const platform::FigureReport& report);

    /// The oldest first; NaN where there was none.
    const std::deque<double>& of(const figures::Figure& figure) const {
        return mValues[figures::indexOf(figure)];
    }

private:
    std::array<std::deque<double>, platform::FigureReport::FIGURES> mValues;
};

}  // namespace control
