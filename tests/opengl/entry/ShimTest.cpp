#include "support/ChildProcess.h"

#include <gmock/gmock.h>
#include <stdlib.h>

#include <regex>

namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::MatchesRegex;

using Lines = std::vector<std::string>;

Lines linesOf(const std::string& text) {
    std::istringstream stream(text);
    Lines lines;
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

struct Result {
    Lines own;    ///< what the program printed
    Lines layer;  ///< what the layer in the layer's place printed in between
    Lines errors;
    int status;
};

Result runClient(const char* client, const std::string& way, const char* fake, const std::string& shim) {
    support::ChildProcess::Environment environment;
    if (!shim.empty()) {
        environment["LD_PRELOAD"] = shim;
    }
    const support::Outcome outcome = support::run({client, way, fake, FAKE_SECOND}, environment);
    Result result{{}, {}, linesOf(outcome.err), outcome.status};
    for (const std::string& line : linesOf(outcome.out)) {
        (line.rfind("layer:", 0) == 0 ? result.layer : result.own).push_back(line);
    }
    return result;
}

struct Way {
    const char* name;
    const char* client;
    const char* fake;
    Lines layer;  ///< expected
};

class WaysIn : public testing::TestWithParam<Way> {};

TEST_P(WaysIn, TheProgramRunsAsWithoutTheShim) {
    const Way& way = GetParam();
    const Result bare = runClient(way.client, way.name, way.fake, "");
    const Result shimmed = runClient(way.client, way.name, way.fake, SHIM_WITH_FAKE_LAYER);
    EXPECT_EQ(bare.status, 0);
    EXPECT_EQ(shimmed.status, 0);
    EXPECT_THAT(bare.layer, IsEmpty());
    EXPECT_EQ(shimmed.own, bare.own);
    EXPECT_EQ(shimmed.errors, bare.errors);
    EXPECT_THAT(shimmed.layer, ElementsAreArray(way.layer));
}

const char* const BEFORE = "layer: before EGL swap";
const char* const LOOKED_UP = "layer: before EGL swap, looked up";
const char* const AFTER = "layer: after";

INSTANTIATE_TEST_SUITE_P(
    Each, WaysIn,
    testing::Values(
        Way{"plain", CLIENT, FAKE_FIRST, {"layer: mapped"}},
        Way{"missing", CLIENT, FAKE_FIRST, {"layer: loaded", BEFORE, AFTER}},
        Way{"linked", CLIENT_LINKED, FAKE_FIRST, {"layer: loaded", BEFORE, AFTER}},
        Way{"plugin", CLIENT, PLUGIN, {"layer: loaded", BEFORE, AFTER}}, Way{"deep", CLIENT, PLUGIN, {}},
        Way{"handles", CLIENT, FAKE_FIRST, {"layer: loaded", BEFORE, AFTER, BEFORE, AFTER, BEFORE, AFTER}},
        Way{"lookup",
            CLIENT,
            FAKE_FIRST,
            {"layer: loaded", LOOKED_UP, AFTER, LOOKED_UP, AFTER, LOOKED_UP, AFTER}},
        Way{"nested", CLIENT, FAKE_FIRST, {"layer: loaded", "layer: before GLX swap, looked up", AFTER}},
        Way{"next", CLIENT_LINKED, FAKE_FIRST, {}}),
    [](const auto& each) { return std::string(each.param.name); });

TEST(Shim, TellsOfContextsAndFramebuffersOnceTheLayerIsThere) {
    const Result result = runClient(CLIENT, "rest", FAKE_FIRST, SHIM_WITH_FAKE_LAYER);
    EXPECT_THAT(result.layer, ElementsAre("layer: loaded", BEFORE, AFTER, "layer: framebuffer", BEFORE, AFTER,
                                          "layer: destroyed one", "layer: destroyed one"));
    // The second picture is not the program's, so more of it has changed than the program says.
    EXPECT_THAT(result.own, ElementsAre("first: framebuffer 1 2", "first: eglDestroyContext",
                                        "first: damage of 2 rectangles", "first: framebuffer 3 4",
                                        "first: damage of 0 rectangles", "first: eglDestroyContext",
                                        "first: eglDestroyContext"));
}

TEST(Shim, HasBuffersWithTheOverlayRedrawnAsAWhole) {
    const Result result = runClient(CLIENT, "parts", FAKE_FIRST, SHIM_WITH_FAKE_LAYER);
    const std::string swap = "first: eglSwapBuffers";
    const std::string part = "first: region 1 2 3 4 of 2";
    const std::string whole = "first: region 0 0 12375 12374 of 1";
    const std::string kept = "ages 2, 2";
    const std::string redrawn = "ages 0, 0";
    // The layer draws in frames 2 and 3. A buffer two frames old has the overlay in frames 3 to 5, and not
    // in 6.
    EXPECT_THAT(result.own, ElementsAre(kept, part, swap, kept, part, swap, redrawn, whole, swap, redrawn,
                                        whole, swap, redrawn, part, swap, kept, part, swap));
}

TEST(Shim, PassesEverythingThroughWhenThereIsNoLayerToLoad) {
    const Result bare = runClient(CLIENT, "handles", FAKE_FIRST, "");
    const Result alone = runClient(CLIENT, "handles", FAKE_FIRST, SHIM_ALONE);
    EXPECT_EQ(alone.own, bare.own);
    EXPECT_THAT(alone.errors, ElementsAre(MatchesRegex(
                                  "E/Kordanix\\( *[0-9]+\\): LayerLoader.cpp:load\\([0-9]+\\) The layer "
                                  "cannot be loaded: .*libkordanix-opengl.so: cannot open .*")));
}

std::string outputOf(const std::string& command) {
    const support::Outcome outcome = support::run({"/bin/sh", "-c", command});
    EXPECT_EQ(outcome.status, 0) << command;
    return outcome.out;
}

TEST(Shim, IsSmallAndNeedsTheCLibraryAlone) {
    const std::string needed = outputOf("readelf -d " SHIM_ALONE " | grep NEEDED");
    EXPECT_THAT(linesOf(needed), ElementsAre(testing::HasSubstr("[libc.so.6]")));
    EXPECT_LT(std::stoi(outputOf("strip -o stripped-shim " SHIM_ALONE " && wc -c < stripped-shim")),
              28 * 1024);
    EXPECT_THAT(
        linesOf(outputOf("nm -D --defined-only -j " SHIM_ALONE " | LC_ALL=C sort")),
        ElementsAre("dlsym", "eglDestroyContext", "eglGetProcAddress", "eglQuerySurface",
                    "eglSetDamageRegionKHR", "eglSurfaceAttrib", "eglSwapBuffers",
                    "eglSwapBuffersWithDamageEXT", "eglSwapBuffersWithDamageKHR", "eglTerminate",
                    "glBindFramebuffer", "glBindFramebufferEXT", "glBindFramebufferOES", "glXDestroyContext",
                    "glXFreeContextEXT", "glXGetProcAddress", "glXGetProcAddressARB", "glXQueryDrawable",
                    "glXSwapBuffers", "glXSwapBuffersMscOML"));
}

}  // namespace
