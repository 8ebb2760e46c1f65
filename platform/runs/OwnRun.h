#pragma once

#include "runs/PropertyTexts.h"

#include <string>

/// A run that no launcher began: the layer of an API that gets into programs without one makes its folder.
namespace platform {

/// Whether this process belongs to no run, and can have one.
bool canBeginOwnRun();

/// Then: makes a run's folder, named after this process, in its runtime directory, with these properties and
/// to be claimed, and makes that its runtime directory. Before the process's first frame hook. Also removes
/// what earlier processes left of theirs. Costs some file operations; what goes wrong leaves the process
/// where it was, and the log says why. Returns the folder; empty in that case. Raises no signal. One thread
/// at a time.
std::string beginOwnRun(const PropertyTexts& properties);

}  // namespace platform
