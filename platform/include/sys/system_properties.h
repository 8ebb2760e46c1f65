#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <time.h>

/// System properties with bionic's names and semantics (API level 29): small texts with a name, shared
/// by all processes of the user, each with a serial that changes with every write. On the host they live
/// in a file of the runtime directory (see properties/RuntimeDirectory.h, properties/PropertyText.h).
/// Every function may be called from any thread of any process, keeps errno, and takes no lock but for
/// writing. A look-up or a read costs one system call while nobody writes.

#ifdef __cplusplus
extern "C" {
#endif

// The platform's names are reserved ones.
// NOLINTBEGIN(bugprone-reserved-identifier)

/// One property; opaque. A handle stays valid for the life of the process, whatever is written.
typedef struct prop_info prop_info;

/// Room for a value with its terminating zero, as far as __system_property_get gives it. On the host a value
/// may have 4096 bytes, which __system_property_read_callback gives whole.
#define PROP_VALUE_MAX 92

/// Writes `value` under `name`, creating the property on its first write, and wakes those who wait for it.
/// Returns 0, or -1 with a line in the log when the name or the value is not allowed, a property whose name
/// begins with "ro." exists already, or the file is full or cannot be written. A name has 1 to 127 letters,
/// digits and "@:_.-", no dot at either end and no two in a row. Takes a lock, writes a file: a tenth of a
/// millisecond, longer while another process writes, but never longer than five seconds.
int __system_property_set(const char* name, const char* value);

/// Returns the property's handle, or null while no such property exists. A file that cannot be used is
/// reported in the log, once; then, and when it was deleted, what this thread read before stays.
const prop_info* __system_property_find(const char* name);

/// Calls `callback` once, before returning, with `cookie`, the property's name, a consistent copy of its
/// value and the serial that belongs to that value.
void __system_property_read_callback(const prop_info* pi,
                                     void (*callback)(void* cookie, const char* name, const char* value,
                                                      uint32_t serial),
                                     void* cookie);

/// Calls `callback` for every property, in no particular order. Returns 0, or -1 without properties.
int __system_property_foreach(void (*callback)(const prop_info* pi, void* cookie), void* cookie);

/// Copies the value, at most PROP_VALUE_MAX - 1 bytes of it, into `value`, ends it with a zero and returns
/// its length there; an empty text and 0 when there is no such property.
int __system_property_get(const char* name, char* value);

/// Blocks until the serial of `pi` (or, for a null `pi`, that of the last write) differs from `old_serial`,
/// then stores the new one in `*new_serial_ptr` and returns true. Returns false when `relative_timeout`
/// (null: none) has passed. While nobody writes it looks around once in ten seconds; where the kernel has no
/// watch to give, four times a second. Serials are never 0, so a wait from 0 returns at once; a null `pi`
/// without properties waits for the first.
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
