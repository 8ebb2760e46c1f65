#pragma once

#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <time.h>

/// System properties with bionic's names and semantics (API level 29): small texts with a name, shared
/// by all processes of the user, each with a serial that advances with every write. On the host they
/// live in a file of the runtime directory (see properties/RuntimeDirectory.h). Every function may be
/// called from any thread of any process; look-ups and reads take no lock.

#ifdef __cplusplus
extern "C" {
#endif

// The platform's names are reserved ones.
// NOLINTBEGIN(bugprone-reserved-identifier)

/// One property; opaque. A handle stays valid for the life of the process, whatever is written.
typedef struct prop_info prop_info;

/// Room for a value with its terminating zero: values have at most 91 bytes.
#define PROP_VALUE_MAX 92

/// Writes `value` under `name`, creating the property on its first write, and wakes those who wait for it.
/// Returns 0, or -1 with a line in the log when the name or the value is not allowed, a property whose name
/// begins with "ro." exists already, or the area is full or cannot be written. A name has 1 to 127 letters,
/// digits and "@:_.-", no dot at either end and no two in a row. Takes a lock, opens files: tens of
/// microseconds, longer while another process writes.
int __system_property_set(const char* name, const char* value);

/// Returns the property's handle, or null while no such property exists. While the user has no properties
/// at all, every call looks for their file; a file that cannot be used is reported in the log, once.
const prop_info* __system_property_find(const char* name);

/// Calls `callback` once, before returning, with `cookie`, the property's name, a consistent copy of its
/// value and the serial that belongs to that value.
void __system_property_read_callback(const prop_info* pi,
                                     void (*callback)(void* cookie, const char* name, const char* value,
                                                      uint32_t serial),
                                     void* cookie);

/// Calls `callback` for every property, in no particular order. Returns 0, or -1 without an area.
int __system_property_foreach(void (*callback)(const prop_info* pi, void* cookie), void* cookie);

/// Copies the value into `value` (PROP_VALUE_MAX bytes) and returns its length; an empty text and 0 when
/// there is no such property.
int __system_property_get(const char* name, char* value);

/// Blocks until the serial of `pi` (or, for a null `pi`, of the whole area) differs from `old_serial`,
/// then stores the new one in `*new_serial_ptr` and returns true. Returns false when `relative_timeout`
/// (null: none) has passed. Costs nothing while nobody writes. Serials are never 0, so a wait from 0
/// returns at once; a null `pi` without an area waits for the area.
bool __system_property_wait(const prop_info* pi, uint32_t old_serial, uint32_t* new_serial_ptr,
                            const struct timespec* relative_timeout);

/// The serial of the whole area: advances with every write of any property; 0 without an area.
uint32_t __system_property_area_serial(void);

/// The serial of one property.
uint32_t __system_property_serial(const prop_info* pi);

// NOLINTEND(bugprone-reserved-identifier)

#ifdef __cplusplus
}
#endif
