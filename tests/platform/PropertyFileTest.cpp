#include "properties/PropertyName.h"
#include "properties/PropertyWriter.h"
#include "properties/SystemProperties.h"
#include "support/ChildProcess.h"
#include "support/TemporaryDirectory.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <random>
#include <thread>

namespace platform {
namespace {

namespace fs = std::filesystem;

TEST(PropertyNameTest, AcceptsWhatBionicAccepts) {
    const std::string longest(PROPERTY_NAME_LENGTH_MAX, 'n');
    for (const std::string& name : {std::string("a"), std::string("A-z_0@x:9"), longest}) {
        EXPECT_EQ(propertyNameError(name.c_str()), "");
    }
    const std::string longer = longest + "n";
    for (const char* name : {"", ".a", "a.", "a..b", "a b", "a/b", "a=b", "a\n", "\xc3\xa4", longer.c_str(),
                             static_cast<const char*>(nullptr)}) {
        EXPECT_NE(propertyNameError(name), "") << (name == nullptr ? "(null)" : name);
    }
}

TEST(PropertyTextTest, AnyValueComesBackAndEveryWriteHasASerialOfItsOwn) {
    PropertyList list;
    std::uint32_t last = 0;
    list.serial = UINT32_MAX - 3;
    for (const std::string& value : {std::string(), std::string("  a b\t"), std::string("\\n\\x20\\"),
                                     std::string("\n\na\r\n\x7f\x01\xc3\xff"), std::string(4096, '\x01')}) {
        ASSERT_EQ(setProperty(list, "name", value), "");
        ASSERT_EQ(setProperty(list, "other", value), "");
        PropertyList read;
        ASSERT_EQ(parseProperties(formatProperties(list), read), "");
        EXPECT_EQ(read.properties["name"].value, value);
        EXPECT_EQ(read.properties["other"].serial, list.serial);
        EXPECT_TRUE(list.serial != last && list.serial != 0 && read.properties["name"].serial != list.serial);
        last = list.serial;
    }
}

TEST(PropertyTextTest, WhatWasCutOrDamagedIsRefused) {
    PropertyList list;
    setProperty(list, "first", "one");
    setProperty(list, "second", "");
    const std::string text = formatProperties(list);
    PropertyList read;
    for (std::size_t size = 0; size < text.size(); ++size) {
        EXPECT_NE(parseProperties(text.substr(0, size), read), "") << size;
        EXPECT_TRUE(read.properties.empty() && read.serial == 0);
    }
    const std::string header = "kordanix-properties version=1 serial=7 lines=";
    const std::string one = header + "1\n";
    for (const std::string& damaged :
         {std::string("kordanix-properties version=2 serial=7 lines=0\n"), header + "-1\n",
          std::string("kordanix-properties version=1 serial=0 lines=0\n"), header + "1 \na 1 b\n",
          header + "1001\n", header + "0\na 1 b\n", one + "a..b 1 c\n", one + "a 0 b\n",
          one + "a 4294967296 b\n", one + "a 1b\n", one + "a 1 \\q\n", one + "a 1 \\x0\n",
          one + "a 1 \\x00\n", header + "2\na 1 b\na 1 b\n", one + "a 1 " + std::string(4097, 'b') + "\n",
          one + std::string("a\0 1 b\n", 7), one + std::string("a 1 b\0c\n", 8)}) {
        EXPECT_NE(parseProperties(damaged, read), "") << damaged.substr(0, 80);
    }
    EXPECT_EQ(parseProperties(one + "a 1\n", read), "") << "an editor that takes blanks away";
}

class PropertyFileTest : public testing::Test {
protected:
    PropertyFileTest() { changeRuntimeDirectory(mDirectory.path()); }

    std::string readProperty(const std::string& name) const {
        PropertyList list;
        FileVersion version;
        std::string error;
        readPropertyFile(mDirectory.path(), list, version, error);
        const auto found = list.properties.find(name);
        return !error.empty() ? error : found == list.properties.end() ? "(none)" : found->second.value;
    }

