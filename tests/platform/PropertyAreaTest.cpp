#include "properties/PropertyArea.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/ptrace.h>

#include <cstddef>
#include <cstring>
#include <functional>
#include <memory>
#include <random>
#include <set>

#include "platform/ChildProcess.h"

namespace platform {
namespace {

std::unique_ptr<PropertyArea> makeArea() {
    auto area = std::make_unique<PropertyArea>();
    formatArea(*area);
    return area;
}

/// The bytes that areas of up to six properties use; the tests below copy and compare no more.
constexpr std::size_t USED = offsetof(PropertyArea, entries) + 6 * sizeof(prop_info);

void copyArea(PropertyArea& to, const PropertyArea& from) {
    std::memcpy(static_cast<void*>(&to), static_cast<const void*>(&from), USED);
}

/// The value of a property, or "(none)".
std::string valueOf(const PropertyArea& area, const std::string& name) {
    const std::size_t number = findEntry(area, name.c_str());
    return number == PropertyArea::CAPACITY ? "(none)" : readValue(area.entries[number]).text.data();
}

TEST(PropertyNameTest, AcceptsWhatBionicAccepts) {
    const std::string longest(PROPERTY_NAME_LENGTH_MAX, 'n');
    for (const std::string& name : {std::string("a"), std::string("debug.kordanix.widget_fps"),
                                    std::string("A-z_0@x:9"), std::string("-"), longest}) {
        EXPECT_EQ(propertyNameError(name.c_str()), "") << name;
    }
    for (const std::string& name :
         {std::string(), std::string("."), std::string(".a"), std::string("a."), std::string("a..b"),
          std::string("a b"), std::string("a/b"), std::string("a=b"), std::string("a\n"),
          std::string("\xc3\xa4"), std::string("a*"), longest + "n"}) {
        EXPECT_NE(propertyNameError(name.c_str()), "") << name;
    }
    EXPECT_NE(propertyNameError(nullptr), "");
}

TEST(PropertyAreaTest, SerialsAdvanceWithEveryWriteAndAreNeverZero) {
    const auto area = makeArea();
    ASSERT_EQ(writeEntry(*area, "a", "1"), "");
    prop_info& entry = area->entries[findEntry(*area, "a")];
    for (const std::uint32_t serial : {1U, 0x00ffffffU, 0x7fffffffU, UINT32_MAX - 1, UINT32_MAX}) {
        entry.serial = serial;
        area->serial = serial;
        for (const std::string value : {"x", "x", "", "yy"}) {
            const std::uint32_t before = entry.serial;
            const std::uint32_t areaBefore = area->serial;
            ASSERT_EQ(writeEntry(*area, "a", value.c_str()), "");
            EXPECT_EQ(valueOf(*area, "a"), value) << "after serial " << before;
            EXPECT_EQ(readValue(entry).serial, entry.serial);
            EXPECT_NE(entry.serial, before);
            EXPECT_NE(entry.serial, 0U);
            EXPECT_NE(area->serial, areaBefore);
            EXPECT_NE(area->serial, 0U);
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
    for (std::size_t i = 0; i < 792; ++i) {
        ASSERT_EQ(valueOf(*area, name(i)), std::to_string(i));
    }
    EXPECT_EQ(valueOf(*area, name(792)), "rewritten");
}

TEST(PropertyAreaTest, NamesOfOneHashDoNotMeet) {
    // Every name starts its search at one of few places, so that all of them collide.
    const auto area = makeArea();
    std::set<std::string> names;
    for (int i = 0; names.size() < 40; ++i) {
        const std::string name = "n" + std::to_string(i);
        if (hashName(name.c_str()) % PropertyArea::INDEX_SIZE > PropertyArea::INDEX_SIZE - 40) {
            names.insert(name);
        }
    }
    for (const std::string& name : names) {
        ASSERT_EQ(valueOf(*area, name), "(none)");
        ASSERT_EQ(writeEntry(*area, name.c_str(), name.c_str()), "");
    }
    for (const std::string& name : names) {
        EXPECT_EQ(valueOf(*area, name), name);
    }
    EXPECT_EQ(areaError(*area), "");
}

TEST(PropertyAreaTest, AnyFlippedBitIsHarmless) {
    const auto sound = makeArea();
    for (const char* name : {"first", "second", "ro.third"}) {
        ASSERT_EQ(writeEntry(*sound, name, "value"), "");
    }
    const auto area = makeArea();
    std::mt19937 random(1);
    for (int round = 0; round < 3000; ++round) {
        copyArea(*area, *sound);
        // The index is large: left to chance, few flips would hit the header and the entries.
        const std::size_t indexEnd = offsetof(PropertyArea, entries);
        const std::size_t byte = round % 4 == 0   ? random() % offsetof(PropertyArea, index)
                                 : round % 4 == 1 ? random() % USED
                                                  : indexEnd + random() % (USED - indexEnd);
        reinterpret_cast<unsigned char*>(area.get())[byte] ^= static_cast<unsigned char>(1U << random() % 8);
        for (const char* name : {"first", "second", "ro.third", "absent"}) {
            EXPECT_LT(valueOf(*area, name).size(), std::size_t{PROP_VALUE_MAX});
        }
        if (areaError(*area).empty()) {
            recoverArea(*area);
            ASSERT_EQ(writeEntry(*area, "second", "new"), "") << "byte " << byte;
            ASSERT_EQ(valueOf(*area, "second"), "new") << "byte " << byte;
            ASSERT_EQ(areaError(*area), "") << "byte " << byte;
        }
    }
}

/// A writer that is stopped after each of its instructions.
class InterruptedWriterTest : public testing::Test {
protected:
    InterruptedWriterTest()
        : mShared(*static_cast<PropertyArea*>(mmap(nullptr, sizeof(PropertyArea), PROT_READ | PROT_WRITE,
                                                   MAP_SHARED | MAP_ANONYMOUS, -1, 0))),
          mSeen(makeArea()),
          mCopy(makeArea()) {
        formatArea(mShared);
        EXPECT_EQ(writeEntry(mShared, "other", "o"), "");
        EXPECT_EQ(writeEntry(mShared, "existing", "old"), "");
    }
    ~InterruptedWriterTest() override { munmap(&mShared, sizeof(mShared)); }

    /// Single-steps a process that writes "new" under that name and calls `check` after each instruction.
    void step(const char* name, const std::function<void()>& check) {
        const pid_t writer = startChild([&] {
            if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) {
                return 2;
            }
            raise(SIGSTOP);
            return writeEntry(mShared, name, "new").empty() ? 0 : 1;
        });
        int status = 0;
        ASSERT_EQ(waitpid(writer, &status, 0), writer);
        if (!WIFSTOPPED(status) || ptrace(PTRACE_SINGLESTEP, writer, nullptr, nullptr) != 0) {
            kill(writer, SIGKILL);
            waitpid(writer, &status, 0);
            GTEST_SKIP() << "processes cannot be single-stepped here";
        }
        while (waitpid(writer, &status, 0) == writer && WIFSTOPPED(status)) {
            check();
            if (HasFatalFailure()) {
                kill(writer, SIGKILL);
            }
            ptrace(PTRACE_SINGLESTEP, writer, nullptr, nullptr);
        }
        ASSERT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
        EXPECT_EQ(valueOf(mShared, name), "new");
    }

    /// What the processes left behind find if the writer is killed now.
    void checkLeftovers(const std::string& name, const std::string& old) {
        if (std::memcmp(&mShared, mSeen.get(), USED) == 0) {
            return;  // not an instruction that changed anything
        }
        copyArea(*mSeen, mShared);
        copyArea(*mCopy, mShared);
        const std::uint32_t areaSerial = mCopy->serial;
        const std::string value = valueOf(*mCopy, name);
        ASSERT_TRUE(value == old || value == "new") << value;
        mWasOld = mWasOld || value == old;
        ASSERT_TRUE(!mWasNew || value == "new") << "the new value was lost again";
        mWasNew = mWasNew || value == "new";
        ASSERT_EQ(areaError(*mCopy), "");
        ASSERT_EQ(valueOf(*mCopy, "other"), "o");

        const bool isAnnounced = areaSerial != mFirstSerial;
        recoverArea(*mCopy);
        ASSERT_EQ(mCopy->pending, 0U);
        ASSERT_TRUE(value == old || isAnnounced || mCopy->serial != areaSerial) << "nobody was told";
        ASSERT_EQ(writeEntry(*mCopy, "next", "n"), "");
        ASSERT_EQ(writeEntry(*mCopy, name.c_str(), "newest"), "");
        ASSERT_EQ(valueOf(*mCopy, name), "newest");
        ASSERT_EQ(valueOf(*mCopy, "next"), "n");
        ASSERT_EQ(areaError(*mCopy), "");
        ASSERT_EQ(mCopy->count, 4U - (old == "old" ? 1U : 0U)) << "an entry was lost";
    }

    PropertyArea& mShared;
    std::unique_ptr<PropertyArea> mSeen;
    std::unique_ptr<PropertyArea> mCopy;
    std::uint32_t mFirstSerial = 3;
    bool mWasOld = false;
    bool mWasNew = false;
};

TEST_F(InterruptedWriterTest, KilledAtAnyInstructionOfAWrite) {
    ASSERT_EQ(mShared.serial, mFirstSerial);
    step("existing", [this] { checkLeftovers("existing", "old"); });
    EXPECT_TRUE(IsSkipped() || (mWasOld && mWasNew));
}

TEST_F(InterruptedWriterTest, KilledAtAnyInstructionOfACreation) {
    step("created", [this] { checkLeftovers("created", "(none)"); });
    EXPECT_TRUE(IsSkipped() || (mWasOld && mWasNew));
}

}  // namespace
}  // namespace platform
