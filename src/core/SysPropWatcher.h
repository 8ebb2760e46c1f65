#pragma once

#include "utils/Export.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

struct prop_info;

/// A system property with a typed current value, which the watcher keeps up to date. A property that does not
/// exist keeps its default value; every re-read looks for it again. SysPropWatcher::createSysProp creates it,
/// and it lives until the process ends.
class KORDANIX_EXPORT SysPropBase {
public:
    explicit SysPropBase(std::string name = {});
    virtual ~SysPropBase();
    SysPropBase(const SysPropBase&) = delete;
    SysPropBase& operator=(const SysPropBase&) = delete;

    /// Sets the value from the property's text (zero-terminated).
    virtual void parseAndSetValue(const char* text) = 0;

    /// Looks the property up if it has not been found yet, and reads its current text. Not thread-safe: once
    /// the property is registered only the watcher calls this, and holds its registry mutex.
    void read();

    std::string mName;
    const prop_info* mPropInfo = nullptr;  ///< null until the property has been found
};

/// int, and any enumeration of 32 bits: a signed decimal number followed by anything ("12px" is 12); only its
/// low 32 bits count. Text without a number gives the default.
template <typename T>
class KORDANIX_EXPORT SysProp final : public SysPropBase {
    static_assert(sizeof(T) == sizeof(std::int32_t) && (std::is_same_v<T, int> || std::is_enum_v<T>),
                  "a property is a bool, an int, a 32-bit enumeration or a string");

public:
    SysProp(std::string name, T defaultValue)
        : SysPropBase(std::move(name)),
          mValue(static_cast<std::int32_t>(defaultValue)),
          mDefault(static_cast<std::int32_t>(defaultValue)) {}

    void parseAndSetValue(const char* text) override;

    /// Any thread; costs one load.
    T getValue() const { return static_cast<T>(mValue.load(std::memory_order_relaxed)); }

    std::atomic<std::int32_t> mValue;  ///< relaxed order: no other data depends on it
    std::int32_t mDefault;
};

/// Exactly "true" or "false"; any other text gives the default.
template <>
class KORDANIX_EXPORT SysProp<bool> final : public SysPropBase {
public:
    SysProp(std::string name, bool defaultValue);

    void parseAndSetValue(const char* text) override;

    /// Any thread; costs one load.
    bool getValue() const { return mValue.load(std::memory_order_relaxed); }

    std::atomic<bool> mValue;  ///< relaxed order: no other data depends on it
    bool mDefault;
};

/// Any text. The default is only the initial value.
template <>
class KORDANIX_EXPORT SysProp<std::string> final : public SysPropBase {
public:
    SysProp(std::string name, std::string defaultValue);

    void parseAndSetValue(const char* text) override;

    /// Copies the value under its mutex. Any thread.
    std::string getValue() const;

    std::string mValue;
    mutable std::mutex mValueMutex;  ///< guards mValue; taken inside the registry mutex, never around it
};

/// Keeps all properties of the library current. Its thread blocks on one "generation" property. When somebody
/// writes that, whatever the value, the thread reads every property again and then runs every listener. So a
/// writer changes any number of properties first and publishes them together by writing the generation.
///
/// Any thread may call these operations. The registry and its properties are never destroyed. The thread is
/// never stopped: it ends with the process, whose exit does not wait for it.
class KORDANIX_EXPORT SysPropWatcher {
public:
    /// Creates a property, reads it if it exists, and registers it for re-reading. T is bool, int, a 32-bit
    /// enumeration or std::string. Two calls with one name give two independent objects.
    template <typename T>
    static SysProp<T>& createSysProp(std::string name, T defaultValue) {
        auto prop = std::make_unique<SysProp<T>>(std::move(name), std::move(defaultValue));
        addSysProp(*prop);
        return *prop.release();
    }

    /// Does the same for a property that the caller has made and never destroys.
    static void addSysProp(SysPropBase& prop);

    /// Starts the watcher thread on the first call; later calls do nothing. The thread looks for the
    /// generation property once per period, first after one period, until the property exists; then it reads
    /// all properties at once. Throws std::system_error if no thread can be created; a later call may try
    /// again.
    static void init(std::string generationName, std::chrono::milliseconds period);

    /// Re-reads every property on the calling thread. No listener runs.
    static void forceReadAllProps();

    /// Adds a listener (not empty). The watcher thread runs it under the registry mutex after every re-read
    /// that a publication causes. It must be short and must not call back into this class.
    static void addPropChangedListener(std::function<void()> listener);

    // References to objects that are made on first use and never destroyed.

    static std::thread& mWatcherThread;                     ///< not started until the first init()
    static std::mutex& mRegistryMutex;                      ///< guards the two lists; not recursive
    static std::vector<SysPropBase*>& mProps;               ///< in order of creation
    static std::vector<std::function<void()>>& mListeners;  ///< in order of registration
};

/// Returns the number at the beginning of the text, after any blanks, as described for SysProp<int>.
KORDANIX_EXPORT std::int32_t parseSysPropInt(const char* text, std::int32_t defaultValue);

template <typename T>
void SysProp<T>::parseAndSetValue(const char* text) {
    mValue.store(parseSysPropInt(text, mDefault), std::memory_order_relaxed);
}
