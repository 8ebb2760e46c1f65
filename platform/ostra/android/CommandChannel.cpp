#include "ostra/android/CommandChannel.h"

#include "io/PlainFile.h"
#include "ostra/HelperThread.h"
#include "ostra/LogTag.h"
#include "ostra/android/FilesFolder.h"

#include <android/log.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <new>
#include <system_error>
#include <thread>
#include <utility>

namespace platform {

namespace {

constexpr std::chrono::milliseconds PERIOD{500};

constexpr std::int32_t VOLUME_UP = 24;
constexpr std::int32_t VOLUME_DOWN = 25;
constexpr std::int32_t PRESSED = 1;

constexpr const char* DEVELOPER_MODE = "debug.kordanix.devmode";

bool isDeveloperMode() {
    bool isOn = false;
    if (const prop_info* const property = __system_property_find(DEVELOPER_MODE)) {
        __system_property_read_callback(
            property,
            [](void* cookie, const char* /*name*/, const char* value, std::uint32_t /*serial*/) {
                *static_cast<bool*>(cookie) = std::string_view(value) == "true";
            },
            &isOn);
    }
    return isOn;
}

/// Makes an empty file, unless another process of the application has, and the folders above it. Returns why
/// it cannot.
std::string makeFile(const std::string& path) {
    std::error_code failure;
    std::filesystem::create_directories(std::filesystem::path(path).parent_path(), failure);
    if (failure) {
        return failure.message();
    }
    const int file = openPlainFile(path, O_WRONLY | O_CREAT);
    if (file < 0) {
        return plainFileError(errno);
    }
    close(file);
    return {};
}

}  // namespace

void CommandChannel::listen() {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mIsListening) {
        return;
    }
    mIsListening = true;
    try {
        std::string text;
        read(text);
        if (const auto old = parseCommand(text)) {
            mLastNumber = old->number;
        }
        if (startHelperThread("ostra-commands", [this] { watch(); })) {
            return;
        }
    } catch (const std::bad_alloc&) {
    }
    __android_log_print(ANDROID_LOG_ERROR, TAG, "Commands cannot be received: no thread can be started");
}

std::vector<Ostra::KeyEvent> CommandChannel::takeKeys() {
    std::vector<Ostra::KeyEvent> keys;
    if (mIsIdle.load(std::memory_order_relaxed)) {
        return keys;
    }
    listen();
    const std::lock_guard<std::mutex> lock(mMutex);
    mIsIdle.store(true, std::memory_order_relaxed);
    keys.swap(mPending);
    return keys;
}

void CommandChannel::addKey(const Ostra::KeyEvent& key) {
    const std::lock_guard<std::mutex> lock(mMutex);
    if (mPending.size() < MAX_PENDING) {
        mPending.push_back(key);
    }
    mIsIdle.store(false, std::memory_order_relaxed);
}

std::optional<std::string> CommandChannel::takePicture() {
    if (!mIsPictureWanted.load(std::memory_order_relaxed)) {
        return std::nullopt;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    mIsPictureWanted.store(false, std::memory_order_relaxed);
    return std::move(mPicture);
}

/// Returns the property's text, empty when there is none, and remembers which write of it that was.
void CommandChannel::read(std::string& text) {
    mProperty = mProperty != nullptr ? mProperty : __system_property_find(COMMAND_PROPERTY);
    if (mProperty == nullptr) {
        return;
    }
    std::pair<CommandChannel*, std::string*> cookie(this, &text);
    __system_property_read_callback(
        mProperty,
        [](void* opaque, const char* /*name*/, const char* value, std::uint32_t serial) {
            const auto& [channel, found] = *static_cast<decltype(cookie)*>(opaque);
            channel->mSerial = serial;
            *found = value;
        },
        &cookie);
}

void CommandChannel::watch() {
    for (;;) {
        std::uint32_t serial = 0;
        if (mProperty == nullptr || !__system_property_wait(mProperty, mSerial, &serial, nullptr)) {
            std::this_thread::sleep_for(PERIOD);
        }
        try {
            std::string text;
            read(text);
            act(text);
        } catch (const std::bad_alloc&) {  // this command is lost; there may be memory for the next
        }
    }
}

void CommandChannel::act(const std::string& text) {
    const auto command = parseCommand(text);
    if (!command) {
        if (!text.empty() && !mIsGarbageSaid) {
            mIsGarbageSaid = true;
            __android_log_print(ANDROID_LOG_WARN, TAG, "%s is not understood, it says: %s", COMMAND_PROPERTY,
                                text.c_str());
        }
        return;
    }
    if (command->number == mLastNumber) {
        return;
    }
    mLastNumber = command->number;
    if (command->kind != Command::Kind::PICTURE && !isDeveloperMode()) {
        __android_log_print(ANDROID_LOG_WARN, TAG,
                            "The command '%s' does nothing outside developer mode: set %s first",
                            text.c_str(), DEVELOPER_MODE);
    }
    switch (command->kind) {
        case Command::Kind::DUMP:
            addKey({VOLUME_UP, PRESSED});
            break;
        case Command::Kind::CAPTURE:
            addKey({VOLUME_DOWN, PRESSED});
            break;
        case Command::Kind::PICTURE:
            preparePicture(command->number);
            break;
    }
}

/// Makes the file here, so that the thread that draws does not have to.
void CommandChannel::preparePicture(const std::string& number) {
    std::string path = ownFilesFolder() + '/' + pictureName(number);
    const std::string error = makeFile(path);
    if (!error.empty()) {
        __android_log_print(ANDROID_LOG_ERROR, TAG, "No picture is written: %s: %s", path.c_str(),
                            error.c_str());
        return;
    }
    const std::lock_guard<std::mutex> lock(mMutex);
    mPicture = std::move(path);
    mIsPictureWanted.store(true, std::memory_order_relaxed);
}

}  // namespace platform
