#pragma once

#include <sys/system_properties.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <type_traits>

#include "properties/PropertyName.h"

/// One property as it lies in the area. Its name never changes; a value is never written in place:
/// the serial's lowest bit says which of the two texts is current, the next write fills the other one
/// and then stores the next serial. So there is no instant at which a killed writer leaves a half-written
/// value, and a reader never waits for a writer.
struct prop_info {
    static constexpr std::size_t VALUE_WORDS = PROP_VALUE_MAX / sizeof(std::uint32_t);

    std::atomic<std::uint32_t> serial;  ///< advances with every write, never 0; the futex of its waiters
    std::uint32_t hash;                 ///< platform::hashName(name)
    std::array<char, platform::PROPERTY_NAME_LENGTH_MAX + 1> name;
    /// Zero-terminated texts, kept in words so that copying one while it is overwritten is no data race.
    std::array<std::array<std::atomic<std::uint32_t>, VALUE_WORDS>, 2> values;
};

namespace platform {

/// The whole file "properties" of the runtime directory, mapped by every process that uses properties.
/// Entries are only ever appended and numbered from 1 in `index`, an open-addressing hash table in which
/// 0 ends a search. Nothing in it is a pointer or an offset, and both look-ups are bounded by the size of
/// their table, so whatever the bytes are, no access leaves the mapping and no search is endless.
/// The layout is the same for 32 and 64 bits.
struct PropertyArea {
    static constexpr std::size_t SIZE = std::size_t{256} * 1024;
    static constexpr std::uint32_t MAGIC = 0x5052504B;  // "KPRP" in the file of a little-endian machine
    static constexpr std::uint32_t VERSION = 1;
    static constexpr std::size_t INDEX_SIZE = 2048;
    static constexpr std::size_t CAPACITY = 793;

    std::uint32_t magic;
    std::uint32_t version;
    std::uint32_t size;
    std::atomic<std::uint32_t> serial;   ///< advances with every write of any property, never 0; a futex
    std::atomic<std::uint32_t> count;    ///< entries in use
    std::atomic<std::uint32_t> pending;  ///< the entry being written (numbered from 1); 0 when none is
    std::array<std::atomic<std::uint32_t>, INDEX_SIZE> index;
    std::array<prop_info, CAPACITY> entries;
    std::array<std::uint32_t, 42> unused;
};

static_assert(sizeof(prop_info) == 320, "the layout is shared by all processes");
static_assert(sizeof(PropertyArea) == PropertyArea::SIZE, "the layout is shared by all processes");
static_assert(std::is_standard_layout_v<PropertyArea> && std::atomic<std::uint32_t>::is_always_lock_free);

/// A property's value and the serial that belongs to it.
struct PropertyValue {
    std::array<char, PROP_VALUE_MAX> text;  ///< zero-terminated
    std::uint32_t serial;
};

/// The hash by which the index finds a name.
std::uint32_t hashName(const char* name);

/// The serial that follows: one more, skipping 0 and keeping odd and even in turns.
std::uint32_t nextSerial(std::uint32_t serial);

/// The number (from 0) of the entry with that name, or CAPACITY when there is none. Takes no lock; any
/// thread, also while another process writes, and on any bytes.
std::size_t findEntry(const PropertyArea& area, const char* name);

/// A consistent copy of the current value. Takes no lock; any thread, also while another process writes:
/// tries again only when a whole write fell into the copying.
PropertyValue readValue(const prop_info& entry);

/// What is wrong with the area, in plain words; empty when it is sound. For any bytes, also while another
/// process writes.
std::string areaError(const PropertyArea& area);

/// The operations below are for the one writer that holds the area's lock (see PropertyFile.h).

/// Makes zeroed memory an area without properties.
void formatArea(PropertyArea& area);

/// Finishes what a writer that was killed left undone: an entry that cannot be found yet, waiters that
/// were not woken. Before every write.
void recoverArea(PropertyArea& area);

/// Writes a property, creating it when there is none of that name, and wakes the waiters of the property
/// and of the area. The name must be allowed and the value fit. Returns what went wrong, or nothing:
/// a read-only property that exists, or an area that is full.
std::string writeEntry(PropertyArea& area, const char* name, const char* value);

}  // namespace platform
