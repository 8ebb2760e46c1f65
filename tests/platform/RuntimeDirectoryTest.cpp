#include "properties/RuntimeDirectory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/TemporaryDirectory.h"

namespace platform {
namespace {

TEST(RuntimeDirectoryTest, IsChosenInTurnAndCreatedForTheUserAlone) {
    const TemporaryDirectory scratch;
    const std::string own = scratch.path("own");
    setenv("XDG_RUNTIME_DIR", scratch.path().c_str(), 1);
    setenv("KORDANIX_RUNTIME_DIR", "", 1);
    EXPECT_EQ(openRuntimeDirectory().path, scratch.path("kordanix"));
    setenv("KORDANIX_RUNTIME_DIR", (own + "//").c_str(), 1);
    EXPECT_EQ(openRuntimeDirectory().path, own);
    EXPECT_EQ(openRuntimeDirectory().path, own) << "a second time";
    for (const std::string& path : {own, scratch.path("kordanix")}) {
        struct stat status = {};
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0700U);
    }
}

TEST(RuntimeDirectoryTest, RefusesWhatOthersCouldMeddleWith) {
    const TemporaryDirectory scratch;
    const auto expectRefused = [](const std::string& path, const char* reason) {
        setenv("KORDANIX_RUNTIME_DIR", path.c_str(), 1);
        const RuntimeDirectory directory = openRuntimeDirectory();
        EXPECT_EQ(directory.path, "");
        EXPECT_THAT(directory.error, testing::HasSubstr(reason));
    };
    const std::string path = scratch.path("folder");
    ASSERT_EQ(mkdir(path.c_str(), 0700), 0);
    ASSERT_EQ(symlink(path.c_str(), scratch.path("link").c_str()), 0);
    expectRefused("relative/path", "absolute");
    expectRefused(scratch.path("link"), "symbolic link");
    expectRefused(scratch.path("link/"), "symbolic link");
    ASSERT_EQ(chmod(path.c_str(), 0707), 0);
    expectRefused(path, "written to by other users");
    if (path.rfind("/tmp/", 0) == 0) {  // below it the group must not write either
        ASSERT_EQ(chmod(path.c_str(), 0770), 0);
        for (const std::string& same : {path, '/' + path, "/tmp/../" + path, "/usr/.." + path}) {
            expectRefused(same, "written to by other users");
        }
    }
    ASSERT_EQ(chmod(path.c_str(), 0700), 0);
    if (geteuid() == 0) {
        ASSERT_EQ(chown(path.c_str(), 65534, 65534), 0);
        expectRefused(path, "another user (id 65534)");
    }
}

}  // namespace
}  // namespace platform
