#include <gtest/gtest.h>
#include <ostra/Ostra.h>
#include <utils/String8.h>

#include <array>
#include <cstring>
#include <utility>

namespace {

#ifdef __arm__
// What the library's target has; the layouts of the records are asserted where they are declared.
static_assert(sizeof(void*) == 4 && sizeof(long) == 4 && sizeof(std::size_t) == 4, "pointers of 4 bytes");
static_assert(sizeof(long double) == 8, "time stamps are doubles");
#endif

// The companion library was compiled apart from us and finds a record's values by their addresses.
TEST(RecordLayout, VectorsNamesAndFloatsAreWhereTheOtherSideLooks) {
    Ostra::FrameDump dump{};
    dump.values.resize(11);
    dump.values.reserve(20);
    const std::array<const void*, 3> expected{dump.values.data(), dump.values.data() + 11,
                                              dump.values.data() + dump.values.capacity()};
    std::array<const void*, 3> words{};
    static_assert(sizeof(dump.values) == sizeof(words), "begin, end, end of storage");
    std::memcpy(words.data(), &dump.values, sizeof(words));
    EXPECT_EQ(words, expected);

    const Ostra::DumpWidgetMeta meta = {android::String8("Fps"), 1, 0};
    std::memcpy(words.data(), static_cast<const void*>(&meta), sizeof(void*));
    EXPECT_STREQ(static_cast<const char*>(words[0]), "Fps");

    Ostra::DumpValue value{};
    value.floatValue = 1.0F;
    EXPECT_EQ(std::memcmp(&value, "\0\0\x80\x3F\0\0\0\0", 8), 0);
}

using android::String8;

TEST(String8Test, IsAValueInOnePointerThatIsNeverNull) {
    static_assert(sizeof(String8) == sizeof(void*), "part of a binary contract");
    const String8 original("fps");
    String8 copy(original);
    String8 assigned("something else");
    assigned = original;
    copy = "changed";
    EXPECT_STREQ(copy.string(), "changed");
    EXPECT_EQ(assigned, original);
    EXPECT_NE(assigned.string(), original.string()) << "shared bytes";
    EXPECT_STREQ(String8(std::move(copy)).string(), "changed");
    for (const String8& empty : {String8(), String8(""), String8(nullptr), copy}) {
        EXPECT_TRUE(*empty.string() == '\0' && empty.length() == 0);
    }
    EXPECT_TRUE(String8("a") < String8("\xc3\xa4") && String8("A") < String8("AB")) << "by unsigned bytes";
}

}  // namespace
