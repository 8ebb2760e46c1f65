// The process that the tests of faults and the soak are hard on: an application that draws frames with the
// overlay, tells of them in shared memory and does what it finds there. Pixels are drawn for the soak alone.

#include "core/KeyEventInterceptor.h"
#include "core/StateInfo.h"
#include "core/SysPropWatcher.h"
#include "faults/HostShared.h"
#include "gui/WidgetsSettings.h"
#include "scene/Overlay.h"

#ifdef DRAWS_PIXELS
#include "DevicePasses.h"
#include "Landscape.h"
#include "software/SoftwareFactory.h"
#include "software/Surface.h"
#else
#include "NullFactory.h"
#include "doubles/FixedPasses.h"
#endif

#include <fcntl.h>
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

/// The leak checker hangs in a forked child of a process with threads; the process itself is checked.
const pid_t STARTED_PROCESS = getpid();
extern "C" int __lsan_is_turned_off() {
    return getpid() == STARTED_PROCESS ? 0 : 1;
}

// The process forks with threads running, and ends without waiting for them.
extern "C" const char* __tsan_default_options() {
    return "die_after_fork=0:report_thread_leaks=0:atexit_sleep_ms=200";
}

namespace {

using faults::End;
using faults::HostShared;
using faults::Order;

#ifdef DRAWS_PIXELS
constexpr std::pair<std::uint32_t, std::uint32_t> SIZES[] = {{740, 360}, {360, 740}, {1480, 720}, {370, 180},
                                                             {180, 370}, {320, 240}, {64, 64}};

/// The demo's picture and the overlay in it, as fast as it can be.
struct Stage {
    static constexpr std::chrono::milliseconds PAUSE{0};

    void paint(unsigned size, long frame) {
        const auto& [width, height] = SIZES[size % std::size(SIZES)];
        if (surface.mImage.mWidth != width || surface.mImage.mHeight != height) {
            surface.resize(width, height);
        }
        landscape.draw(surface.mImage, static_cast<double>(frame) / 60.0);
        surface.beginOverlay();
    }

    software::Surface surface{740, 360};
    software::SoftwareFactory factory{surface};
    demo::DevicePasses passes;
    demo::Landscape landscape;
};
#else
struct Stage {
    /// Faster than any screen, but not so fast that frames of a dump have to be left out.
    static constexpr std::chrono::milliseconds PAUSE{1};

    void paint(unsigned /*size*/, long /*frame*/) {}

    bench::NullFactory factory;
    doubles::FixedPasses passes{20, {1, 100, 7}};
};
#endif

struct Application {
    Application() { makeLayer(); }

    void makeLayer() {
        layer.reset();
        layer = std::make_unique<scene::Overlay>(stage.factory, static_cast<core::RenderingApiType>(0),
                                                 &stage.passes);
        layer->attach();
    }

