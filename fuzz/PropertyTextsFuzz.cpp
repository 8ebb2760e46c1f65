// The texts of properties, of every type.

#include "ByteReader.h"
#include "Check.h"
#include "core/RenderingApiType.h"
#include "core/SysPropWatcher.h"
#include "doubles/FakeProperties.h"
#include "gui/WidgetsSettings.h"

#include <cstdint>
#include <limits>
#include <string>

namespace {

/// Returns the number at the beginning of a text, after blanks: clamped to 64 bits, then its low 32 bits.
std::int32_t expectedNumber(const std::string& text, std::int32_t defaultValue) {
    std::size_t i = text.find_first_not_of(" \t\n\v\f\r");
    if (i == std::string::npos) {
        return defaultValue;
    }
    const bool isNegative = text[i] == '-';
    if (text[i] == '-' || text[i] == '+') {
        ++i;
    }
    if (i == text.size() || text[i] < '0' || text[i] > '9') {
        return defaultValue;
    }
    const std::uint64_t most =
        static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()) + (isNegative ? 1U : 0U);
    std::uint64_t number = 0;
    for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
        const auto digit = static_cast<std::uint64_t>(text[i] - '0');
        number = number > (most - digit) / 10 ? most : number * 10 + digit;
    }
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(isNegative ? 0 - number : number));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using Position = gui::WidgetsSettings::Position;
    static auto& boolProp = SysPropWatcher::createSysProp<bool>("fuzz.bool", false);
    static auto& intProp = SysPropWatcher::createSysProp<int>("fuzz.int", 0);
    static auto& apiProp = SysPropWatcher::createSysProp("fuzz.api", core::RenderingApiType{});
    static auto& positionProp = SysPropWatcher::createSysProp("fuzz.position", Position::TOP_LEFT);
    static auto& stringProp = SysPropWatcher::createSysProp<std::string>("fuzz.string", {});

    fuzz::ByteReader reader(data, size);
    boolProp.mDefault = reader.flag();
    intProp.mDefault = static_cast<std::int32_t>(reader.word());
    apiProp.mDefault = intProp.mDefault;
    positionProp.mDefault = intProp.mDefault;
    const std::string bytes = reader.rest();
    const std::string text = bytes.c_str();  // the part that a reader of zero-terminated text sees
    for (const SysPropBase* prop :
         {static_cast<SysPropBase*>(&boolProp), static_cast<SysPropBase*>(&intProp),
          static_cast<SysPropBase*>(&apiProp), static_cast<SysPropBase*>(&positionProp),
          static_cast<SysPropBase*>(&stringProp)}) {
        doubles::setProperty(prop->mName, bytes);
    }
    SysPropWatcher::forceReadAllProps();

    FUZZ_CHECK(boolProp.getValue() == (text == "true" || (text != "false" && boolProp.mDefault)));
    const std::int32_t number = expectedNumber(text, intProp.mDefault);
    FUZZ_CHECK(intProp.getValue() == number);
    FUZZ_CHECK(static_cast<std::int32_t>(apiProp.getValue()) == number);
    FUZZ_CHECK(static_cast<std::int32_t>(positionProp.getValue()) == number);
    FUZZ_CHECK(stringProp.getValue() == text);
    return 0;
}
