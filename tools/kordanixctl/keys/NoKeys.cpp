// In the place of those that need X's headers, where this program is built without them.

#include "keys/KeyListener.h"

namespace control {

void listenForKeys(const KeyTarget& /*target*/) {}

}  // namespace control
