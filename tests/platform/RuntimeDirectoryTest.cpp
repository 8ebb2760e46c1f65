#include "properties/RuntimeDirectory.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>

#include "platform/TemporaryDirectory.h"

namespace platform {
namespace {

class RuntimeDirectoryTest : public testing::Test {
protected:
    RuntimeDirectoryTest() {
        unsetenv("KORDANIX_RUNTIME_DIR");
        unsetenv("XDG_RUNTIME_DIR");
    }
    ~RuntimeDirectoryTest() override { unsetenv("KORDANIX_RUNTIME_DIR"); }

    /// The error for KORDANIX_RUNTIME_DIR with that text.
    static std::string errorOf(const std::string& path) {
        setenv("KORDANIX_RUNTIME_DIR", path.c_str(), 1);
        const RuntimeDirectory directory = openRuntimeDirectory();
        EXPECT_NE(directory.path.empty(), directory.error.empty()) << path;
        return directory.error;
    }

    const TemporaryDirectory mScratch;
};

TEST_F(RuntimeDirectoryTest, IsChosenInTurnAndCreatedForTheUserAlone) {
    const std::string own = mScratch.path("own");
    setenv("XDG_RUNTIME_DIR", mScratch.path().c_str(), 1);
    EXPECT_EQ(openRuntimeDirectory().path, mScratch.path("kordanix"));
    setenv("KORDANIX_RUNTIME_DIR", "", 1);
    EXPECT_EQ(openRuntimeDirectory().path, mScratch.path("kordanix"));
    setenv("KORDANIX_RUNTIME_DIR", (own + "//").c_str(), 1);
    EXPECT_EQ(openRuntimeDirectory().path, own);
    for (const std::string& path : {own, mScratch.path("kordanix")}) {
        struct stat status = {};
        ASSERT_EQ(stat(path.c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0700U);
    }
    EXPECT_EQ(openRuntimeDirectory().path, own) << "a second time";
}

TEST_F(RuntimeDirectoryTest, FallsBackToAFolderNamedByTheUser) {
    const RuntimeDirectory directory = openRuntimeDirectory();
    const std::string expected = "/tmp/kordanix-" + std::to_string(geteuid());
    EXPECT_TRUE(directory.path == expected || directory.error.find(expected) != std::string::npos);
}

TEST_F(RuntimeDirectoryTest, RefusesWhatOthersCouldMeddleWith) {
    const std::string path = mScratch.path("folder");
    EXPECT_THAT(errorOf("relative/path"), testing::HasSubstr("absolute"));
    EXPECT_THAT(errorOf(mScratch.path("missing/folder")), testing::HasSubstr("No such file"));

    ASSERT_EQ(mkdir(path.c_str(), 0700), 0);
    ASSERT_EQ(symlink(path.c_str(), mScratch.path("link").c_str()), 0);
    EXPECT_THAT(errorOf(mScratch.path("link")), testing::HasSubstr("symbolic link"));
    EXPECT_THAT(errorOf(mScratch.path("link/")), testing::HasSubstr("symbolic link"));
    std::ofstream(mScratch.path("file")) << "x";
    EXPECT_THAT(errorOf(mScratch.path("file")), testing::HasSubstr("not a folder"));

    EXPECT_EQ(errorOf(path), "");
    ASSERT_EQ(chmod(path.c_str(), 0707), 0);
    EXPECT_THAT(errorOf(path), testing::HasSubstr("written to by other users"));
    EXPECT_THAT(errorOf(path), testing::HasSubstr(path));
    ASSERT_EQ(chmod(path.c_str(), 0700), 0);
    if (geteuid() == 0) {
        ASSERT_EQ(chown(path.c_str(), 65534, 65534), 0);
        EXPECT_THAT(errorOf(path), testing::HasSubstr("another user (id 65534)"));
    }
}

TEST_F(RuntimeDirectoryTest, BelowTmpTheGroupMustNotWriteEither) {
    const std::string path = mScratch.path("folder");
    if (path.rfind("/tmp/", 0) != 0) {
        GTEST_SKIP() << "temporary files lie elsewhere";
    }
    ASSERT_EQ(mkdir(path.c_str(), 0700), 0);
    ASSERT_EQ(chmod(path.c_str(), 0770), 0);
    EXPECT_THAT(errorOf(path), testing::HasSubstr("written to by other users"));
}

}  // namespace
}  // namespace platform
