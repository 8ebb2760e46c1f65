#include "settings/NearestName.h"

#include <algorithm>
#include <numeric>
#include <vector>

namespace control {

namespace {

/// How many letters to insert, remove or exchange to turn one text into the other.
std::size_t editDistance(std::string_view from, std::string_view to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 0; i < from.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i + 1;
        for (std::size_t j = 0; j < to.size(); ++j) {
            const std::size_t exchanged = diagonal + (from[i] == to[j] ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({exchanged, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

NearestName::NearestName(std::string_view wanted)
    : mWanted(wanted), mSmallest(std::max<std::size_t>(2, wanted.size() / 4) + 1) {}

void NearestName::offer(std::string_view name) {
    const std::size_t difference =
        std::max(mWanted.size(), name.size()) - std::min(mWanted.size(), name.size());
    const std::size_t distance = difference < mSmallest ? editDistance(mWanted, name) : mSmallest;
    if (distance < mSmallest) {
        mSmallest = distance;
        mNearest = name;
    }
}

std::string NearestName::hint(const std::string& otherwise) const {
    return mNearest.empty() ? otherwise : "did you mean '" + std::string(mNearest) + "'?";
}

}  // namespace control
