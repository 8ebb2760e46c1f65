// The program whose system calls are counted: an application with the overlay, phase by phase, each of them
// of as many frames as the argument says. Its wall clock stands still except where a refresh is wanted. Ends
// with 0 when all went as planned and no thread of the overlay takes signals or bears the program's name.

#include "NullFactory.h"
#include "core/KeyEventInterceptor.h"
#include "core/StateInfo.h"
#include "core/SysPropWatcher.h"
#include "doubles/FakeClock.h"
#include "ostra/ProcessSocket.h"
#include "properties/RuntimeDirectory.h"
#include "scene/Overlay.h"
#include "support/Settings.h"
#include "support/Threads.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>

namespace {

constexpr int REFRESH_PERIOD_US = 130000;
unsigned framesOfAPhase = 0;

/// Shows in the trace; what lies between phases settles what was published, and has no name.
void beginPhase(const char* name) {
    access((std::string("phase:") + name).c_str(), F_OK);
}

void require(bool isRight, const char* what) {
    if (!isRight) {
        std::fprintf(stderr, "%s\n", what);
        _exit(3);
    }
}

/// For the helper threads to sleep again.
void pause() {
    std::this_thread::sleep_for(std::chrono::milliseconds(50));
}

class Application {
public:
    Application() { mOverlay.attach(); }

    void frames(unsigned count, int elapsedUs = 0, bool isCapturing = false) {
        for (unsigned i = 0; i < count; ++i) {
            doubles::advanceWallClock(elapsedUs);
            mOverlay.beginFrame();
            if (isCapturing) {
                KeyEventInterceptor::getInstance()->mIsCaptureKeyPressed = true;
            }
            mOverlay.draw();
            mOverlay.endFrame();
        }
    }

    /// Publishes and draws until the settings are in force.
    void publish(const support::Settings& settings) {
        beginPhase("");
        const int seen = mGeneration.getValue();
        require(support::publish(settings).empty(), "cannot publish");
        while (mGeneration.getValue() == seen) {
            std::this_thread::yield();
        }
        pause();
        frames(20, REFRESH_PERIOD_US);
        mOverlay.mScene.settle();
        pause();
    }

    void measure(const char* phase, const support::Settings& settings, bool isShown, int elapsedUs = 0,
                 bool isCapturing = false) {
        publish(settings);
        require(mOverlay.isShown() == isShown, "the overlay is not as it should be");
        beginPhase(phase);
        frames(framesOfAPhase, elapsedUs, isCapturing);
    }

    void pressDumpKey(bool isDumping) {
        beginPhase("");
        platform::ProcessMessage key;
        key.key = {24, 1};
        require(platform::sendMessage(platform::openRuntimeDirectory().path, getpid(), key).empty(),
                "no key");
        while (core::StateInfo::isDumpingEnabled() != isDumping) {
            frames(1);
        }
        pause();
    }

private:
    bench::NullFactory mFactory;
    scene::Overlay mOverlay{mFactory, core::RenderingApiType::OPENGL_ES};
    SysProp<int>& mGeneration = SysPropWatcher::createSysProp<int>("debug.kordanix.settingsgeneration", 0);
};

}  // namespace

int main(int argc, char** argv) {
    beginPhase("");
    framesOfAPhase = argc == 2 ? static_cast<unsigned>(std::atoi(argv[1])) : 0;
    doubles::setWallClock(1700000000000000);
    SysPropWatcher::init("debug.kordanix.settingsgeneration", std::chrono::milliseconds(1));
    Application application;
    application.measure("off", {{"status", "false"}, {"proc", argv[0]}, {"devmode", "true"}}, false);
    application.measure("other API", {{"status", "true"}, {"api", "1"}}, false);
    application.measure("other process", {{"api", "0"}, {"proc", "somebody"}}, false);
    application.measure("between refreshes", {{"proc", argv[0]}, {"widget_cpu_gpu_gpu_freq", "true"}}, true);
    application.measure("refreshes", {}, true, REFRESH_PERIOD_US);
    application.measure("memory refreshes", {{"widget_memory", "true"}}, true, REFRESH_PERIOD_US);
    application.measure("captures", {{"widget_memory", "false"}}, true, 0, true);
    application.publish({{"widget_memory", "true"}});
    application.pressDumpKey(true);
    beginPhase("dumping");
    application.frames(framesOfAPhase);
    beginPhase("looking on");
    const auto threads = support::blockedSignals();
    require(threads.size() >= 4, "not all helper threads are there");
    for (const auto& [name, blocked] : threads) {
        require(blocked == support::ALL_SIGNALS, (name + " takes signals").c_str());
        require(name.rfind("privilege", 0) != 0, "a helper thread bears the program's name");
    }
    application.pressDumpKey(false);
    return 0;
}
