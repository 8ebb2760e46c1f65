#pragma once

#include <map>
#include <string>

#include "figures/sources/FileTree.h"
#include "figures/sources/GpuDevice.h"
#include "figures/sources/Value.h"

namespace sources {

/// The figures of a whole GPU from its driver's files. A device that sleeps is not woken: files that would do
/// so are not read then. Rates need two calls. One thread at a time.
class GpuFiles {
public:
    explicit GpuFiles(const FileTree& tree) : mTree(tree) {}

    /// Begins a reading of the device; `now` in seconds on a clock that does not jump. What is asked for then
    /// belongs to it.
    void begin(const GpuDevice& device, double now);

    Value load();         ///< percent
    Value clock();        ///< MHz
    Value maxClock();     ///< MHz, of the hardware
    Value temperature();  ///< degrees Celsius
    Value memoryUsed();   ///< bytes, of all processes
    Value memoryTotal();  ///< bytes
    Value power();        ///< watts
    Value fan();          ///< turns a minute

private:
    struct Counter {
        double value = 0.0;
        double time = 0.0;
    };

    /// The number in a file that never wakes the device; of a folder that is not there, NO_FILE.
    Value readQuietly(const std::string& folder, const std::string& file, double scale);
    /// The number in a file whose reading would wake the device.
    Value readAwake(const std::string& folder, const std::string& file, double scale);
    /// How much a counter grows in a second of its own `time`.
    Value rate(const std::string& path, double value, double time);
    Value rateOfFile(const std::string& folder, const std::string& file, double scale);
    /// 100 less the share of the time in which the device was idle, told in milliseconds.
    Value awakeShare(const std::string& folder, const std::string& file);
    Value v3dLoad();
    Value boardLoad();
    std::string xeTile() const;
    Value dpmClock(bool isCurrent);
    Value memory(const char* kind);

    const FileTree& mTree;
    GpuDevice mDevice;
    bool mIsAsleep = false;
    double mNow = 0.0;
    std::map<std::string, Counter> mLast;
    std::map<std::string, Counter> mCurrent;
};

}  // namespace sources
