#include "properties/SystemProperties.h"

#include "properties/DirectoryWatch.h"
#include "properties/PropertyView.h"
#include "properties/PropertyWriter.h"

#include <android/log.h>
#include <sys/system_properties.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <exception>
#include <memory>
#include <optional>

/// A property that somebody looked up. Never freed, since handles are valid for good; the file has its value.
struct prop_info {
    std::string name;
    prop_info* next = nullptr;
};

namespace platform {
namespace {

using View = std::shared_ptr<const PropertyView>;

/// All handles of this process.
std::atomic<prop_info*> gHandles = nullptr;

/// Restores the caller's errno at the end of a function.
class ErrnoKept {
public:
    ErrnoKept() = default;
    ~ErrnoKept() { errno = mErrno; }
    ErrnoKept(const ErrnoKept&) = delete;
    ErrnoKept& operator=(const ErrnoKept&) = delete;

private:
    int mErrno = errno;
};

prop_info* findHandle(const std::string& name, prop_info* first, const prop_info* end) {
    while (first != end && first->name != name) {
        first = first->next;
    }
    return first == end ? nullptr : first;
}

/// Returns the handle for a name, and makes it on the first call. Any thread, without a lock.
const prop_info* handleOf(const std::string& name) {
    prop_info* first = gHandles.load(std::memory_order_acquire);
    prop_info* found = findHandle(name, first, nullptr);
    if (found != nullptr) {
        return found;
    }
    auto fresh = std::make_unique<prop_info>();
    fresh->name = name;
    for (;;) {
        fresh->next = first;
        const prop_info* const searched = first;
        if (gHandles.compare_exchange_strong(first, fresh.get(), std::memory_order_acq_rel)) {
            return fresh.release();
        }
        found = findHandle(name, first, searched);
        if (found != nullptr) {
            return found;
        }
    }
}

/// Returns the properties as they are now; null when there are none or no memory for them.
View look(Look& worth) {
    try {
        return currentProperties(worth);
    } catch (const std::exception&) {
        worth = Look::FAILED;
        return nullptr;
    }
}

View look() {
    Look ignored = Look::CURRENT;
    return look(ignored);
}

const Property* propertyOf(const View& view, const prop_info* pi) {
    if (view == nullptr || pi == nullptr) {
        return nullptr;
    }
    const auto found = view->list.properties.find(pi->name);
    return found == view->list.properties.end() ? nullptr : &found->second;
}

/// Returns the serial of a property (of the last write for a null `pi`); 0 when there is none.
std::uint32_t serialOf(const View& view, const prop_info* pi) {
    if (pi == nullptr) {
        return view == nullptr ? 0 : view->list.serial;
    }
    const Property* const property = propertyOf(view, pi);
    return property == nullptr ? 0 : property->serial;
}

timespec deadlineAfter(const timespec& timeout) {
    constexpr long NANOSECONDS = 1000000000L;
    // Bounded so that the sum also fits a 32-bit time; nobody waits ten years.
    constexpr time_t MAX_SECONDS = 315360000;
    timespec deadline = {};
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += std::clamp<time_t>(timeout.tv_sec, 0, MAX_SECONDS);
    deadline.tv_nsec += std::clamp(timeout.tv_nsec, 0L, NANOSECONDS - 1);
    if (deadline.tv_nsec >= NANOSECONDS) {
        deadline.tv_nsec -= NANOSECONDS;
        ++deadline.tv_sec;
    }
    return deadline;
}

bool isPast(const timespec* deadline) {
    if (deadline == nullptr) {
        return false;
    }
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec > deadline->tv_sec ||
           (now.tv_sec == deadline->tv_sec && now.tv_nsec >= deadline->tv_nsec);
}

/// Starts a watch on this process's runtime directory, if there is one.
void watchDirectory(std::optional<DirectoryWatch>& watch) {
    try {
        std::string ignored;
        const std::string* const directory = ownRuntimeDirectory(ignored);
        if (directory != nullptr) {
            watch.emplace(*directory);
        }
    } catch (const std::exception&) {
        watch.reset();
    }
}

}  // namespace

std::string setProperties(const std::vector<std::pair<std::string, std::string>>& properties) {
    const RuntimeDirectory directory = openRuntimeDirectory();
    if (!directory.error.empty()) {
        return directory.error;
    }
    PropertyWriter writer(directory.path);
    if (!writer.error().empty()) {
        return writer.error();
    }
    for (const auto& [name, value] : properties) {
        std::string error = writer.set(name, value);
        if (!error.empty()) {
            return properties.size() == 1 ? error : error.insert(0, name + ": ");
        }
    }
    return writer.commit();
}

std::string setProperty(const char* name, const char* value) {
    if (name == nullptr || value == nullptr) {
        return name == nullptr ? "there is no name" : "there is no value";
    }
    return setProperties({{name, value}});
}

std::string propertyAreaError() {
    const RuntimeDirectory directory = openRuntimeDirectory();
    std::string error = directory.error;
    if (error.empty()) {
        PropertyList ignoredList;
        FileVersion ignoredVersion;
        readPropertyFile(directory.path, ignoredList, ignoredVersion, error);
    }
    return error;
}

}  // namespace platform

