#include "properties/PropertyFile.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstddef>
#include <fstream>
#include <iterator>

#include "platform/ChildProcess.h"
#include "platform/TemporaryDirectory.h"
#include "properties/SystemProperties.h"

namespace platform {
namespace {

/// A runtime directory of the test's own, through files of its own: nothing here is mapped for good.
class PropertyFileTest : public testing::Test {
protected:
    PropertyFileTest() { setenv("KORDANIX_RUNTIME_DIR", mDirectory.path().c_str(), 1); }

    std::string readProperty(const std::string& name) const {
        std::string error;
        const PropertyFile file = PropertyFile::openForReading(mDirectory.path(), error);
        const std::size_t number = file.area() == nullptr ? 0 : findEntry(*file.area(), name.c_str());
        return file.area() == nullptr             ? "(no area: " + error + ")"
               : number == PropertyArea::CAPACITY ? "(none)"
                                                  : readValue(file.area()->entries[number]).text.data();
    }

    std::string readFile() const {
        std::ifstream file(mPath, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    /// Expects that neither readers nor writers use what lies in the file's place, and that they say why.
    void expectRefused(const std::string& reason) const {
        std::string error;
        EXPECT_EQ(PropertyFile::openForReading(mDirectory.path(), error).area(), nullptr);
        EXPECT_THAT(error, testing::AllOf(testing::HasSubstr(reason), testing::HasSubstr(mPath)));
        EXPECT_THAT(setProperty("a", "b"), testing::HasSubstr(mPath));
        EXPECT_EQ(propertyAreaError(), error);
    }

    const TemporaryDirectory mDirectory;
    const std::string mPath = mDirectory.path("properties");
};

TEST_F(PropertyFileTest, RefusesForeignAndDamagedAreasAndLeavesThemAlone) {
    ASSERT_EQ(setProperty("debug.first", "1"), "");
    ASSERT_EQ(setProperty("debug.second", "2"), "");
    const std::string sound = readFile();
    ASSERT_EQ(sound.size(), PropertyArea::SIZE);
    const auto damaged = [&](std::size_t at, std::uint32_t word) {
        return std::string(sound).replace(at, 4, reinterpret_cast<const char*>(&word), 4);
    };
    const std::size_t entry = offsetof(PropertyArea, entries);
    const std::size_t index =
        offsetof(PropertyArea, index) + hashName("debug.first") % PropertyArea::INDEX_SIZE * 4;
    const std::pair<std::string, const char*> files[] = {
        {"", "is not a property area"},
        {sound.substr(1), "is not a property area"},
        {std::string(PropertyArea::SIZE, '\0'), "is not a property area"},
        {damaged(4, 99), "another version"},
        {damaged(8, 4096), "another version"},
        {damaged(offsetof(PropertyArea, serial), 0), "header"},
        {damaged(offsetof(PropertyArea, count), 794), "header"},
        {damaged(offsetof(PropertyArea, count), 1), "header"},
        {damaged(offsetof(PropertyArea, pending), UINT32_MAX), "header"},
        {damaged(index, UINT32_MAX), "header"},
        {damaged(index, 0), "entry 0"},
        {damaged(entry, 0), "entry 0"},
        {damaged(entry + offsetof(prop_info, hash), 7), "entry 0"},
        {damaged(entry + offsetof(prop_info, name), 0x2e2e6161), "entry 0"},        // "aa.."
        {damaged(entry + offsetof(prop_info, name) + 124, 0x61616161), "entry 0"},  // without an end
    };
    for (const auto& [bytes, reason] : files) {
        SCOPED_TRACE(&bytes - &files[0].first);
        std::ofstream(mPath, std::ios::binary | std::ios::trunc) << bytes;
        expectRefused(reason);
        EXPECT_TRUE(readFile() == bytes);
    }
}

TEST_F(PropertyFileTest, RefusesOtherThingsInItsPlace) {
    ASSERT_EQ(mkfifo(mPath.c_str(), 0600), 0);
    expectRefused("");
    std::filesystem::remove(mPath);
    ASSERT_EQ(symlink("elsewhere", mPath.c_str()), 0);
    expectRefused("");
    EXPECT_FALSE(std::filesystem::exists(mDirectory.path("elsewhere")));
    std::filesystem::remove(mPath);
    ASSERT_EQ(setProperty("a", "1"), "");
    if (geteuid() == 0) {
        ASSERT_EQ(chown(mPath.c_str(), 65534, 65534), 0);
        expectRefused("another user");
    }
}

TEST_F(PropertyFileTest, FailedCreationLeavesNothingBehind) {
    const pid_t child = startChild([] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        return setProperty("a", "1").find("cannot write") == std::string::npos ? 1 : 0;
    });
    EXPECT_EQ(waitForChild(child), 0);
    EXPECT_TRUE(std::filesystem::is_empty(mDirectory.path()));
    EXPECT_EQ(setProperty("a", "1"), "");
}

// A writer was killed between a value and its announcement: whoever writes next tells those who wait.
TEST_F(PropertyFileTest, TheNextWriterAnnouncesWhatAKilledOneHasWritten) {
    ASSERT_EQ(setProperty("first", "1"), "");
    std::string error;
    const PropertyFile file = PropertyFile::openForWriting(mDirectory.path(), error);
    ASSERT_NE(file.writableArea(), nullptr) << error;
    const std::uint32_t serial = file.area()->serial;
    file.writableArea()->pending = 1;
    EXPECT_EQ(setProperty("second", "2"), "");
    EXPECT_EQ(file.area()->serial, serial + 2);
    EXPECT_EQ(file.area()->pending, 0U);
}

TEST_F(PropertyFileTest, ManyProcessesCreateItAtOnce) {
    for (int round = 0; round < 50; ++round) {
        std::filesystem::remove(mPath);
        int gate[2];
        ASSERT_EQ(pipe(gate), 0);
        std::vector<pid_t> children;
        for (const char* name : {"from.1", "from.2", "from.3", "from.4"}) {
            children.push_back(startChild([&gate, name] {
                close(gate[1]);
                char byte = 0;
                (void)!read(gate[0], &byte, 1);
                return setProperty(name, "here").empty() ? 0 : 1;
            }));
        }
        close(gate[0]);
        close(gate[1]);
        while (readProperty("from.1") == "(no area: )") {  // a reader finds none or a whole one
        }
        EXPECT_THAT(readProperty("from.2"), testing::AnyOf("(none)", "here"));
        for (const pid_t child : children) {
            EXPECT_EQ(waitForChild(child), 0);
        }
        for (const char* name : {"from.1", "from.2", "from.3", "from.4"}) {
            ASSERT_EQ(readProperty(name), "here");
        }
    }
}

}  // namespace
}  // namespace platform
