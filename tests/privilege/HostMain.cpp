// The program whose system calls are counted: an application with the overlay, phase by phase. Its wall clock
// stands still except where a refresh is wanted. Frame dumps go to the folder that is the argument. Ends with
// 0 when all went as planned and no thread of the overlay takes signals or bears the program's name.

#include "NullFactory.h"
#include "core/KeyEventInterceptor.h"
#include "core/StateInfo.h"
#include "core/SysPropWatcher.h"
#include "doubles/FakeClock.h"
#include "ostra/ProcessSocket.h"
#include "privilege/Phases.h"
#include "properties/RuntimeDirectory.h"
#include "scene/Overlay.h"
#include "support/Settings.h"
#include "support/Threads.h"

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

namespace {

using namespace privilege;

constexpr int REFRESH_PERIOD_US = 130000;

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
        beginPhase(SETTING_UP);
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

    void measure(Phase phase, const support::Settings& settings, bool isShown, int elapsedUs = 0,
                 bool isCapturing = false) {
        publish(settings);
        require(mOverlay.isShown() == isShown, "the overlay is not as it should be");
        beginPhase(phase);
        frames(FRAMES, elapsedUs, isCapturing);
    }

    void pressDumpKey(bool isDumping) {
        beginPhase(SETTING_UP);
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
    beginPhase(SETTING_UP);
    if (argc != 2 || chdir(argv[1]) != 0) {
        return 2;
    }
    doubles::setWallClock(1700000000000000);
    SysPropWatcher::init("debug.kordanix.settingsgeneration", std::chrono::milliseconds(1));
    Application application;
    application.measure(SWITCHED_OFF, {{"status", "false"}, {"proc", argv[0]}, {"devmode", "true"}}, false);
    application.measure(OTHER_API, {{"status", "true"}, {"api", "1"}}, false);
    application.measure(OTHER_PROCESS, {{"api", "0"}, {"proc", "somebody"}}, false);
    application.measure(BETWEEN_REFRESHES, {{"proc", argv[0]}, {"widget_cpu_gpu_gpu_freq", "true"}}, true);
    application.measure(REFRESHES, {}, true, REFRESH_PERIOD_US);
    application.measure(MEMORY_REFRESHES, {{"widget_memory", "true"}}, true, REFRESH_PERIOD_US);
    application.measure(CAPTURES, {{"widget_memory", "false"}}, true, 0, true);
    application.publish({{"widget_memory", "true"}});
    application.pressDumpKey(true);
    beginPhase(DUMPING);
    application.frames(FRAMES);
    beginPhase(LOOKING_ON);
    const auto threads = support::blockedSignals();
    require(threads.size() >= 4, "not all helper threads are there");
    for (const auto& [name, blocked] : threads) {
        require(blocked == support::ALL_SIGNALS, (name + " takes signals").c_str());
        require(name.rfind("privilege", 0) != 0, "a helper thread bears the program's name");
    }
    application.pressDumpKey(false);
    return 0;
}
