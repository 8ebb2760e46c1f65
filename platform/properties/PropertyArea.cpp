#include "properties/PropertyArea.h"

#include <algorithm>
#include <cstring>

#include "properties/Futex.h"

namespace platform {
namespace {

using ValueWords = std::array<std::uint32_t, prop_info::VALUE_WORDS>;

/// The place in the index where the search for a name of that hash begins.
std::size_t indexStart(std::uint32_t hash) {
    return hash % PropertyArea::INDEX_SIZE;
}

void storeValue(prop_info& entry, std::uint32_t serial, const char* value) {
    ValueWords words = {};
    std::memcpy(words.data(), value, std::strlen(value));
    auto& target = entry.values[serial % 2];
    for (std::size_t i = 0; i < words.size(); ++i) {
        // Each a release, so that whoever reads a word of this write also sees all stores before it.
        target[i].store(words[i], std::memory_order_release);
    }
}

void link(PropertyArea& area, std::size_t number) {
    std::size_t place = indexStart(area.entries[number].hash);
    for (std::size_t i = 0; i < PropertyArea::INDEX_SIZE; ++i) {
        if (area.index[place].load(std::memory_order_relaxed) == 0) {
            // Releases the entry's name, hash and first value to those who find it.
            area.index[place].store(static_cast<std::uint32_t>(number + 1), std::memory_order_release);
            return;
        }
        place = (place + 1) % PropertyArea::INDEX_SIZE;
    }
}

/// Tells everyone that the pending entry was written, and that none is pending any more.
void announce(PropertyArea& area, const prop_info& entry) {
    const std::uint32_t serial = area.serial.load(std::memory_order_relaxed);
    area.serial.store(nextSerial(serial), std::memory_order_release);
    futexWakeAll(entry.serial);
    futexWakeAll(area.serial);
    area.pending.store(0, std::memory_order_release);
}

std::string entryError(const PropertyArea& area, std::size_t number, bool isLast) {
    const prop_info& entry = area.entries[number];
    const std::string place = "entry " + std::to_string(number) + " ";
    if (entry.name.back() != '\0' || !propertyNameError(entry.name.data()).empty()) {
        return place + "has no proper name";
    }
    if (entry.hash != hashName(entry.name.data())) {
        return place + "has the hash of another name";
    }
    if (entry.serial.load(std::memory_order_relaxed) == 0) {
        return place + "has no serial";
    }
    // The last entry may be counted already and not be found yet, when its writer is at work or was killed.
    const std::size_t found = findEntry(area, entry.name.data());
    if (found != number && !(isLast && found == PropertyArea::CAPACITY)) {
        return place + "is not found by its name";
    }
    return {};
}

}  // namespace

std::uint32_t hashName(const char* name) {
    // FNV-1a: short names, spread well enough for a table that is never half full.
    std::uint32_t hash = 2166136261U;
    for (; *name != '\0'; ++name) {
        hash = (hash ^ static_cast<unsigned char>(*name)) * 16777619U;
    }
    return hash;
}

std::uint32_t nextSerial(std::uint32_t serial) {
    return serial == UINT32_MAX ? 2 : serial + 1;
}

std::size_t findEntry(const PropertyArea& area, const char* name) {
    const std::uint32_t hash = hashName(name);
    std::size_t place = indexStart(hash);
    for (std::size_t i = 0; i < PropertyArea::INDEX_SIZE; ++i) {
        const std::uint32_t number = area.index[place].load(std::memory_order_acquire);
        if (number == 0) {
            break;
        }
        if (number <= PropertyArea::CAPACITY) {
            const prop_info& entry = area.entries[number - 1];
            if (entry.hash == hash && std::strncmp(entry.name.data(), name, entry.name.size()) == 0) {
                return number - 1;
            }
        }
        place = (place + 1) % PropertyArea::INDEX_SIZE;
    }
    return PropertyArea::CAPACITY;
}

PropertyValue readValue(const prop_info& entry) {
    ValueWords words = {};
    PropertyValue value = {};
    std::uint32_t before = entry.serial.load(std::memory_order_acquire);
    for (;;) {
        const auto& source = entry.values[before % 2];
        for (std::size_t i = 0; i < words.size(); ++i) {
            words[i] = source[i].load(std::memory_order_acquire);
        }
        // Had the write after the next one reached these words, the serial of the next would show by now.
        const std::uint32_t after = entry.serial.load(std::memory_order_acquire);
        if (after == before) {
            break;
        }
        before = after;
    }
    static_assert(sizeof(words) == sizeof(value.text));
    std::memcpy(value.text.data(), words.data(), sizeof(words));
    value.text.back() = '\0';
    value.serial = before;
    return value;
}

std::string areaError(const PropertyArea& area) {
    if (area.magic != PropertyArea::MAGIC) {
        return "is not a property area";
    }
    if (area.version != PropertyArea::VERSION || area.size != PropertyArea::SIZE) {
        return "is a property area of another version";
    }
    // Entries are counted before they are put into the index, so the count is read after it.
    std::uint32_t highest = 0;
    for (const auto& number : area.index) {
        highest = std::max(highest, number.load(std::memory_order_acquire));
    }
    const std::uint32_t count = area.count.load(std::memory_order_acquire);
    if (count > PropertyArea::CAPACITY || highest > count ||
        area.serial.load(std::memory_order_relaxed) == 0 ||
        area.pending.load(std::memory_order_relaxed) > PropertyArea::CAPACITY) {
        return "is damaged: its header contradicts itself";
    }
    for (std::size_t i = 0; i < count; ++i) {
        const std::string wrong = entryError(area, i, i + 1 == count);
        if (!wrong.empty()) {
            return "is damaged: " + wrong;
        }
    }
    return {};
}

void formatArea(PropertyArea& area) {
    area.magic = PropertyArea::MAGIC;
    area.version = PropertyArea::VERSION;
    area.size = PropertyArea::SIZE;
    area.serial.store(1, std::memory_order_relaxed);
}

void recoverArea(PropertyArea& area) {
    const std::uint32_t count = area.count.load(std::memory_order_relaxed);
    if (count > 0 && findEntry(area, area.entries[count - 1].name.data()) == PropertyArea::CAPACITY) {
        link(area, count - 1);
    }
    const std::uint32_t pending = area.pending.load(std::memory_order_relaxed);
    if (pending > 0) {
        announce(area, area.entries[pending - 1]);
    }
}

std::string writeEntry(PropertyArea& area, const char* name, const char* value) {
    std::size_t number = findEntry(area, name);
    const bool isNew = number == PropertyArea::CAPACITY;
    if (isNew) {
        number = area.count.load(std::memory_order_relaxed);
    } else if (isReadOnlyName(name)) {
        return "the property is read-only and was written before";
    }
    if (number == PropertyArea::CAPACITY) {
        return "the property area is full (" + std::to_string(PropertyArea::CAPACITY) + " properties)";
    }

    // A kill between any two of these stores leaves the old or the new value in force. The stores below
    // are releases so that they happen in this order; recoverArea finishes the rest.
    prop_info& entry = area.entries[number];
    const std::uint32_t serial = isNew ? 1 : nextSerial(entry.serial.load(std::memory_order_acquire));
    area.pending.store(static_cast<std::uint32_t>(number + 1), std::memory_order_release);
    storeValue(entry, serial, value);
    if (isNew) {
        entry.hash = hashName(name);
        entry.name.fill('\0');
        std::memcpy(entry.name.data(), name, std::strlen(name));
        entry.serial.store(serial, std::memory_order_release);
        area.count.store(static_cast<std::uint32_t>(number + 1), std::memory_order_release);
        link(area, number);
    } else {
        entry.serial.store(serial, std::memory_order_release);
    }
    announce(area, entry);
    return {};
}

}  // namespace platform
