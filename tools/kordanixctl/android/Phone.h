#pragma once

#include "android/Adb.h"
#include "settings/Assignment.h"

#include <string>
#include <vector>

namespace control {

/// What the device says about an application.
struct Application {
    bool isInstalled = false;
    bool isDebuggable = false;
    std::string abi;  ///< of its native libraries; empty when it has none, and runs as the device prefers
    int level = 0;    ///< of Android's API on the device
};

/// Reads what 'dumpsys package' prints about a package; takes any text.
Application parseApplication(const std::string& text, const std::string& package);

/// One application on one device. Operations return an empty text, or what went wrong and what to do about
/// it. While adb only shows its commands, they show them, and know nothing about the device.
class Phone {
public:
    Phone(const Adb& adb, std::string package) : mAdb(adb), mPackage(std::move(package)) {}

    const Adb& adb() const { return mAdb; }
    const std::string& package() const { return mPackage; }

    /// Whether adb reaches a device that can load layers, and the application is on it.
    std::string examine(Application& application) const;

    /// Whether adb reaches a device, and what level of Android's API it has.
    std::string findLevel(int& level) const;

    /// Runs a command on the device; its output goes to `out`.
    std::string run(const std::vector<std::string>& words, std::string& out) const;
    std::string run(const std::vector<std::string>& words) const;

    /// Runs a command as the application, in its data folder.
    Answer runAs(const std::vector<std::string>& words) const;
    std::string tryAs(const std::vector<std::string>& words) const;

    /// Says what was wrong with an answer; `command` is what was asked, a command of adb itself or the
    /// device's.
    std::string describe(const Answer& answer, const std::vector<std::string>& command) const;

    /// Whether this package is on the device; false while commands are shown.
    std::string findPackage(const std::string& package, bool& isThere) const;

    /// Writes properties, and then publishes them.
    std::string setProperties(const std::vector<Assignment>& assignments) const;
    std::string setProperty(const std::string& name, const std::string& value) const;

    /// The application's process that shows the overlay, by its property proc, else the main one; empty when
    /// it does not run.
    std::string findProcess(std::string& process) const;

private:
    const Adb& mAdb;
    std::string mPackage;
};

/// A number that no earlier call of any program on this machine gave.
std::string freshNumber();

}  // namespace control
