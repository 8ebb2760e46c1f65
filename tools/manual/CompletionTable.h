#pragma once

#include "manual/Description.h"

namespace manual {

/// Returns what a shell needs to know to complete a command line, in lines of words between '|':
///   verb|NAME|MEANING
///   option|VERB|NAMES|KIND|MEANING    VERB is empty for what every verb takes, KIND for a flag
///   place|VERB|KIND|MEANING           the verb's positional words, in order; the last one may repeat
///   property|NAME|VALUES|MEANING
/// KIND is what to offer: file, folder, process, profile, property, pairs (of a property and its value),
/// assignment (NAME=VALUE), program (with its arguments), word (nothing), or the choices after a '='. The
/// lines have no quote that a shell would have to hear of: in each, ' is '\''.
std::string completionTable(const Description& program);

}  // namespace manual
