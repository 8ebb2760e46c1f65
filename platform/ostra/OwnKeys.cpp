#include "ostra/OwnKeys.h"

#include "ostra/PerProcess.h"
#include "ostra/ProcessChannel.h"

namespace platform {

void pressOwnKey(const Ostra::KeyEvent& key) {
    PerProcess<ProcessChannel>::get().addKey(key);
}

}  // namespace platform
