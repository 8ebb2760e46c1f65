#include "properties/SystemProperties.h"

#include <android/log.h>
#include <sys/system_properties.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "properties/Futex.h"
#include "properties/PropertyFile.h"
#include "properties/RuntimeDirectory.h"

namespace platform {
namespace {

constexpr char TAG[] = "properties";
constexpr long NANOSECONDS = 1000000000L;
/// How often a waiter looks again for an area that does not exist, or that cannot be waited on.
constexpr std::chrono::milliseconds RETRY_PERIOD(100);

/// The process's view of the area; null until there is one, then never unmapped, since handles point into
/// it. Initialised before any code runs, and without a destructor: properties are created during static
/// initialisation and read by a thread that outlives the statics.
std::atomic<const PropertyArea*> gArea = nullptr;
std::atomic<bool> gIsErrorLogged = false;

PropertyFile openFile(std::string& error) {
    const RuntimeDirectory directory = openRuntimeDirectory();
    error = directory.error;
    return error.empty() ? PropertyFile::openForReading(directory.path, error) : PropertyFile();
}

/// The area, or null while there is none.
const PropertyArea* findArea() {
    const PropertyArea* area = gArea.load(std::memory_order_acquire);
    if (area != nullptr) {
        return area;
    }
    std::string error;
    PropertyFile file = openFile(error);
    if (!error.empty() && !gIsErrorLogged.exchange(true)) {
        __android_log_print(ANDROID_LOG_ERROR, TAG, "no properties: %s", error.c_str());
    }
    // Of threads that open it at once, one wins; the mappings of the others go.
    if (file.area() != nullptr &&
        gArea.compare_exchange_strong(area, file.area(), std::memory_order_acq_rel)) {
        area = file.release();
    }
    return area;
}

timespec deadlineAfter(const timespec& timeout) {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    // Bounded so that the sum fits a 32-bit time as well; ten years are as good as for ever.
    constexpr time_t MAX_SECONDS = 315360000;
    timespec deadline = {};
    deadline.tv_sec = now.tv_sec + std::clamp<time_t>(timeout.tv_sec, 0, MAX_SECONDS);
    deadline.tv_nsec = now.tv_nsec + std::clamp(timeout.tv_nsec, 0L, NANOSECONDS - 1);
    if (deadline.tv_nsec >= NANOSECONDS) {
        deadline.tv_nsec -= NANOSECONDS;
        ++deadline.tv_sec;
    }
    return deadline;
}

bool isPast(const timespec& deadline) {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec > deadline.tv_sec || (now.tv_sec == deadline.tv_sec && now.tv_nsec >= deadline.tv_nsec);
}

/// The word that a waiter for the property (null: for any) sleeps on; null while there is no area.
const std::atomic<std::uint32_t>* waitWord(const prop_info* pi) {
    if (pi != nullptr) {
        return &pi->serial;
    }
    const PropertyArea* area = findArea();
    return area == nullptr ? nullptr : &area->serial;
}

/// Sleeps until something may have happened; false when the deadline has passed.
bool sleepOn(const std::atomic<std::uint32_t>* word, std::uint32_t serial, const timespec* deadline) {
    if (word != nullptr) {
        const int result = futexWait(*word, serial, deadline);
        if (result == 0 || result == EAGAIN || result == EINTR) {
            return true;
        }
        if (result == ETIMEDOUT) {
            return false;
        }
    }
    // No area yet, or a kernel that cannot wait on it: the one case that costs a look now and then.
    std::this_thread::sleep_for(RETRY_PERIOD);
    return deadline == nullptr || !isPast(*deadline);
}

}  // namespace

std::string setProperty(const char* name, const char* value) {
    std::string error = propertyNameError(name);
    if (error.empty() && (value == nullptr || std::strlen(value) >= PROP_VALUE_MAX)) {
        error = "the value has more than " + std::to_string(PROP_VALUE_MAX - 1) + " bytes";
    }
    if (!error.empty()) {
        return error;
    }
    const RuntimeDirectory directory = openRuntimeDirectory();
    if (!directory.error.empty()) {
        return directory.error;
    }
    const PropertyLock lock(directory.path);
    if (!lock.isHeld()) {
        return lock.error();
    }
    const PropertyFile file = PropertyFile::openForWriting(directory.path, error);
    if (file.writableArea() == nullptr) {
        return error;
    }
    recoverArea(*file.writableArea());
    return writeEntry(*file.writableArea(), name, value);
}

std::string propertyAreaError() {
    std::string error;
    openFile(error);
    return error;
}

void changeRuntimeDirectory(const std::string& directory) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the header says so
    setenv("KORDANIX_RUNTIME_DIR", directory.c_str(), 1);
    gArea.store(nullptr, std::memory_order_release);
}

}  // namespace platform

