#pragma once

#include "figures/Reading.h"

#include <sys/types.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

namespace figures {

/// Takes a reading that is too slow for the frame thread on a thread of its own. The frame thread asks for
/// a reading now and then and reads the latest one at any time. All operations are the frame thread's.
class SlowReader {
public:
    using Read = Reading (*)();

    /// `read` runs on the reader's thread. If it throws, the reading is empty.
    explicit SlowReader(Read read);

    /// As stop(). In a forked child, which has none of its parent's threads, there is nothing to wait for.
    ~SlowReader();

    SlowReader(const SlowReader&) = delete;
    SlowReader& operator=(const SlowReader&) = delete;

    /// Starts the thread unless it runs. When no thread can be had the reading stays empty; call again later.
    /// The thread takes none of the application's signals.
    void start();

    /// Ends the thread after the reading under way, if there is one, and empties the latest reading.
    void stop();

    /// Asks for a new reading and returns at once; nothing happens without a thread. Requests that
    /// arrive during a reading lead to one more.
    void request();

    /// The last reading; empty until the first has arrived. Takes no lock.
    Reading latest() const;

    /// Waits until every request has been answered: for pictures that must not depend on timing.
    void settle();

private:
    /// What both threads work on.
    struct Shared {
        std::thread thread;
        std::mutex mutex;  ///< held for a few instructions only, never during a reading
        std::condition_variable changed;
        bool isRequested = false;      ///< under the mutex
        bool isReading = false;        ///< under the mutex
        bool isStopRequested = false;  ///< under the mutex
        /// NaN stands for an empty reading. Relaxed: nothing else is published with it.
        std::atomic<double> latest{0.0};
    };

    static void run(Shared& shared, Read read);
    bool isRunning() const { return mShared->thread.joinable(); }

    Read mRead;
    std::unique_ptr<Shared> mShared;
    pid_t mProcess = 0;  ///< the one that started the thread
};

}  // namespace figures
