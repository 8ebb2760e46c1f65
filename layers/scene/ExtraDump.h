#pragma once

#include "figures/Catalogue.h"

#include <vector>

namespace figures {
class Metrics;
}

namespace scene {

/// The columns of frame dumps that the library does not have, from the catalogue, for a companion library
/// that takes them. Rendering thread only.
class ExtraDump {
public:
    ExtraDump();

    /// After a refresh: the values of the frames from now on.
    void tell(const figures::Metrics& metrics);

private:
    std::vector<const figures::Figure*> mFigures;
    std::vector<double> mValues;
};

}  // namespace scene
