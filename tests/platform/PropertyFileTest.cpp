#include "properties/PropertyFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <chrono>
#include <fstream>
#include <iterator>
#include <random>
#include <thread>

#include "platform/ChildProcess.h"
#include "platform/TemporaryDirectory.h"
#include "properties/SystemProperties.h"

namespace platform {
namespace {

/// A runtime directory of the test's own, through files of its own: nothing here is mapped for good.
class PropertyFileTest : public testing::Test {
protected:
    PropertyFileTest() { setenv("KORDANIX_RUNTIME_DIR", mDirectory.path().c_str(), 1); }
    ~PropertyFileTest() override { unsetenv("KORDANIX_RUNTIME_DIR"); }

    std::string readProperty(const char* name) const {
        std::string error;
        const PropertyFile file = PropertyFile::openForReading(mDirectory.path(), error);
        if (file.area() == nullptr) {
            return "(no area: " + error + ")";
        }
        const std::size_t number = findEntry(*file.area(), name);
        return number == PropertyArea::CAPACITY ? "(none)"
                                                : readValue(file.area()->entries[number]).text.data();
    }

    std::string readFile() const {
        std::ifstream file(mPath, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    void writeFile(const std::string& bytes) const {
        std::ofstream(mPath, std::ios::binary | std::ios::trunc) << bytes;
    }

    /// Expects that neither readers nor writers use what lies in the file's place, and that they say why.
    void expectRefused(const std::string& reason) const {
        std::string error;
        EXPECT_EQ(PropertyFile::openForReading(mDirectory.path(), error).area(), nullptr);
        EXPECT_THAT(error, testing::HasSubstr(reason));
        EXPECT_THAT(error, testing::HasSubstr(mPath));
        EXPECT_THAT(setProperty("a", "b"), testing::HasSubstr(mPath));
        EXPECT_EQ(propertyAreaError(), error);
    }

    const TemporaryDirectory mDirectory;
    const std::string mPath = mDirectory.path("properties");
};

TEST_F(PropertyFileTest, RefusesWhatIsNotAnArea) {
    ASSERT_EQ(setProperty("debug.first", "1"), "");
    ASSERT_EQ(setProperty("debug.second", "2"), "");
    const std::string sound = readFile();
    ASSERT_EQ(sound.size(), PropertyArea::SIZE);

    std::string noise(PropertyArea::SIZE, '\0');
    std::mt19937 random(1);
    for (char& byte : noise) {
        byte = static_cast<char>(random());
    }
    const std::string foreign = "is not a property area";
    const std::vector<std::pair<std::string, std::string>> files = {
        {"", foreign},          {"text\n", foreign}, {sound.substr(0, PropertyArea::SIZE - 1), foreign},
        {sound + "x", foreign}, {noise, foreign},    {std::string(PropertyArea::SIZE, '\0'), foreign},
    };
    for (const auto& [bytes, reason] : files) {
        writeFile(bytes);
        expectRefused(reason);
        EXPECT_EQ(readFile(), bytes) << "somebody else's file was changed";
    }
}

TEST_F(PropertyFileTest, RefusesADamagedArea) {
    ASSERT_EQ(setProperty("debug.first", "1"), "");
    ASSERT_EQ(setProperty("debug.second", "2"), "");
    const std::string sound = readFile();
    const std::size_t entry = offsetof(PropertyArea, entries);
    const std::size_t used = offsetof(PropertyArea, index) +
                             hashName("debug.first") % PropertyArea::INDEX_SIZE * sizeof(std::uint32_t);
    struct Damage {
        const char* what;
        std::size_t at;
        std::uint32_t word;
        const char* reason;
    };
    for (const Damage& damage : {
             Damage{"magic", 0, 1, "is not a property area"},
             Damage{"version", 4, 99, "another version"},
             Damage{"size", 8, 4096, "another version"},
             Damage{"area serial", offsetof(PropertyArea, serial), 0, "header"},
             Damage{"count too high", offsetof(PropertyArea, count), 794, "header"},
             Damage{"count too low", offsetof(PropertyArea, count), 1, "header"},
             Damage{"count of empty entries", offsetof(PropertyArea, count), 10, "entry 2"},
             Damage{"pending", offsetof(PropertyArea, pending), UINT32_MAX, "header"},
             Damage{"index out of range", used, UINT32_MAX, "header"},
             Damage{"index leads to another entry", used, 2, "entry 0"},
             Damage{"index lost an entry", used, 0, "entry 0"},
             Damage{"serial", entry, 0, "entry 0"},
             Damage{"hash", entry + offsetof(prop_info, hash), 7, "entry 0"},
             Damage{"name", entry + offsetof(prop_info, name), 0x2e2e6161, "entry 0"},
             Damage{"end of name", entry + offsetof(prop_info, name) + 124, 0x61616161, "entry 0"},
         }) {
        SCOPED_TRACE(damage.what);
        std::string bytes = sound;
        bytes.replace(damage.at, sizeof(damage.word), reinterpret_cast<const char*>(&damage.word),
                      sizeof(damage.word));
        writeFile(bytes);
        expectRefused(damage.reason);
        EXPECT_EQ(readFile(), bytes);
    }
    writeFile(sound);
    EXPECT_EQ(readProperty("debug.second"), "2");
}

TEST_F(PropertyFileTest, RefusesOtherThingsInItsPlace) {
    ASSERT_EQ(mkfifo(mPath.c_str(), 0600), 0);
    expectRefused("");
    ASSERT_EQ(unlink(mPath.c_str()), 0);
    ASSERT_EQ(mkdir(mPath.c_str(), 0700), 0);
    expectRefused("");
    ASSERT_EQ(rmdir(mPath.c_str()), 0);
    ASSERT_EQ(symlink("elsewhere", mPath.c_str()), 0);
    expectRefused("");
    EXPECT_FALSE(std::filesystem::exists(mDirectory.path("elsewhere")));
    ASSERT_EQ(unlink(mPath.c_str()), 0);
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
    EXPECT_EQ(readProperty("a"), "1");
}

TEST_F(PropertyFileTest, ReadOnlyDirectorySaysSo) {
    if (geteuid() == 0) {
        ASSERT_EQ(chown(mDirectory.path().c_str(), 65534, 65534), 0);
    }
    ASSERT_EQ(chmod(mDirectory.path().c_str(), 0500), 0);
    const pid_t child = startChild([] {
        if (geteuid() == 0 && seteuid(65534) != 0) {
            return 2;
        }
        return setProperty("a", "1").find("cannot create") == std::string::npos ? 1 : 0;
    });
    EXPECT_EQ(waitForChild(child), 0);
    chmod(mDirectory.path().c_str(), 0700);
}

TEST_F(PropertyFileTest, ManyProcessesCreateItAtOnce) {
    for (int round = 0; round < 20; ++round) {
        std::filesystem::remove(mPath);
        std::vector<pid_t> children;
        int gate[2];
        ASSERT_EQ(pipe(gate), 0);
        for (int i = 0; i < 4; ++i) {
            children.push_back(startChild([&gate, i] {
                close(gate[1]);
                char byte = 0;
                (void)!read(gate[0], &byte, 1);
                return setProperty(("from." + std::to_string(i)).c_str(), "here").empty() ? 0 : 1;
            }));
        }
        close(gate[0]);
        close(gate[1]);
        for (int i = 0; i < 4; ++i) {
            EXPECT_EQ(waitForChild(children[static_cast<std::size_t>(i)]), 0);
        }
        for (int i = 0; i < 4; ++i) {
            ASSERT_EQ(readProperty(("from." + std::to_string(i)).c_str()), "here");
        }
    }
}

TEST_F(PropertyFileTest, WriterKilledAtRandomInstants) {
    ASSERT_EQ(setProperty("victim", "0"), "");
    std::mt19937 random(1);
    for (int round = 0; round < 300; ++round) {
        if (round % 50 == 0) {
            std::filesystem::remove(mPath);  // some of the writers die while they create it
        }
        const pid_t writer = startChild([round] {
            for (int i = 0;; ++i) {
                setProperty("victim", std::string(91, static_cast<char>('a' + i % 26)).c_str());
                setProperty(("round." + std::to_string(round) + (i % 2 == 0 ? ".even" : ".odd")).c_str(),
                            "x");
            }
            return 0;
        });
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 1500));
        kill(writer, SIGKILL);
        ASSERT_EQ(waitForChild(writer), -SIGKILL);

        ASSERT_EQ(propertyAreaError(), "");
        const std::string value = readProperty("victim");
        if (value.size() == 91) {
            ASSERT_EQ(value, std::string(91, value[0])) << "torn";
        }
        ASSERT_EQ(setProperty("victim", std::to_string(round).c_str()), "");
        ASSERT_EQ(readProperty("victim"), std::to_string(round));
    }
}

}  // namespace
}  // namespace platform
