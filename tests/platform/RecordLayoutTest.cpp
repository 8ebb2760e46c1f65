#include <gtest/gtest.h>
#include <ostra/Ostra.h>

#include <array>
#include <cstring>

namespace {

#ifdef __arm__
// What the library's target has; the layouts of the records are asserted where they are declared.
static_assert(sizeof(void*) == 4 && sizeof(long) == 4 && sizeof(std::size_t) == 4, "pointers of 4 bytes");
static_assert(sizeof(long double) == 8, "time stamps are doubles");
#endif

// The companion library was compiled apart from us and finds a record's values by their addresses.
template <typename Vector>
void expectThreePointers(const Vector& vector) {
    std::array<const void*, 3> words{};
    static_assert(sizeof(vector) == sizeof(words), "begin, end, end of storage");
    std::memcpy(words.data(), &vector, sizeof(words));
    EXPECT_EQ(words[0], vector.data());
    EXPECT_EQ(words[1], vector.data() + vector.size());
    EXPECT_EQ(words[2], vector.data() + vector.capacity());
}

TEST(RecordLayout, VectorsAreBeginEndAndEndOfStorage) {
    Ostra::FrameDump dump{};
    dump.values.resize(11);
    dump.values.reserve(20);
    dump.renderPasses.resize(3);
    expectThreePointers(dump.values);
    expectThreePointers(dump.renderPasses);
}

TEST(RecordLayout, ANameIsOnePointerToItsText) {
    const Ostra::DumpWidgetMeta meta = {android::String8("Fps"), 1, 0};
    const char* text = nullptr;
    static_assert(sizeof(meta.name) == sizeof(text), "one pointer");
    std::memcpy(&text, static_cast<const void*>(&meta), sizeof(text));
    EXPECT_STREQ(text, "Fps");
}

TEST(RecordLayout, AFloatIsTheFirstBytesOfItsSlot) {
    Ostra::DumpValue value{};
    value.floatValue = 1.0F;
    const std::array<unsigned char, 8> expected = {0, 0, 0x80, 0x3F, 0, 0, 0, 0};
    EXPECT_EQ(std::memcmp(&value, expected.data(), expected.size()), 0);
}

}  // namespace
