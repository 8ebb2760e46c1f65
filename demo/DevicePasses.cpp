#include "DevicePasses.h"

#include "simulator/DeviceSimulator.h"

namespace demo {

bool DevicePasses::readFrame(gui::FrameData& frame, scene::Reading captureStart) {
    const auto scripted = simulator::frameAt(captureStart.value_or(simulator::now()));
    if (!scripted) {
        return false;
    }
    unsigned int index = 0;
    for (const simulator::ScriptedPass& pass : scripted->passes) {
        gui::RenderPassData data(0.0F, pass.values);
        data.setIndex(index++);
        data.addTimestampInfo(pass.startMs, pass.endMs);
        frame.addRenderPassInfo(data);
    }
    frame.addFrameTimeInfo(0.0L, scripted->durationMs);
    return true;
}

}  // namespace demo