    Stage stage;
    std::unique_ptr<scene::Overlay> layer;
};

/// Outlives main(), so that its end can be that of the statics.
std::unique_ptr<Application> owner;
Application* application = nullptr;
HostShared* shared = nullptr;
std::atomic<bool> isEnding{false};

/// A notice of the background may come at any moment: only a frame before which and after which a dump runs
/// is surely in it, and the frame with the key that ends it.
void noteDump(bool wasDumping, bool isToggled) {
    if (isToggled && !wasDumping) {
        ++shared->dumpCount;
    }
    const std::size_t count = shared->dumpCount;
    if (wasDumping && (isToggled || core::StateInfo::isDumpingEnabled()) && count > 0 && !isEnding) {
        HostShared::Dump& dump = shared->dumps[(count - 1) % HostShared::MAX_DUMPS];
        dump.first = dump.first == 0 ? core::StateInfo::mFrameNumber : dump.first.load();
        dump.last = core::StateInfo::mFrameNumber;
    }
}

void frame() {
    static auto& text = SysPropWatcher::createSysProp<std::string>("debug.fault.text", {});
    scene::Overlay& layer = *application->layer;
    application->stage.paint(shared->size, shared->frames);
    layer.beginFrame();
    layer.draw();
    const bool wasDumping = core::StateInfo::isDumpingEnabled();
    const bool isToggled = layer.isShown() && core::StateInfo::mDevModeProp.getValue() &&
                           KeyEventInterceptor::getInstance()->mIsDumpKeyPressed;
    layer.endFrame();
    noteDump(wasDumping, isToggled);
    shared->isShown = layer.isShown();
    // Always written as a repetition of one letter.
    const std::string value = text.getValue();
    shared->tornTexts += value.find_first_not_of(value[0]) != std::string::npos ? 1 : 0;
    shared->isDumping = core::StateInfo::isDumpingEnabled();
    shared->opacity = static_cast<int>(gui::WidgetsSettings::getWidgets().mBgTransparency.getValue());
    ++shared->frames;
}

void startChild(Order order) {
    // What a program finds that a process with the overlay executes: only the three standard files.
    static char shell[] = "/bin/sh";
    static char option[] = "-c";
    static char command[] = "for i in 3 4 5 6 7 8 9; do if [ -e /proc/$$/fd/$i ]; then exit 1; fi; done";
    char* const arguments[] = {shell, option, command, nullptr};
    pid_t child = 0;
    if (order == Order::CHILD_IS_SPAWNED) {  // without fork(), and what is done for a forked child
        child = posix_spawn(&child, shell, nullptr, nullptr, arguments, environ) == 0 ? child : -1;
    } else {
        child = fork();
    }
    if (child != 0) {
        ++(child < 0 ? shared->failedChildren : shared->children);
        return;
    }
    alarm(60);
    if (order == Order::CHILD_EXECUTES) {
        execv(shell, arguments);
        _exit(4);
    }
    if (order == Order::CHILD_EXITS) {
        std::exit(0);
    }
    shared = new HostShared();  // the counters are the parent's
    for (int i = 0; i < 50; ++i) {
        frame();
    }
    _exit(shared->tornTexts == 0 ? 0 : 5);
}

void lookAfterChildren() {
    int status = 0;
    while (shared->children > 0 && waitpid(-1, &status, WNOHANG) > 0) {
        shared->failedChildren += status == 0 ? 0 : 1;
        --shared->children;
    }
}

int endAs(End end) {
    if (end == End::EXIT_ON_A_THREAD) {
        static_cast<void>(owner.release());  // the thread that draws does not stop for it
        std::thread([] {
            isEnding = true;
            std::exit(0);
        }).detach();
        for (;;) {
            frame();
            std::this_thread::sleep_for(Stage::PAUSE);
        }
    }
    switch (end) {
        case End::EXIT:
            std::exit(0);
        case End::QUICK_EXIT:
            std::quick_exit(0);
        case End::UNDERSCORE_EXIT:
            _exit(0);
        default:
            owner.reset();
            return 0;
    }
}

void obey() {
    std::this_thread::sleep_for(std::chrono::milliseconds(shared->stallMs.exchange(0)));
    for (; shared->reattach > 0; --shared->reattach) {
        application->layer->detach();
        application->layer->attach();
        frame();
    }
    for (; shared->renew > 0; --shared->renew) {
        application->makeLayer();
        frame();
    }
    if (shared->order != Order::NONE) {
        startChild(shared->order);
        shared->order = Order::NONE;
    }
    lookAfterChildren();
}

}  // namespace

int main() {
    const int file = open(std::getenv("FAULT_SHARED"), O_RDWR | O_CLOEXEC);
    void* const memory = mmap(nullptr, sizeof(HostShared), PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
    close(file);
    if (memory == MAP_FAILED) {
        return 2;
    }
    shared = static_cast<HostShared*>(memory);

    // The library would wait a second before it looks for its first publication; tests are in a hurry.
    SysPropWatcher::init("debug.kordanix.settingsgeneration", std::chrono::milliseconds(1));
    owner = std::make_unique<Application>();
    application = owner.get();
    for (;;) {
        frame();
        obey();
        const End end = shared->end;
        if (end != End::NONE) {
            return endAs(end);
        }
        std::this_thread::sleep_for(Stage::PAUSE);
    }
}
