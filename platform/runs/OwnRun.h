#pragma once

#include <string>
#include <utility>
#include <vector>

/// A run that no launcher began: the layer of an API that gets into programs without one makes its folder.
namespace platform {

/// Properties by their full names, and their texts.
using OwnProperties = std::vector<std::pair<std::string, std::string>>;

/// Unless this process belongs to a run: makes a run's folder, named after this process, in its runtime
/// directory, with the overlay on and to be claimed, over that what `readProperties` returns (asked only
/// then; null: nothing), and makes that its runtime directory. Before the process's first frame hook. Also
/// removes what earlier processes left of theirs. Costs some file operations; what goes wrong leaves the
/// process where it was, and the log says why. Raises no signal. One thread at a time.
void beginOwnRun(OwnProperties (*readProperties)() = nullptr);

}  // namespace platform
