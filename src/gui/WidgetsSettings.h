#pragma once

#include "core/SysPropWatcher.h"
#include "utils/Export.h"

#include <ostra/Ostra.h>

#include <atomic>
#include <cstdint>
#include <glm/vec4.hpp>
#include <string>
#include <vector>

namespace gui {

/// The widget settings in the `debug.kordanix.*` properties: which widgets are shown, where they are anchored
/// and in which colours. Every result comes from the properties' current values, which the watcher thread may
/// change between two calls. Call it on the rendering thread.
class KORDANIX_EXPORT WidgetsSettings {
public:
    /// Where a widget is anchored on the canvas. A property may also have any other number.
    enum class Position : std::int32_t {
        TOP_LEFT = 0,
        TOP_CENTER = 1,
        TOP_RIGHT = 2,
        CENTER_LEFT = 3,
        CENTER_RIGHT = 4,
        BOTTOM_LEFT = 5,
        BOTTOM_CENTER = 6,
        BOTTOM_RIGHT = 7,
    };

    /// One graph of a widget. Refers to properties that live as long as the process.
    class KORDANIX_EXPORT Graph {
    public:
        /// Creates the switch under `name` and then the colour under `name` followed by "_color".
        Graph(const std::string& name, bool enabledByDefault, std::uint32_t defaultColor);

        /// The graph's colour, opaque; (0, 0, 0, 0) when it is switched off.
        glm::vec4 getTextColor() const;

        /// The graph's colour with an alpha of 1 / count, for `count` graphs (at least 1) on top of each
        /// other; (0, 0, 0, 0) when it is switched off.
        glm::vec4 getGraphColor(std::uint32_t count) const;

        SysProp<bool>& mEnabled;
        SysProp<int>& mColor;  ///< 0xAARRGGBB, the alpha byte is ignored
    };

    /// All settings. A widget is enabled when its own switch and the switch of one of its graphs are on.
    class KORDANIX_EXPORT Widgets {
    public:
        class KORDANIX_EXPORT Fps {
        public:
            Fps();
            bool enabled() const;

            SysProp<bool>& mWidget;
            SysProp<Position>& mPosition;
            Graph mCurrent;
            Graph mMedian;
            Graph mStability;
        };

        class KORDANIX_EXPORT CpuGpu {
        public:
            CpuGpu();
            bool enabled() const;

            SysProp<bool>& mWidget;
            SysProp<Position>& mPosition;
            Graph mCpuLoad;
            Graph mGpuFreq;
            Graph mGpuLoad;
        };

        class KORDANIX_EXPORT GpuActivity {
        public:
            GpuActivity();

            /// The render passes and the thumbnail count like graphs.
            bool enabled() const;

            /// The thumbnail is a widget of its own: it needs this widget's switch, but none of its graphs.
            bool thumbnailEnabled() const;

            SysProp<bool>& mWidget;
            SysProp<Position>& mPosition;
            Graph mFragmentLoad;
            Graph mVertexLoad;
            SysProp<bool>& mRenderpass;
            SysProp<bool>& mThumbnail;
            SysProp<Position>& mThumbnailPosition;
        };

        class KORDANIX_EXPORT Memory {
        public:
            Memory();
            bool enabled() const;

            SysProp<bool>& mWidget;
            SysProp<Position>& mPosition;
            Graph mPss;
            Graph mGpuTotal;
            Graph mGpuSurface;
            Graph mGpuTexture;
            Graph mSysFree;
        };

        Widgets();

        /// The background of all widgets. Opaque for a transparency of 255 or more and for a negative one.
        glm::vec4 bgColor() const;

        SysProp<int>& mBgColor;         ///< 0xAARRGGBB, the alpha byte is ignored
        SysProp<int>& mBgTransparency;  ///< 255ths of opacity, despite its name
        Fps mFps;
        CpuGpu mCpuGpu;
        GpuActivity mGpuActivity;
        Memory mMemory;
    };

    /// Returns whether somebody published settings since the last call; true the first time. By then the
    /// published values are in place. The first call starts the property watcher and throws std::system_error
    /// if it cannot create the thread; later calls then try again, once a second, and do not throw.
    static bool load();

    /// The settings of the process. The first call creates their properties.
    static Widgets& getWidgets();

    /// Writing this property publishes all others.
    static constexpr char propToWatchName[] = "debug.kordanix.settingsgeneration";

    static bool isInited;                 ///< load() has been called; rendering thread only
    static std::atomic<bool> wasChanged;  ///< set by the watcher thread (release), taken by `load` (acquire)
};

/// The names and encodings of the dumpable values; a graph's slot in a dump is its index here. Built at load,
/// never changed.
KORDANIX_EXPORT extern std::vector<Ostra::DumpWidgetMeta>& gWidgetsMeta;

}  // namespace gui
