// The property area's file: foreign, cut, with flipped bits, or changed behind the back of its users.

#include "ByteReader.h"
#include "Check.h"
#include "platform/TemporaryDirectory.h"
#include "properties/PropertyArea.h"
#include "properties/PropertyFile.h"
#include "properties/SystemProperties.h"

#include <fcntl.h>
#include <sys/system_properties.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

namespace {

using platform::PropertyArea;

constexpr const char* NAMES[] = {"debug.kordanix.status", "debug.kordanix.proc", "ro.product.model", "a",
                                 "never.written"};

/// Some of the names and others, so that the index has collisions and is never empty for long.
std::string nameFrom(fuzz::ByteReader& reader) {
    const std::uint32_t choice = reader.upTo(7);
    return choice < std::size(NAMES) ? NAMES[choice] : "n." + std::to_string(reader.upTo(1000));
}

void putText(PropertyArea& area, std::size_t offset, const std::string& bytes) {
    auto* const target = reinterpret_cast<unsigned char*>(&area) + offset;
    std::memcpy(target, bytes.data(), std::min(bytes.size(), sizeof(area) - offset));
}

/// Damages a sound area in a few places, those that mean most more often than others.
void damage(PropertyArea& area, fuzz::ByteReader& reader) {
    const std::uint32_t edits = reader.upTo(15);
    for (std::uint32_t i = 0; i < edits; ++i) {
        std::size_t offset = reader.word() % sizeof(area);
        switch (reader.upTo(3)) {
            case 0:
                offset %= offsetof(PropertyArea, index);
                break;
            case 1:
                offset = offsetof(PropertyArea, index) + offset % sizeof(area.index);
                break;
            case 2:
                offset = offsetof(PropertyArea, entries) + offset % (4 * sizeof(prop_info));
                break;
            default:
                break;
        }
        if (reader.flag()) {
            reinterpret_cast<unsigned char*>(&area)[offset] ^=
                static_cast<unsigned char>(1U << reader.upTo(7));
        } else {
            putText(area, offset, reader.text(40));
        }
    }
}

void checkValue(const prop_info& entry) {
    const platform::PropertyValue value = platform::readValue(entry);
    FUZZ_CHECK(value.text.back() == '\0');
}

/// Look-ups of any bytes must end and stay inside.
void readEverything(const PropertyArea& area) {
    for (const char* const name : NAMES) {
        const std::size_t found = platform::findEntry(area, name);
        FUZZ_CHECK(found <= PropertyArea::CAPACITY);
        if (found < PropertyArea::CAPACITY) {
            checkValue(area.entries[found]);
        }
    }
    for (const prop_info& entry : area.entries) {
        checkValue(entry);
    }
}

void writeFile(const std::string& directory, const PropertyArea& area, std::size_t size) {
    const int file = open(platform::PropertyFile::path(directory).c_str(), O_WRONLY | O_CREAT, 0600);
    FUZZ_CHECK(file >= 0);
    FUZZ_CHECK(pwrite(file, &area, std::min(size, sizeof(area)), 0) ==
               static_cast<ssize_t>(std::min(size, sizeof(area))));
    FUZZ_CHECK(ftruncate(file, static_cast<off_t>(size)) == 0);
    close(file);
}

/// What those who use an area rely on.
void checkAccepted(const PropertyArea& area) {
    FUZZ_CHECK(area.serial != 0 && area.count <= PropertyArea::CAPACITY);
    for (std::uint32_t i = 0; i < area.count; ++i) {
        FUZZ_CHECK(area.entries[i].serial != 0);
        FUZZ_CHECK(area.entries[i].name.back() == '\0');
    }
}

/// Opens the file as users do. What is accepted must also take a property and give it back.
void openAndWrite(const std::string& directory, const PropertyArea& area, std::size_t size,
                  const std::string& name, const std::string& value) {
    writeFile(directory, area, size);
    std::string error;
    const platform::PropertyFile forReading = platform::PropertyFile::openForReading(directory, error);
    FUZZ_CHECK((forReading.area() != nullptr) == error.empty());
    const std::string expected =
        size == sizeof(area) ? platform::areaError(area) : std::string("another size");
    FUZZ_CHECK(error.empty() == expected.empty());

    if (forReading.area() != nullptr) {
        checkAccepted(*forReading.area());
    }

    const platform::PropertyFile file = platform::PropertyFile::openForWriting(directory, error);
    PropertyArea* const written = file.writableArea();
    FUZZ_CHECK((written != nullptr) == error.empty());
    if (written == nullptr) {
        return;
    }
    platform::recoverArea(*written);
    FUZZ_CHECK(platform::areaError(*written).empty());
    if (!platform::writeEntry(*written, name.c_str(), value.c_str()).empty()) {
        return;
    }
    FUZZ_CHECK(platform::areaError(*written).empty());
    const std::size_t entry = platform::findEntry(*forReading.area(), name.c_str());
    FUZZ_CHECK(entry < PropertyArea::CAPACITY);
    FUZZ_CHECK(value == platform::readValue(forReading.area()->entries[entry]).text.data());
}

/// The area that this process has mapped, with other bytes in it than when it was accepted.
void changeBehindUsers(const std::string& directory, const PropertyArea& area) {
    const auto read = [](const prop_info* pi, void*) {
        __system_property_read_callback(
            pi,
            [](void*, const char* name, const char* text, std::uint32_t) {
                FUZZ_CHECK(std::strlen(name) <= platform::PROPERTY_NAME_LENGTH_MAX);
                FUZZ_CHECK(std::strlen(text) < PROP_VALUE_MAX);
            },
            nullptr);
        static_cast<void>(__system_property_serial(pi));
        const timespec atOnce = {};
        std::uint32_t serial = 0;
        static_cast<void>(__system_property_wait(pi, 1, &serial, &atOnce));
    };
    writeFile(directory, area, sizeof(area));
    for (const char* const name : NAMES) {
        char value[PROP_VALUE_MAX];
        const int length = __system_property_get(name, value);
        FUZZ_CHECK(length >= 0 && length < PROP_VALUE_MAX &&
                   std::strlen(value) == static_cast<std::size_t>(length));
        if (const prop_info* const pi = __system_property_find(name)) {
            read(pi, nullptr);
        }
    }
    FUZZ_CHECK(__system_property_foreach(read, nullptr) == 0);
    static_cast<void>(__system_property_area_serial());
    const bool isSound = platform::areaError(area).empty();
    FUZZ_CHECK(platform::propertyAreaError().empty() == isSound);
    FUZZ_CHECK(isSound || __system_property_set("a", "value") != 0);
}

/// A folder whose area this process has mapped, and in `KORDANIX_RUNTIME_DIR`.
const std::string& mappedDirectory() {
    static const platform::TemporaryDirectory directory;
    static const bool isMapped = [] {
        setenv("KORDANIX_RUNTIME_DIR", directory.path().c_str(), 1);
        return __system_property_set("a", "first") == 0 && __system_property_find("a") != nullptr;
    }();
    FUZZ_CHECK(isMapped);
    return directory.path();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const platform::TemporaryDirectory directory;
    const std::string& mapped = mappedDirectory();
    fuzz::ByteReader reader(data, size);

    const auto area = std::make_unique<PropertyArea>();
    const std::uint32_t kind = reader.upTo(3);
    std::size_t fileSize = sizeof(*area);
    const std::string name = nameFrom(reader);
    const std::string value = reader.text(PROP_VALUE_MAX - 1).c_str();
    if (kind == 0) {
        // Foreign bytes, over and over again or once.
        const bool isRepeated = reader.flag();
        const std::string bytes = reader.rest();
        for (std::size_t offset = 0; offset < sizeof(*area) && !bytes.empty(); offset += bytes.size()) {
            putText(*area, offset, bytes);
            if (!isRepeated) {
                break;
            }
        }
    } else {
        platform::formatArea(*area);
        for (std::uint32_t i = reader.upTo(20); i > 0; --i) {
            const std::string text = reader.text(PROP_VALUE_MAX - 1).c_str();
            static_cast<void>(platform::writeEntry(*area, nameFrom(reader).c_str(), text.c_str()));
        }
        FUZZ_CHECK(platform::areaError(*area).empty());
        if (kind == 1) {
            fileSize = reader.word() % (2 * sizeof(*area));
        }
        damage(*area, reader);
    }

    readEverything(*area);
    openAndWrite(directory.path(), *area, fileSize, name, value);
    if (kind == 2) {
        changeBehindUsers(mapped, *area);
    }
    return 0;
}
