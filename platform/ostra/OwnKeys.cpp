#include "ostra/OwnKeys.h"

#include "ostra/KeyChannel.h"
#include "ostra/PerProcess.h"

namespace platform {

void pressOwnKey(const Ostra::KeyEvent& key) {
    PerProcess<KeyChannel>::get().addKey(key);
}

}  // namespace platform
