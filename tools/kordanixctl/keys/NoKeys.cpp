// In the place of those that need X's headers, where this program is built without them.

#include "keys/KeyListener.h"

namespace control {

std::string keyListenerObstacle() {
    return "this kordanixctl was built without X";
}

void listenForKeys(const KeyTarget& /*target*/) {}

}  // namespace control
