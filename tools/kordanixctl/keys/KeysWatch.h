#pragma once

#include "processes/Attendant.h"
#include "processes/SideProcess.h"
#include "runs/RunFolder.h"

#include <optional>
#include <string>

namespace control {

/// Listens to a run's keys (see RunKeys.h) from when the property `keys` is first on.
class KeysWatch : public Attendant {
public:
    /// `folder` is the run's, which is this process's runtime directory and locked by `hold`, which outlives
    /// the object. Without a descriptor left, or a watch of the kernel's, only what is on now counts.
    KeysWatch(std::string folder, platform::RunHold& hold);
    ~KeysWatch() override { giveUp(); }
    KeysWatch(const KeysWatch&) = delete;
    KeysWatch& operator=(const KeysWatch&) = delete;

    int descriptor() const override { return mDescriptor; }
    void attend() override;

    /// Listens no more, and returns what is to be told on the terminal.
    std::string finish();

private:
    void listenIfWanted();
    void giveUp();

    std::string mFolder;
    platform::RunHold& mHold;
    std::optional<SideProcess> mListener;
    int mDescriptor = -1;  ///< while nobody listens
};

}  // namespace control
