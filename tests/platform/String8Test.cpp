#include <gtest/gtest.h>
#include <utils/String8.h>

#include <utility>

namespace android {
namespace {

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
        EXPECT_STREQ(empty.string(), "");
        EXPECT_EQ(empty.length(), 0U);
    }
    EXPECT_TRUE(String8("a") < String8("\xc3\xa4") && String8("A") < String8("AB")) << "by unsigned bytes";
}

}  // namespace
}  // namespace android
