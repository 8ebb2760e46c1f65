#pragma once

#include "doubles/Emulator.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>

namespace control {

/// kordanixctl as it was built, for a user whose runtime directory and profiles are empty.
class RunFixture : public testing::Test {
protected:
    RunFixture() {
        unsetenv("KORDANIX_RUNTIME_DIR");
        setenv("XDG_RUNTIME_DIR", mHome.path().c_str(), 1);
        setenv("XDG_CONFIG_HOME", mHome.path("config").c_str(), 1);
        setenv("CTL", (doubles::emulator() + KORDANIXCTL).c_str(), 1);
        // A kordanixctl with that sanitizer minds that anything is preloaded before it.
        setenv("ASAN_OPTIONS", "verify_asan_link_order=0", 1);
    }

    /// Runs a shell's command line, in which $CTL is kordanixctl, in the home.
    support::Outcome run(const std::string& line) const {
        return support::run({"/bin/sh", "-c", "cd $XDG_RUNTIME_DIR; " + line});
    }

    /// How many folders of runs there are.
    std::ptrdiff_t countRuns() const {
        std::error_code ignored;
        return std::distance(std::filesystem::directory_iterator(mHome.path("kordanix"), ignored), {});
    }

    const support::TemporaryDirectory mHome;
};

}  // namespace control
