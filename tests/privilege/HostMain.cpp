// The program whose system calls are counted: an application with the overlay, phase by phase. Its wall clock
// stands still except where a refresh is wanted. Frame dumps go to the folder that is the argument.

#include "NullFactory.h"
#include "core/KeyEventInterceptor.h"
#include "core/StateInfo.h"
#include "core/SysPropWatcher.h"
#include "doubles/FakeClock.h"
#include "ostra/ProcessSocket.h"
#include "privilege/Phases.h"
#include "properties/RuntimeDirectory.h"
#include "properties/SystemProperties.h"
#include "scene/Overlay.h"

#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using Settings = std::vector<std::pair<std::string, std::string>>;

constexpr int REFRESH_PERIOD_US = 130000;

class Application {
public:
    Application() : mOverlay(mFactory, static_cast<core::RenderingApiType>(0)) { mOverlay.attach(); }

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
    void publish(const Settings& settings) {
        privilege::beginPhase(privilege::SETTING_UP);
        static int generation = 0;
        const std::string seen = std::to_string(++generation);
        for (const auto& [name, value] : settings) {
            require(platform::setProperty(("debug.kordanix." + name).c_str(), value.c_str()).empty());
        }
        require(platform::setProperty("debug.privilege.generation", seen.c_str()).empty());
        require(platform::setProperty("debug.kordanix.settingsgeneration", seen.c_str()).empty());
        while (mGeneration.getValue() != generation) {
            std::this_thread::yield();
        }
        // The watcher sleeps again when it has run its listeners.
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        frames(20, REFRESH_PERIOD_US);
        mOverlay.mScene.settle();
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }

    void pressDumpKey(bool isDumping) {
        privilege::beginPhase(privilege::SETTING_UP);
        platform::ProcessMessage key;
        key.key = {24, 1};
        require(platform::sendMessage(platform::openRuntimeDirectory().path, getpid(), key).empty());
        while (core::StateInfo::isDumpingEnabled() != isDumping) {
            frames(1);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }

    bool isShown() const { return mOverlay.isShown(); }

    static void require(bool isRight) {
        if (!isRight) {
            _exit(3);
        }
    }

private:
    bench::NullFactory mFactory;
    scene::Overlay mOverlay;
    SysProp<int>& mGeneration = SysPropWatcher::createSysProp<int>("debug.privilege.generation", 0);
};

}  // namespace

int main(int argc, char** argv) {
    using namespace privilege;
    beginPhase(SETTING_UP);
    if (argc != 2 || chdir(argv[1]) != 0) {
        return 2;
    }
    doubles::setWallClock(1700000000000000);
    SysPropWatcher::init("debug.kordanix.settingsgeneration", std::chrono::milliseconds(1));
    Application application;
    const auto measure = [&application](Phase phase, const Settings& settings, bool isShown,
                                        int elapsedUs = 0, bool isCapturing = false) {
        application.publish(settings);
        Application::require(application.isShown() == isShown);
        beginPhase(phase);
        application.frames(FRAMES, elapsedUs, isCapturing);
        beginPhase(SETTING_UP);
    };
    measure(SWITCHED_OFF, {{"status", "false"}, {"proc", argv[0]}, {"devmode", "true"}}, false);
    measure(OTHER_API, {{"status", "true"}, {"api", "1"}}, false);
    measure(OTHER_PROCESS, {{"api", "0"}, {"proc", "somebody"}}, false);
    measure(BETWEEN_REFRESHES, {{"proc", argv[0]}, {"widget_cpu_gpu_gpu_freq", "true"}}, true);
    measure(REFRESHES, {}, true, REFRESH_PERIOD_US);
    measure(MEMORY_REFRESHES, {{"widget_memory", "true"}}, true, REFRESH_PERIOD_US);
    measure(CAPTURES, {{"widget_memory", "false"}}, true, 0, true);

    application.publish({{"widget_memory", "true"}});
    application.pressDumpKey(true);
    beginPhase(DUMPING);
    application.frames(FRAMES);
    application.pressDumpKey(false);
    return 0;
}