    const support::TemporaryDirectory mDirectory;
    const std::string mPath = mDirectory.path("properties");
};

TEST_F(PropertyFileTest, WhatElseLiesInItsPlaceIsRefusedInWordsAndLeftAlone) {
    const std::string header = "kordanix-properties version=1 serial=7 lines=";
    ASSERT_TRUE(mDirectory.shell("echo " + header + "0 >victim"));
    const std::pair<std::string, const char*> places[] = {
        {"mkfifo properties", "is not a regular file"},
        {"ln -s victim properties", "symbolic link"},
        {"mkdir properties", "directory"},
        {"touch properties", "does not begin with"},
        {"echo " + header + "3 >properties", "was cut"},
        {"yes | head -n 1000000 >properties", "too big"},
        {"touch properties; chown 65534 properties", "another user"},
    };
    for (const auto& [commands, reason] : places) {
        if (!mDirectory.shell(commands)) {
            ASSERT_NE(geteuid(), 0U);
            continue;
        }
        mDirectory.shell("stat properties >before");
        const auto isSaid = testing::AllOf(testing::HasSubstr(mPath), testing::HasSubstr(reason));
        EXPECT_THAT(propertyAreaError(), isSaid);
        EXPECT_THAT(setProperty("a", "b"), isSaid);
        EXPECT_TRUE(mDirectory.shell("stat properties | diff before -; rm -rf properties before")) << reason;
    }
    // The file that writers make aside: what a killed one left goes, the rest is said.
    for (const char* const draft : {"ln -s victim", "echo half a li >", "mkfifo"}) {
        ASSERT_TRUE(mDirectory.shell(draft + std::string(" properties.new")));
        EXPECT_EQ(setProperty("a", draft), "");
        EXPECT_EQ(readProperty("a"), draft);
    }
    fs::create_directory(mPath + ".new");
    EXPECT_THAT(setProperty("a", "4"), testing::HasSubstr(mPath + ".new"));
    EXPECT_EQ(fs::file_size(mDirectory.path("victim")), 47U);
}

TEST_F(PropertyFileTest, FailedWritesLeaveTheOldFileAndNothingElse) {
    ASSERT_EQ(setProperty("a", "old"), "");
    const int status = support::runForked([] {
        const rlimit limit = {4096, 4096};
        setrlimit(RLIMIT_FSIZE, &limit);
        return setProperty("b", std::string(4096, 'x').c_str()).find("cannot write") == 0 ? 0 : 1;
    });
    EXPECT_EQ(status, 0) << "not ended by a signal";
    EXPECT_THAT(setProperties({{"b", "1"}, {"c..d", "2"}}), testing::HasSubstr("c..d"));
    EXPECT_THAT(setProperty("b", std::string(4097, 'x').c_str()), testing::HasSubstr("4096"));
    EXPECT_EQ(readProperty("a") + readProperty("b"), "old(none)");
    EXPECT_TRUE(mDirectory.shell("[ \"$(ls)\" = properties ]"));
    PropertyWriter writer(mDirectory.path());
    for (std::size_t i = 1; i < PROPERTY_COUNT_MAX; ++i) {
        writer.set("n" + std::to_string(i), "");
    }
    EXPECT_EQ(writer.commit(), "");
    EXPECT_THAT(writer.set("one.more", ""), testing::HasSubstr("1000"));
}

TEST_F(PropertyFileTest, WriterWaitsForTheLockOnlySoLongAndSaysForWhom) {
    const PropertyLock lock(mDirectory.path(), std::chrono::seconds(0));
    ASSERT_TRUE(lock.isHeld());
    const PropertyWriter writer(mDirectory.path(), std::chrono::milliseconds(20));
    EXPECT_TRUE(writer.isBusy());
    EXPECT_THAT(writer.error(), testing::HasSubstr("process " + std::to_string(getpid()) + ' '));
    EXPECT_THAT(writer.error(), testing::HasSubstr(mDirectory.path()));
}

TEST_F(PropertyFileTest, KilledWritersLeaveTheOldFileOrTheNew) {
    ASSERT_EQ(setProperties({{"a", "0"}, {"b", "0"}}), "");
    std::mt19937 random(5);
    for (int round = 0; round < 300; ++round) {
        support::ChildProcess writer([&] {
            for (int i = round;; ++i) {
                const std::string value(static_cast<std::size_t>(i % 4000), 'x');
                setProperties({{"a", value}, {"b", value}});
            }
            return 0;
        });
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 1500));
        writer.kill(SIGKILL);
        ASSERT_EQ(writer.wait(), -SIGKILL);
        ASSERT_EQ(propertyAreaError(), "");
        ASSERT_EQ(readProperty("a"), readProperty("b"));
        ASSERT_EQ(setProperty("own", std::to_string(round).c_str()), "");
    }
}

// By the time readers know a new file, even if it is as long as the old one and has got its inode.
TEST_F(PropertyFileTest, ANewFileIsAlwaysLaterThanTheOneBefore) {
    ASSERT_EQ(setProperty("a", "1"), "");
    const timespec future[] = {{2000000000, 999999999}, {2000000000, 999999999}};
    ASSERT_EQ(utimensat(AT_FDCWD, mPath.c_str(), future, 0), 0);
    ASSERT_EQ(setProperty("a", "2"), "");
    const timespec time = lookAtPropertyFile(mDirectory.path()).time;
    EXPECT_EQ(std::pair(time.tv_sec, time.tv_nsec), std::pair(time_t{2000000001}, 0L));
}

}  // namespace
}  // namespace platform
