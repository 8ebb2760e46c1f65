#pragma once

#include <string>

/// System properties in the memory of the test executable, in place of the platform's. Any thread; in
/// force from the first look-up of the library's load on. The environment variable KORDANIX_TEST_MODEL gives
/// the device's model, which is looked up then. Readers are not told a property's name.
namespace doubles {

/// Writes a property, creating it when it is new, advances its serial and wakes those who wait for it.
void setProperty(const std::string& name, const std::string& value);

/// How often any property has been looked up by name since the process started.
unsigned propertyLookups();

/// Makes the next `count` waits report failure at once.
void failPropertyWaits(unsigned count);

}  // namespace doubles
