#pragma once

#include "NullFactory.h"
#include "core/RenderingApiType.h"
#include "doubles/FixedPasses.h"
#include "scene/Overlay.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

template <typename T>
class SysProp;

namespace faults {

/// An application with the overlay: frames of one layer or more, and what a test wants to know of them.
class Application {
public:
    /// A layer for each API, attached.
    explicit Application(const std::vector<int>& apis);

    /// One frame of every layer.
    void frame();

    /// Detaches and attaches every layer that often, with some frames in between; with `isNew`, the layers
    /// are destroyed and made again instead.
    void reattach(int times, int frames, bool isNew);

    /// Between two frames. One line: NAME=VALUE and a blank, for every value.
    std::string report() const;

    /// The dumps so far, as " dump=FIRST-LAST" for each: the frames that must be found in it. Any thread, but
    /// the last number is then that of some frame before the call.
    std::string dumps() const;

    /// Nothing that was read of a property was a mixture of two values.
    bool isWhole() const { return mTornTexts == 0; }

private:
    /// Frame numbers of one dump; no frame while `last` is 0.
    struct Dump {
        std::atomic<std::uint64_t> first{0};
        std::atomic<std::uint64_t> last{0};
    };
    static constexpr std::size_t MAX_DUMPS = 100000;

    void makeLayers();
    void beginDump();

    const std::vector<int> mApis;
    bench::NullFactory mFactory;
    doubles::FixedPasses mPasses{20, {1, 100, 7}};
    std::vector<std::unique_ptr<scene::Overlay>> mLayers;

    SysProp<std::string>& mText;  ///< always written as a repetition of one letter
    std::uint64_t mFrames = 0;
    std::uint64_t mChanges = 0;
    std::uint64_t mTornTexts = 0;
    const std::string mDumpFolder;
    std::vector<Dump> mDumps;
    std::atomic<std::size_t> mDumpCount{0};
};

}  // namespace faults
