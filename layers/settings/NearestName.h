#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace control {

/// Finds the name that somebody probably meant among those that there are: the most similar one, if it is
/// similar enough. The texts live longer than the object.
class NearestName {
public:
    /// Tolerates two wrong letters, or a quarter of the name if that is more.
    explicit NearestName(std::string_view wanted);

    void offer(std::string_view name);

    /// "did you mean 'NAME'?", or what is given for when no name is similar enough.
    std::string hint(const std::string& otherwise) const;

private:
    std::string_view mWanted;
    std::size_t mSmallest;
    std::string_view mNearest;
};

}  // namespace control
