#include "faults/Application.h"

#include "core/KeyEventInterceptor.h"
#include "core/StateInfo.h"
#include "core/SysPropWatcher.h"
#include "gui/WidgetsSettings.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace faults {

namespace {

std::size_t entriesOf(const char* folder) {
    std::error_code error;
    const std::filesystem::directory_iterator entries(folder, error);
    return error ? 0 : static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

std::size_t residentPages() {
    std::size_t total = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident;
}

}  // namespace

Application::Application(const std::vector<int>& apis)
    : mApis(apis),
      mText(SysPropWatcher::createSysProp<std::string>("debug.fault.text", {})),
      mDumpFolder(std::getenv("FAULT_DUMPS") == nullptr ? "" : std::getenv("FAULT_DUMPS")),
      mDumps(MAX_DUMPS) {
    makeLayers();
}

void Application::makeLayers() {
    for (const int api : mApis) {
        mLayers.push_back(
            std::make_unique<scene::Overlay>(mFactory, static_cast<core::RenderingApiType>(api), &mPasses));
        mLayers.back()->attach();
    }
}

void Application::frame() {
    for (const auto& layer : mLayers) {
        layer->beginFrame();
        mChanges += core::StateInfo::isWidgetsUpdated() ? 1 : 0;
        layer->draw();
        const bool wasDumping = core::StateInfo::isDumpingEnabled();
        const bool isToggled = layer->isShown() && core::StateInfo::mDevModeProp.getValue() &&
                               KeyEventInterceptor::getInstance()->mIsDumpKeyPressed;
        if (isToggled && !wasDumping && !mDumpFolder.empty()) {
            beginDump();
        }
        layer->endFrame();
        // A notice of the background may come at any moment: only a frame before which and after which a dump
        // runs is surely in it, and the frame with the key that ends it.
        if (wasDumping && (isToggled || core::StateInfo::isDumpingEnabled()) && mDumpCount > 0) {
            Dump& dump = mDumps[mDumpCount - 1];
            if (dump.first == 0) {
                dump.first = core::StateInfo::mFrameNumber;
            }
            dump.last = core::StateInfo::mFrameNumber;
        }
    }
    ++mFrames;
    const std::string text = mText.getValue();
    if (!text.empty() && text.find_first_not_of(text.front()) != std::string::npos) {
        ++mTornTexts;
    }
}

// A folder for each dump. It is made the working directory, where dumps go, since other threads may read the
// environment at any time.
void Application::beginDump() {
    const std::string folder = mDumpFolder + "/" + std::to_string(mDumpCount + 1);
    mkdir(folder.c_str(), S_IRWXU);
    if (mDumpCount == MAX_DUMPS || chdir(folder.c_str()) != 0) {
        std::abort();
    }
    ++mDumpCount;
}

void Application::reattach(int times, int frames, bool isNew) {
    for (int i = 0; i < times; ++i) {
        if (isNew) {
            mLayers.clear();
            makeLayers();
        } else {
            for (const auto& layer : mLayers) {
                layer->detach();
                layer->attach();
            }
        }
        for (int j = 0; j < frames; ++j) {
            frame();
        }
    }
}

std::string Application::report() const {
    std::ostringstream text;
    text << "frames=" << mFrames << " changes=" << mChanges << " torn=" << mTornTexts;
    for (std::size_t i = 0; i < mLayers.size(); ++i) {
        text << " shown" << i << '=' << mLayers[i]->isShown();
    }
    text << " dumping=" << core::StateInfo::isDumpingEnabled()
         << " opacity=" << gui::WidgetsSettings::getWidgets().mBgTransparency.getValue()
         << " files=" << entriesOf("/proc/self/fd") << " threads=" << entriesOf("/proc/self/task")
         << " pages=" << residentPages() << dumps();
    return text.str();
}

std::string Application::dumps() const {
    std::ostringstream text;
    const std::size_t count = mDumpCount;
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t last = mDumps[i].last;
        text << " dump=" << mDumps[i].first << '-' << last;
    }
    return text.str();
}

}  // namespace faults
