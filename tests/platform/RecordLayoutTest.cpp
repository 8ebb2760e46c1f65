#include <gtest/gtest.h>
#include <ostra/Ostra.h>
#include <utils/String8.h>

#include <array>
#include <cstring>

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

}  // namespace
