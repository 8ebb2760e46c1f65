#include "doubles/FakeFiles.h"

#include <dlfcn.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <map>
#include <mutex>

namespace {

std::mutex gMutex;
std::atomic<int> gOpen{0};

std::map<std::string, std::string>& contents() {
    static auto* const instance = new std::map<std::string, std::string>;
    return *instance;
}

std::map<std::string, unsigned>& opened() {
    static auto* const instance = new std::map<std::string, unsigned>;
    return *instance;
}

/// A stream that has a copy of the content, so that a test may change the file while it is open.
std::FILE* openText(const std::string& content) {
    cookie_io_functions_t functions = {};
    functions.read = [](void* rest, char* buffer, std::size_t size) {
        auto& text = *static_cast<std::string*>(rest);
        const std::size_t read = text.copy(buffer, size);
        text.erase(0, read);
        return static_cast<ssize_t>(read);
    };
    functions.close = [](void* rest) {
        --gOpen;
        delete static_cast<std::string*>(rest);
        return 0;
    };
    ++gOpen;
    return fopencookie(new std::string(content), "r", functions);
}

}  // namespace

namespace doubles {

void setFile(const std::string& path, const std::string& content) {
    const std::lock_guard<std::mutex> lock(gMutex);
    contents()[path] = content;
}

void removeFile(const std::string& path) {
    const std::lock_guard<std::mutex> lock(gMutex);
    contents().erase(path);
}

void removeAllFiles() {
    const std::lock_guard<std::mutex> lock(gMutex);
    contents().clear();
}

unsigned timesOpened(const std::string& path) {
    const std::lock_guard<std::mutex> lock(gMutex);
    return opened()[path];
}

int openFiles() {
    return gOpen;
}

}  // namespace doubles

extern "C" std::FILE* fopen(const char* path, const char* mode) {
    const std::string name = path;
    if (name.rfind("/proc/", 0) != 0 && name.rfind("/sys/", 0) != 0) {
        static const auto realOpen =
            reinterpret_cast<std::FILE* (*)(const char*, const char*)>(dlsym(RTLD_NEXT, "fopen"));
        return realOpen(path, mode);
    }
    const std::lock_guard<std::mutex> lock(gMutex);
    ++opened()[name];
    const auto found = contents().find(name);
    if (found == contents().end()) {
        errno = ENOENT;
        return nullptr;
    }
    return openText(found->second);
}
