#include <gtest/gtest.h>
#include <utils/String8.h>

#include <string>
#include <utility>
#include <vector>

namespace android {
namespace {

TEST(String8Test, IsAValueInOnePointer) {
    static_assert(sizeof(String8) == sizeof(void*), "part of a binary contract");
    std::string source = "fps";
    const String8 original(source.c_str());
    source[0] = 'X';
    String8 copy(original);
    String8 assigned("something else");
    assigned = original;
    copy = "changed";
    assigned = *&assigned;
    EXPECT_STREQ(original.string(), "fps");
    EXPECT_STREQ(copy.c_str(), "changed");
    EXPECT_EQ(assigned, original);
    EXPECT_NE(assigned.string(), original.string()) << "shared bytes";
    EXPECT_EQ(original.size(), 3U);
}

TEST(String8Test, IsNeverNull) {
    String8 moved("text");
    const String8 target(std::move(moved));
    EXPECT_STREQ(target.string(), "text");
    for (const String8& empty : {String8(), String8(""), String8(nullptr), moved}) {
        ASSERT_NE(empty.string(), nullptr);
        EXPECT_TRUE(empty.isEmpty());
        EXPECT_EQ(empty.length(), 0U);
        EXPECT_EQ(empty, String8());
    }
    moved = "again";
    moved = String8("moved in");
    EXPECT_STREQ(moved.string(), "moved in");
}

TEST(String8Test, OrdersByUnsignedBytes) {
    const std::vector<String8> ordered = {"", "A", "AB", "a", "\xc3\xa4"};
    for (std::size_t i = 0; i < ordered.size(); ++i) {
        for (std::size_t j = 0; j < ordered.size(); ++j) {
            EXPECT_EQ(ordered[i] < ordered[j], i < j);
            EXPECT_EQ(ordered[i] == ordered[j], i == j);
        }
    }
}

}  // namespace
}  // namespace android
