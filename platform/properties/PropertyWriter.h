#pragma once

#include "properties/PropertyFile.h"
#include "properties/PropertyLock.h"

#include <chrono>
#include <string>

namespace platform {

/// Changes several of a runtime directory's properties at once, with a look at their old values. Holds the
/// lock while it lives, so nobody sees or makes a change in between.
class PropertyWriter {
public:
    /// Takes the lock and reads the properties. Check error().
    explicit PropertyWriter(const std::string& directory,
                            std::chrono::milliseconds patience = WRITER_PATIENCE);

    /// Why it cannot write, in plain words; empty when it can.
    const std::string& error() const { return mError; }
    /// Whether it cannot write because somebody else is writing.
    bool isBusy() const { return mLock.isBusy(); }

    /// The property's value, including what set() changed; empty without such a property.
    std::string value(const std::string& name) const;

    /// Returns what is wrong, in plain words; then commit() will write nothing.
    const std::string& set(const std::string& name, const std::string& value);

    /// Writes all changes. Returns what went wrong, in plain words; then nothing has changed.
    const std::string& commit();

private:
    std::string mDirectory;
    PropertyLock mLock;
    PropertyList mList;
    FileVersion mVersion;
    std::string mError;
};

}  // namespace platform
