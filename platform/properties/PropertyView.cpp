#include "properties/PropertyView.h"

#include "properties/RuntimeDirectory.h"

#include <android/log.h>
#include <limits.h>
#include <pthread.h>

#include <atomic>
#include <utility>

namespace platform {

namespace {

using ViewPointer = std::shared_ptr<const PropertyView>;

std::atomic<bool> gIsErrorLogged = false;

void logOnce(const std::string& error) {
    if (!gIsErrorLogged.exchange(true)) {
        __android_log_print(ANDROID_LOG_ERROR, "properties", "no properties: %s", error.c_str());
    }
}

/// A pthread key instead of a thread_local: the main thread's thread_local would be destroyed before statics
/// that may still read properties.
pthread_key_t makeKey() {
    pthread_key_t key = 0;
    const bool isMade =
        pthread_key_create(&key, [](void* view) { delete static_cast<ViewPointer*>(view); }) == 0;
    return isMade ? key : PTHREAD_KEYS_MAX;
}

/// Returns where this thread keeps its view; null when it cannot keep one and has to read the file every
/// time.
ViewPointer* threadView() {
    static const pthread_key_t key = makeKey();
    auto* view = static_cast<ViewPointer*>(pthread_getspecific(key));
    if (view == nullptr) {
        auto fresh = std::make_unique<ViewPointer>();
        view = pthread_setspecific(key, fresh.get()) == 0 ? fresh.release() : nullptr;
    }
    return view;
}

}  // namespace

std::shared_ptr<const PropertyView> currentProperties(Look& look) {
    look = Look::CURRENT;
    ViewPointer* const own = threadView();
    ViewPointer known = own == nullptr ? nullptr : *own;
    std::string error;
    const std::string* const directory = ownRuntimeDirectory(error);
    if (directory == nullptr) {
        look = Look::FAILED;
        logOnce(error);
        return known;
    }
    if (known != nullptr && known->directory != directory) {
        known = nullptr;
    }
    const FileVersion version = lookAtPropertyFile(*directory);
    const bool isThere = version != FileVersion();
    if (!isThere || (known != nullptr && version == known->version)) {
        return known;
    }
    auto fresh = std::make_shared<PropertyView>();
    fresh->directory = directory;
    const ReadResult result = readPropertyFile(*directory, fresh->list, fresh->version, error);
    if (!error.empty()) {
        logOnce(error);
    }
    if (result == ReadResult::FAILED || result == ReadResult::MISSING) {
        look = result == ReadResult::FAILED ? Look::FAILED : Look::CURRENT;
        return known;
    }
    if (result == ReadResult::REFUSED && known != nullptr) {
        fresh->list = known->list;
    }
    if (own != nullptr) {
        *own = fresh;
    }
    return fresh;
}

}  // namespace platform
