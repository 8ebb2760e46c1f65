#include "doubles/FakeFiles.h"

#include <dlfcn.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <map>
#include <mutex>

namespace {

std::atomic<int> gOpen{0};

struct Files {
    std::mutex mutex;
    std::map<std::string, std::string> contents;
    std::map<std::string, unsigned> opened;
};

Files& allFiles() {
    static auto* const instance = new Files;
    return *instance;
}

/// Calls with all files, which are nobody else's meanwhile.
template <typename Work>
auto withFiles(const Work& work) {
    const std::lock_guard<std::mutex> lock(allFiles().mutex);
    return work(allFiles());
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
    withFiles([&](Files& files) { files.contents[path] = content; });
}

void removeFile(const std::string& path) {
    withFiles([&](Files& files) { files.contents.erase(path); });
}

void removeAllFiles() {
    withFiles([](Files& files) { files.contents.clear(); });
}

unsigned timesOpened(const std::string& path) {
    return withFiles([&](Files& files) { return files.opened[path]; });
}

int openFiles() {
    return gOpen;
}

}  // namespace doubles

extern "C" std::FILE* fopen(const char* path, const char* mode) {
    const std::string name = path;
    if (name.rfind("/proc/", 0) != 0 && name.rfind("/sys/", 0) != 0) {
        static const auto realOpen = reinterpret_cast<decltype(&fopen)>(dlsym(RTLD_NEXT, "fopen"));
        return realOpen(path, mode);
    }
    return withFiles([&](Files& files) -> std::FILE* {
        ++files.opened[name];
        const auto found = files.contents.find(name);
        errno = ENOENT;
        return found == files.contents.end() ? nullptr : openText(found->second);
    });
}
