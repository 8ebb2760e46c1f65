#pragma once

#include "figures/sources/FileTree.h"
#include "figures/sources/GpuDevice.h"
#include "figures/sources/Value.h"

#include <map>
#include <string>

namespace sources {

/// The figures of a whole GPU from its driver's files. Does not wake a sleeping device: skips the files that
/// would. Rates need two calls. One thread at a time.
class GpuFiles {
public:
    explicit GpuFiles(const FileTree& tree) : mTree(tree) {}

    /// Begins a reading of the device, to which the following calls belong; `now` is in seconds on a clock
    /// that does not jump.
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

    /// Reads a number from a file that never wakes the device; NO_FILE when the folder is empty.
    Value readQuietly(const std::string& folder, const std::string& file, double scale);
    /// Reads a number from a file whose reading would wake the device.
    Value readAwake(const std::string& folder, const std::string& file, double scale);
    /// Returns how much a counter grows per second of its own `time`.
    Value rate(const std::string& path, double value, double time);
    Value rateOfFile(const std::string& folder, const std::string& file, double scale);
    /// Returns 100 minus the percentage of time in which the device was idle; the file counts milliseconds.
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
