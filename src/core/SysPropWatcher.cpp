#include "core/SysPropWatcher.h"

#include "utils/Thread.h"

#include <sys/system_properties.h>

#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <exception>
#include <functional>
#include <thread>
#include <vector>

namespace {

/// The watcher thread, the properties in order of creation and the listeners in order of registration.
struct Registry {
    std::thread mWatcherThread;  ///< never joined
    std::mutex mRegistryMutex;   ///< also held while all properties are read and the listeners run
    std::vector<SysPropBase*> mProps;
    std::vector<std::function<void()>> mListeners;
};

// Constructed on first use, because static initialisers of several files create properties. Never destroyed,
// because the watcher thread uses it until the process has ended.
Registry& registry() {
    static Registry* const instance = new Registry;
    return *instance;
}

std::atomic<bool> gIsWatcherStarted{false};

// There was no memory for a property's text. Relaxed order: it is only used under the registry mutex.
std::atomic<bool> gIsReadIncomplete{false};

/// How long the watcher waits before it retries after a lack of memory.
constexpr std::chrono::milliseconds RETRY_PERIOD(100);

/// The caller holds the registry mutex.
void readAll(const Registry& all) {
    for (SysPropBase* const prop : all.mProps) {
        prop->read();
    }
}

const prop_info* waitUntilFound(const std::string& name, std::chrono::milliseconds period) {
    for (;;) {
        if (period.count() >= 1) {
            std::this_thread::sleep_for(period);
        }
        if (const prop_info* const found = __system_property_find(name.c_str())) {
            return found;
        }
    }
}

/// Reads all properties and runs the listeners. False when memory ran out for a part of it.
bool takeOverPublication() {
    Registry& all = registry();
    const std::lock_guard<std::mutex> lock(all.mRegistryMutex);
    gIsReadIncomplete.store(false, std::memory_order_relaxed);
    readAll(all);
    try {
        for (const std::function<void()>& listener : all.mListeners) {
            listener();
        }
    } catch (const std::bad_alloc&) {
        return false;
    }
    return !gIsReadIncomplete.load(std::memory_order_relaxed);
}

[[noreturn]] void watch(const std::string& generationName, std::chrono::milliseconds period) {
    const prop_info* const generation = waitUntilFound(generationName, period);
    // No property has serial 0, so the first wait returns at once.
    std::uint32_t serial = 0;
    for (;;) {
        while (!__system_property_wait(generation, serial, &serial, nullptr)) {
        }
        while (!takeOverPublication()) {
            std::this_thread::sleep_for(RETRY_PERIOD);
        }
    }
}

}  // namespace

std::thread& SysPropWatcher::mWatcherThread = registry().mWatcherThread;
std::mutex& SysPropWatcher::mRegistryMutex = registry().mRegistryMutex;
std::vector<SysPropBase*>& SysPropWatcher::mProps = registry().mProps;
std::vector<std::function<void()>>& SysPropWatcher::mListeners = registry().mListeners;

SysPropBase::SysPropBase(std::string name) : mName(std::move(name)) {}

SysPropBase::~SysPropBase() = default;

void SysPropBase::read() {
    if (mPropInfo == nullptr) {
        mPropInfo = __system_property_find(mName.c_str());
    }
    if (mPropInfo == nullptr) {
        return;
    }
    __system_property_read_callback(
        mPropInfo,
        [](void* cookie, const char* /*name*/, const char* value, std::uint32_t /*serial*/) {
            // The platform calls this from C code, which an exception must not cross.
            try {
                static_cast<SysPropBase*>(cookie)->parseAndSetValue(value);
            } catch (const std::bad_alloc&) {
                gIsReadIncomplete.store(true, std::memory_order_relaxed);
            }
        },
        this);
}

SysProp<bool>::SysProp(std::string name, bool defaultValue)
    : SysPropBase(std::move(name)), mValue(defaultValue), mDefault(defaultValue) {}

void SysProp<bool>::parseAndSetValue(const char* text) {
    bool value = mDefault;
    if (std::strcmp(text, "true") == 0) {
        value = true;
    } else if (std::strcmp(text, "false") == 0) {
        value = false;
    }
    mValue.store(value, std::memory_order_relaxed);
}

SysProp<std::string>::SysProp(std::string name, std::string defaultValue)
    : SysPropBase(std::move(name)), mValue(std::move(defaultValue)) {}

void SysProp<std::string>::parseAndSetValue(const char* text) {
    const std::lock_guard<std::mutex> lock(mValueMutex);
    mValue = text;
}

std::string SysProp<std::string>::getValue() const {
    const std::lock_guard<std::mutex> lock(mValueMutex);
    return mValue;
}

std::int32_t parseSysPropInt(const char* text, std::int32_t defaultValue) {
    // A number beyond 64 bits saturates: the platforms' scanf functions convert like strtoimax.
    std::intmax_t number = 0;
    if (std::sscanf(text, "%jd", &number) != 1) {
        return defaultValue;
    }
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number));
}

void SysPropWatcher::init(std::string generationName, std::chrono::milliseconds period) {
    if (gIsWatcherStarted.exchange(true)) {
        return;
    }
    try {
        registry().mWatcherThread = utils::startThread(
            "kordanix-watch",
            [generationName = std::move(generationName), period] { watch(generationName, period); });
    } catch (...) {
        gIsWatcherStarted = false;
        throw;
    }
}

void SysPropWatcher::forceReadAllProps() {
    Registry& all = registry();
    const std::lock_guard<std::mutex> lock(all.mRegistryMutex);
    readAll(all);
}

void SysPropWatcher::addPropChangedListener(std::function<void()> listener) {
    Registry& all = registry();
    const std::lock_guard<std::mutex> lock(all.mRegistryMutex);
    all.mListeners.push_back(std::move(listener));
}

void SysPropWatcher::addSysProp(SysPropBase& prop) {
    // Read before it is registered, so that the watcher thread only sees complete properties.
    prop.read();
    Registry& all = registry();
    const std::lock_guard<std::mutex> lock(all.mRegistryMutex);
    all.mProps.push_back(&prop);
}