using platform::findArea;

// NOLINTBEGIN(bugprone-reserved-identifier): the platform's names

int __system_property_set(const char* name, const char* value) {
    const std::string error = platform::setProperty(name, value);
    if (error.empty()) {
        return 0;
    }
    __android_log_print(ANDROID_LOG_ERROR, platform::TAG, "cannot set \"%s\": %s",
                        name == nullptr ? "" : name, error.c_str());
    return -1;
}

const prop_info* __system_property_find(const char* name) {
    const platform::PropertyArea* area = findArea();
    if (area == nullptr || name == nullptr) {
        return nullptr;
    }
    const std::size_t number = platform::findEntry(*area, name);
    return number == platform::PropertyArea::CAPACITY ? nullptr : &area->entries[number];
}

void __system_property_read_callback(const prop_info* pi,
                                     void (*callback)(void* cookie, const char* name, const char* value,
                                                      uint32_t serial),
                                     void* cookie) {
    if (pi == nullptr) {
        return;
    }
    // A copy that surely ends, whatever became of the file since it was checked.
    auto name = pi->name;
    name.back() = '\0';
    const platform::PropertyValue value = platform::readValue(*pi);
    callback(cookie, name.data(), value.text.data(), value.serial);
}

int __system_property_foreach(void (*callback)(const prop_info* pi, void* cookie), void* cookie) {
    const platform::PropertyArea* area = findArea();
    if (area == nullptr) {
        return -1;
    }
    const std::size_t count = area->count.load(std::memory_order_acquire);
    for (std::size_t i = 0; i < std::min(count, platform::PropertyArea::CAPACITY); ++i) {
        callback(&area->entries[i], cookie);
    }
    return 0;
}

int __system_property_get(const char* name, char* value) {
    value[0] = '\0';
    const prop_info* pi = __system_property_find(name);
    if (pi == nullptr) {
        return 0;
    }
    const platform::PropertyValue current = platform::readValue(*pi);
    std::memcpy(value, current.text.data(), current.text.size());
    return static_cast<int>(std::strlen(value));
}

bool __system_property_wait(const prop_info* pi, uint32_t old_serial, uint32_t* new_serial_ptr,
                            const struct timespec* relative_timeout) {
    timespec deadline = {};
    if (relative_timeout != nullptr) {
        deadline = platform::deadlineAfter(*relative_timeout);
    }
    for (bool isInTime = true;;) {
        const std::atomic<std::uint32_t>* word = platform::waitWord(pi);
        const std::uint32_t serial = word == nullptr ? old_serial : word->load(std::memory_order_acquire);
        if (serial != old_serial) {
            *new_serial_ptr = serial;
            return true;
        }
        if (!isInTime) {
            return false;
        }
        isInTime = platform::sleepOn(word, old_serial, relative_timeout == nullptr ? nullptr : &deadline);
    }
}

uint32_t __system_property_area_serial(void) {
    const platform::PropertyArea* area = findArea();
    return area == nullptr ? 0 : area->serial.load(std::memory_order_acquire);
}

uint32_t __system_property_serial(const prop_info* pi) {
    return pi->serial.load(std::memory_order_acquire);
}

// NOLINTEND(bugprone-reserved-identifier)
