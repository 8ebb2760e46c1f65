#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <limits>
#include <string>

namespace fuzz {

/// Turns a fuzzer's bytes into values; after their end everything is 0 or empty. Read one value per statement
/// (or between braces), because compilers evaluate a call's arguments in different orders.
class ByteReader {
public:
    ByteReader(const std::uint8_t* data, std::size_t size) : mData(data), mLeft(size) {}

    bool isEmpty() const { return mLeft == 0; }

    std::uint8_t byte() { return raw<std::uint8_t>(); }
    std::uint32_t word() { return raw<std::uint32_t>(); }
    std::uint64_t longWord() { return raw<std::uint64_t>(); }
    bool flag() { return (byte() & 1U) != 0; }

    /// Returns 0 to `most`, inclusive.
    std::uint32_t upTo(std::uint32_t most) {
        const std::uint32_t number = most < 256 ? byte() : raw<std::uint16_t>();
        return number % (most + 1);
    }

    /// Returns any number, NaN and infinities too; small and special ones more often than others.
    double number() {
        switch (upTo(5)) {
            case 0:
                return SPECIAL[upTo(static_cast<std::uint32_t>(SPECIAL.size()) - 1)];
            case 1:
                return fraction();
            case 2:
                return static_cast<std::int8_t>(byte());
            case 3:
                return raw<std::int16_t>() / 8.0;
            case 4:
                return static_cast<double>(raw<float>());
            default:
                return raw<double>();
        }
    }

    /// Does the same in single precision.
    float singleNumber() { return static_cast<float>(number()); }

    /// 0 to 1.
    float fraction() { return static_cast<float>(raw<std::uint16_t>()) / 65535.0F; }

    /// Returns any bytes, at most `most` of them.
    std::string text(std::uint32_t most) { return take(upTo(most)); }

    /// Returns all remaining bytes.
    std::string rest() { return take(mLeft); }

private:
    static constexpr std::array<double, 22> SPECIAL = {
        0.0,
        -0.0,
        1.0,
        -1.0,
        0.01,
        100.0,
        std::numeric_limits<double>::quiet_NaN(),
        std::numeric_limits<double>::infinity(),
        -std::numeric_limits<double>::infinity(),
        std::numeric_limits<double>::max(),
        std::numeric_limits<double>::lowest(),
        std::numeric_limits<double>::min(),
        std::numeric_limits<double>::denorm_min(),
        static_cast<double>(std::numeric_limits<float>::max()),
        static_cast<double>(std::numeric_limits<float>::lowest()),
        static_cast<double>(std::numeric_limits<float>::min()),
        static_cast<double>(std::numeric_limits<float>::denorm_min()),
        2147483648.0,
        4294967296.0,
        9223372036854775808.0,
        18446744073709551616.0,
        1.7e12,  // a wall clock in milliseconds
    };

    template <typename T>
    T raw() {
        T value{};
        const std::size_t size = std::min(sizeof(T), mLeft);
        if (size > 0) {
            std::memcpy(&value, mData, size);
        }
        skip(size);
        return value;
    }

    std::string take(std::size_t size) {
        size = std::min(size, mLeft);
        std::string bytes(reinterpret_cast<const char*>(mData), size);
        skip(size);
        return bytes;
    }

    void skip(std::size_t size) {
        mData += size;
        mLeft -= size;
    }

    const std::uint8_t* mData;
    std::size_t mLeft;
};

}  // namespace fuzz
