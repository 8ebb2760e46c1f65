#pragma once

#include "ostra/android/Command.h"

#include <ostra/Ostra.h>
#include <sys/system_properties.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace platform {

/// Takes commands from a property (see Command.h), on a thread of its own: it looks for the property twice a
/// second until there is one, and then sleeps until somebody writes it. A dump and a capture become presses
/// of the volume keys, which the library heeds in developer mode. What the property says when the channel
/// starts to listen is not acted on. One per process, see PerProcess.h; any thread.
class CommandChannel {
public:
    /// Starts to listen; later calls do nothing. When no thread can be started, it says so in the log, once,
    /// and no command arrives.
    void listen();

    /// Listens, and returns the keys since the last call. Takes no lock and makes no system call when there
    /// are none, but for the first.
    std::vector<Ostra::KeyEvent> takeKeys();

    /// Adds a key as if a command had pressed it. More than MAX_PENDING are dropped.
    void addKey(const Ostra::KeyEvent& key);

    /// As takePictureRequest(), see ostra/PictureRequest.h: the file is there, and empty.
    std::optional<std::string> takePicture();

    /// A forked child listens by itself once it asks.
    void onForked() {}
    void onExit() {}

private:
    static constexpr std::size_t MAX_PENDING = 64;

    void read(std::string& text);
    void watch();
    void act(const std::string& text);
    void preparePicture(const std::string& number);

    /// Relaxed order: they say whether to look; the mutex hands over what is there.
    std::atomic<bool> mIsIdle{false};
    std::atomic<bool> mIsPictureWanted{false};

    std::mutex mMutex;  ///< guards the three below
    bool mIsListening = false;
    std::vector<Ostra::KeyEvent> mPending;
    std::string mPicture;

    // Only the listening thread uses these, once it runs.
    const prop_info* mProperty = nullptr;
    std::uint32_t mSerial = 0;
    std::string mLastNumber;
    bool mIsGarbageSaid = false;
};

}  // namespace platform
