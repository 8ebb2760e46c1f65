#pragma once

#include <chrono>
#include <string>

#include "properties/PropertyFile.h"
#include "properties/PropertyLock.h"

namespace platform {

/// Changes a runtime directory's properties: several of them, by way of what they were, and all at once for
/// everybody else. Holds the lock while it lives.
class PropertyWriter {
public:
    /// Takes the lock and reads the properties. Check error().
    explicit PropertyWriter(const std::string& directory,
                            std::chrono::milliseconds patience = WRITER_PATIENCE);

    /// Why nothing can be written, in plain words; empty when it can.
    const std::string& error() const { return mError; }
    /// Whether that is because somebody else is writing.
    bool isBusy() const { return mLock.isBusy(); }

    /// The value as it is now, with what was set here; empty without such a property.
    std::string value(const std::string& name) const;

    /// Returns what is wrong, in plain words; then nothing will be written by commit() either.
    const std::string& set(const std::string& name, const std::string& value);

    /// Writes what was set. Returns what went wrong, in plain words; then nothing was changed.
    const std::string& commit();

private:
    std::string mDirectory;
    PropertyLock mLock;
    PropertyList mList;
    FileVersion mVersion;
    std::string mError;
};

}  // namespace platform
