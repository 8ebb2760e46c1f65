#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <time.h>

/// System properties with bionic's names and semantics (API level 29): short named texts that all processes
/// of the user share, each with a serial that changes with every write. On the host a file in the runtime
/// directory holds them (see properties/RuntimeDirectory.h, properties/PropertyText.h). Every function may be
/// called from any thread of any process, keeps errno, and takes a lock only for writing. A look-up or a read
/// costs one system call while nobody writes.

#ifdef __cplusplus
extern "C" {
#endif

// The identifiers are Android's, though C++ reserves such names.
// NOLINTBEGIN(bugprone-reserved-identifier)

/// One property; opaque. A handle stays valid for the life of the process, whatever anybody writes.
typedef struct prop_info prop_info;

/// The size of a buffer for __system_property_get, with the terminating zero. On the host a value may have
/// 4096 bytes; __system_property_read_callback gives all of them.
#define PROP_VALUE_MAX 92

/// Writes `value` under `name`, creating the property on its first write, and wakes those who wait for it.
/// Returns 0, or -1 with a line in the log when the name or the value is not allowed, when a property whose
/// name begins with "ro." exists already, or when the file is full or cannot be written. A name has 1 to 127
/// letters, digits and "@:_.-", no dot at either end and no two dots in a row. Takes a lock and writes a
/// file: a tenth of a millisecond, longer while another process writes, but never longer than five seconds.
int __system_property_set(const char* name, const char* value);

/// Returns the property's handle, or null while there is no such property. When the file cannot be used, the
/// log says so once. Then, and after somebody deleted the file, this thread keeps the properties it read
/// before.
const prop_info* __system_property_find(const char* name);

/// Calls `callback` once, before returning, with `cookie`, the property's name, a consistent copy of its
/// value and the serial that belongs to that value.
void __system_property_read_callback(const prop_info* pi,
                                     void (*callback)(void* cookie, const char* name, const char* value,
                                                      uint32_t serial),
                                     void* cookie);

/// Calls `callback` for every property, in no particular order. Returns 0, or -1 without properties.
int __system_property_foreach(void (*callback)(const prop_info* pi, void* cookie), void* cookie);

/// Copies at most PROP_VALUE_MAX - 1 bytes of the value into `value`, adds a zero and returns the number of
/// bytes copied. Without such a property it gives an empty text and returns 0.
int __system_property_get(const char* name, char* value);

/// Blocks until the serial of `pi` (or, for a null `pi`, that of the last write) differs from `old_serial`,
/// then stores the new one in `*new_serial_ptr` and returns true. Returns false when `relative_timeout`
/// (null: none) has passed. Wakes up to check every ten seconds, or four times a second where the kernel can
/// give no file watch. Serials are never 0, so a wait from 0 returns at once; a null `pi` waits for the first
/// property when there are none.
bool __system_property_wait(const prop_info* pi, uint32_t old_serial, uint32_t* new_serial_ptr,
                            const struct timespec* relative_timeout);

/// The serial of the last write of any property; 0 without properties.
uint32_t __system_property_area_serial(void);

/// The serial of one property.
uint32_t __system_property_serial(const prop_info* pi);

// NOLINTEND(bugprone-reserved-identifier)

#ifdef __cplusplus
}
#endif
