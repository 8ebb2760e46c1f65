#include "properties/RuntimeDirectory.h"
#include "support/TemporaryDirectory.h"

#include <gmock/gmock.h>
#include <unistd.h>

namespace platform {
namespace {

RuntimeDirectory openAt(const std::string& path) {
    setenv("KORDANIX_RUNTIME_DIR", path.c_str(), 1);
    return openRuntimeDirectory();
}

TEST(RuntimeDirectoryTest, IsChosenInTurnAndCreatedForTheUserAlone) {
    const support::TemporaryDirectory scratch;
    setenv("XDG_RUNTIME_DIR", scratch.path().c_str(), 1);
    EXPECT_EQ(openAt("").path, scratch.path("kordanix"));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(openAt(scratch.path("own//")).path, scratch.path("own"));
    }
    for (const char* const name : {"own", "kordanix"}) {
        EXPECT_EQ(std::filesystem::status(scratch.path(name)).permissions(),
                  std::filesystem::perms::owner_all);
    }
}

TEST(RuntimeDirectoryTest, RefusesWhatOthersCouldMeddleWith) {
    const support::TemporaryDirectory scratch;
    const std::string path = scratch.path("folder");
    const char* const isShared = path.rfind("/tmp/", 0) == 0 ? "written to by other users" : "";
    const std::tuple<const char*, std::string, const char*> cases[] = {
        {"", "relative/path", "absolute"},
        {"mkdir -m 0700 folder; ln -s folder link", scratch.path("link"), "symbolic link"},
        {"", scratch.path("link/"), "symbolic link"},
        {"chmod 0707 folder", path, "written to by other users"},
        // Below /tmp the group must not write either.
        {"chmod 0770 folder", path, isShared},
        {"", "/tmp/.." + path, isShared},
        {"", "/usr/.." + path, isShared},
        {"chmod 0700 folder; chown 65534:65534 folder", path, "another user (id 65534)"},
    };
    for (const auto& [commands, directory, reason] : cases) {
        if (!scratch.shell(std::string(commands))) {
            ASSERT_NE(geteuid(), 0U);
            continue;
        }
        const RuntimeDirectory refused = openAt(directory);
        EXPECT_TRUE(refused.path.empty() || *reason == '\0') << refused.path;
        EXPECT_THAT(refused.error, testing::HasSubstr(reason));
    }
}

}  // namespace
}  // namespace platform
