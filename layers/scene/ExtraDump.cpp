#include "scene/ExtraDump.h"

#include "figures/Metrics.h"

#include <ostra/ExtraColumns.h>

#include <limits>

namespace scene {

ExtraDump::ExtraDump() {
    std::vector<const char*> names;
    for (const figures::Figure& figure : figures::catalogue()) {
        if (figure.column.name != nullptr && figure.column.slot == gui::WidgetValueType::NONE) {
            mFigures.push_back(&figure);
            names.push_back(figure.column.name);
        }
    }
    mValues.resize(names.size());
    if (!names.empty() && Ostra::setExtraColumns != nullptr) {
        Ostra::setExtraColumns(names);
    }
}

void ExtraDump::tell(const figures::Metrics& metrics) {
    if (mFigures.empty() || Ostra::setExtraValues == nullptr) {
        return;
    }
    for (std::size_t i = 0; i < mFigures.size(); ++i) {
        mValues[i] = metrics.reading(*mFigures[i]).value_or(std::numeric_limits<double>::quiet_NaN());
    }
    Ostra::setExtraValues(mValues.data(), mValues.size());
}

}  // namespace scene
