#include "properties/PropertyWriter.h"

namespace platform {

PropertyWriter::PropertyWriter(const std::string& directory, std::chrono::milliseconds patience)
    : mDirectory(directory), mLock(directory, patience), mError(mLock.error()) {
    if (mError.empty()) {
        readPropertyFile(directory, mList, mVersion, mError);
    }
}

std::string PropertyWriter::value(const std::string& name) const {
    const auto found = mList.properties.find(name);
    return found == mList.properties.end() ? std::string() : found->second.value;
}

const std::string& PropertyWriter::set(const std::string& name, const std::string& value) {
    if (mError.empty()) {
        mError = setProperty(mList, name, value);
    }
    return mError;
}

const std::string& PropertyWriter::commit() {
    if (mError.empty()) {
        mError = writePropertyFile(mDirectory, mList, mVersion);
    }
    return mError;
}

}  // namespace platform
