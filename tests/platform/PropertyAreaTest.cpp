#include "properties/PropertyArea.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/ptrace.h>

#include <cstddef>
#include <cstring>
#include <memory>

#include "platform/ChildProcess.h"

namespace platform {
namespace {

std::unique_ptr<PropertyArea> makeArea() {
    auto area = std::make_unique<PropertyArea>();
    formatArea(*area);
    return area;
}

/// The value of a property, or "(none)".
std::string valueOf(const PropertyArea& area, const std::string& name) {
    const std::size_t number = findEntry(area, name.c_str());
    return number == PropertyArea::CAPACITY ? "(none)" : readValue(area.entries[number]).text.data();
}

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

TEST(PropertyAreaTest, SerialsAdvanceWithEveryWriteAndAreNeverZero) {
    const auto area = makeArea();
    ASSERT_EQ(writeEntry(*area, "a", "1"), "");
    prop_info& entry = area->entries[findEntry(*area, "a")];
    for (const std::uint32_t serial : {1U, 0x00ffffffU, 0x7fffffffU, UINT32_MAX - 1, UINT32_MAX}) {
        entry.serial = area->serial = serial;
        for (const std::string value : {"x", "x", "", "yy"}) {
            const std::uint32_t before = entry.serial;
            const std::uint32_t areaBefore = area->serial;
            ASSERT_EQ(writeEntry(*area, "a", value.c_str()), "");
            EXPECT_EQ(valueOf(*area, "a"), value) << "after serial " << before;
            EXPECT_EQ(readValue(entry).serial, entry.serial);
            EXPECT_TRUE(entry.serial != before && entry.serial != 0U);
            EXPECT_TRUE(area->serial != areaBefore && area->serial != 0U);
        }
    }
}

TEST(PropertyAreaTest, FullAreaRefusesNewNamesAndKeepsTheOthersAlive) {
    const auto area = makeArea();
    const auto name = [](std::size_t i) { return "property." + std::to_string(i); };
    for (std::size_t i = 0; i < PropertyArea::CAPACITY; ++i) {
        ASSERT_EQ(writeEntry(*area, name(i).c_str(), std::to_string(i).c_str()), "");
    }
    EXPECT_THAT(writeEntry(*area, "one.more", "x"), testing::HasSubstr("full"));
    EXPECT_EQ(valueOf(*area, "one.more"), "(none)");
    EXPECT_EQ(areaError(*area), "");
    EXPECT_EQ(writeEntry(*area, name(792).c_str(), "rewritten"), "");
    for (std::size_t i = 0; i <= 792; ++i) {
        ASSERT_EQ(valueOf(*area, name(i)), i == 792 ? "rewritten" : std::to_string(i));
    }
}

/// The bytes that areas of up to six properties use; the test below copies and compares no more.
constexpr std::size_t USED = offsetof(PropertyArea, entries) + 6 * sizeof(prop_info);

class InterruptedWriterTest : public testing::TestWithParam<std::pair<std::string, std::string>> {
protected:
    /// What the processes left behind find if the writer of "new" is killed now.
    void checkLeftovers() {
        if (std::memcmp(&mShared, mSeen.get(), USED) == 0) {
            return;  // not an instruction that changed anything
        }
        std::memcpy(static_cast<void*>(mSeen.get()), &mShared, USED);
        std::memcpy(static_cast<void*>(mCopy.get()), &mShared, USED);
        const auto& [name, old] = GetParam();
        const std::string value = valueOf(*mCopy, name);
        ASSERT_TRUE(value == "new" || (value == old && !mWasNew)) << value;
        mWasOld = mWasOld || value == old;
        mWasNew = value == "new";
        ASSERT_EQ(areaError(*mCopy), "");

        recoverArea(*mCopy);
        ASSERT_EQ(mCopy->pending, 0U);
        ASSERT_TRUE(!mWasNew || mCopy->serial != mFirstSerial) << "nobody was told";
        ASSERT_EQ(writeEntry(*mCopy, "next", "n"), "");
        ASSERT_EQ(writeEntry(*mCopy, name.c_str(), "newest"), "");
        ASSERT_EQ(valueOf(*mCopy, name), "newest");
        ASSERT_EQ(valueOf(*mCopy, "other") + valueOf(*mCopy, "next"), "on");
        ASSERT_EQ(areaError(*mCopy), "");
        ASSERT_EQ(mCopy->count, old == "old" ? 3U : 4U) << "an entry was lost";
    }

    PropertyArea& mShared =
        *static_cast<PropertyArea*>(mmap(nullptr, sizeof(PropertyArea), PROT_READ | PROT_WRITE,
                                         MAP_SHARED | MAP_ANONYMOUS, -1, 0));  // until the process ends
    const std::unique_ptr<PropertyArea> mSeen = makeArea();
    const std::unique_ptr<PropertyArea> mCopy = makeArea();
    std::uint32_t mFirstSerial = 0;
    bool mWasOld = false;
    bool mWasNew = false;
};

// The writer is stopped after each of its instructions.
TEST_P(InterruptedWriterTest, MayBeKilledAtAnyInstruction) {
    formatArea(mShared);
    ASSERT_EQ(writeEntry(mShared, "other", "o"), "");
    ASSERT_EQ(writeEntry(mShared, "existing", "old"), "");
    mFirstSerial = mShared.serial;
    const pid_t writer = startChild([&] {
        ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
        raise(SIGSTOP);
        return writeEntry(mShared, GetParam().first.c_str(), "new").empty() ? 0 : 1;
    });
    int status = 0;
    waitpid(writer, &status, WUNTRACED);
    if (ptrace(PTRACE_SINGLESTEP, writer, nullptr, nullptr) != 0) {
        kill(writer, SIGKILL);
        waitForChild(writer);
        GTEST_SKIP() << "processes cannot be single-stepped here";
    }
    while (waitpid(writer, &status, 0) == writer && WIFSTOPPED(status)) {
        checkLeftovers();
        if (HasFatalFailure()) {
            kill(writer, SIGKILL);
        }
        ptrace(PTRACE_SINGLESTEP, writer, nullptr, nullptr);
    }
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    EXPECT_TRUE(mWasOld && mWasNew);
}

INSTANTIATE_TEST_SUITE_P(Writes, InterruptedWriterTest,
                         testing::Values(std::pair("existing", "old"), std::pair("created", "(none)")));

}  // namespace
}  // namespace platform