// NOLINTBEGIN(bugprone-reserved-identifier): the platform's names

int __system_property_set(const char* name, const char* value) {
    const platform::ErrnoKept kept;
    const std::string error = platform::setProperty(name, value);
    if (error.empty()) {
        return 0;
    }
    __android_log_print(ANDROID_LOG_ERROR, "properties", "cannot set \"%s\": %s", name == nullptr ? "" : name,
                        error.c_str());
    return -1;
}

const prop_info* __system_property_find(const char* name) {
    const platform::ErrnoKept kept;
    const platform::View view = platform::look();
    if (view == nullptr || name == nullptr) {
        return nullptr;
    }
    const auto found = view->list.properties.find(std::string_view(name));
    try {
        return found == view->list.properties.end() ? nullptr : platform::handleOf(found->first);
    } catch (const std::exception&) {
        return nullptr;
    }
}

void __system_property_read_callback(const prop_info* pi,
                                     void (*callback)(void* cookie, const char* name, const char* value,
                                                      uint32_t serial),
                                     void* cookie) {
    if (pi == nullptr) {
        return;
    }
    const int callersErrno = errno;
    const platform::View view = platform::look();
    const platform::Property* const property = platform::propertyOf(view, pi);
    errno = callersErrno;
    callback(cookie, pi->name.c_str(), property == nullptr ? "" : property->value.c_str(),
             platform::serialOf(view, pi));
}

int __system_property_foreach(void (*callback)(const prop_info* pi, void* cookie), void* cookie) {
    const platform::ErrnoKept kept;
    const platform::View view = platform::look();
    if (view == nullptr || view->list.serial == 0) {
        return -1;
    }
    for (const auto& [name, property] : view->list.properties) {
        callback(platform::handleOf(name), cookie);
    }
    return 0;
}

int __system_property_get(const char* name, char* value) {
    const platform::ErrnoKept kept;
    value[0] = '\0';
    const platform::View view = platform::look();
    if (view == nullptr || name == nullptr) {
        return 0;
    }
    const auto found = view->list.properties.find(std::string_view(name));
    if (found == view->list.properties.end()) {
        return 0;
    }
    const std::size_t length = found->second.value.copy(value, PROP_VALUE_MAX - 1);
    value[length] = '\0';
    return static_cast<int>(length);
}

bool __system_property_wait(const prop_info* pi, uint32_t old_serial, uint32_t* new_serial_ptr,
                            const struct timespec* relative_timeout) {
    const platform::ErrnoKept kept;
    const std::optional<timespec> end = relative_timeout == nullptr
                                            ? std::nullopt
                                            : std::optional(platform::deadlineAfter(*relative_timeout));
    const timespec* const deadline = end ? &*end : nullptr;
    std::optional<platform::DirectoryWatch> watch;
    for (;;) {
        platform::Look worth = platform::Look::CURRENT;
        const platform::View view = platform::look(worth);
        const std::uint32_t serial = platform::serialOf(view, pi);
        if (serial != old_serial && serial != 0) {
            *new_serial_ptr = serial;
            return true;
        }
        if (platform::isPast(deadline)) {
            return false;
        }
        if (watch) {
            watch->sleep(deadline);
            watch.reset();
            continue;
        }
        if (worth == platform::Look::CURRENT) {
            platform::watchDirectory(watch);  // then looks again, since the watch sees only later changes
        }
        if (!watch) {
            platform::DirectoryWatch::sleepWithoutWatch(deadline);
        }
    }
}

uint32_t __system_property_area_serial(void) {
    const platform::ErrnoKept kept;
    return platform::serialOf(platform::look(), nullptr);
}

uint32_t __system_property_serial(const prop_info* pi) {
    const platform::ErrnoKept kept;
    return platform::serialOf(platform::look(), pi);
}

// NOLINTEND(bugprone-reserved-identifier)
