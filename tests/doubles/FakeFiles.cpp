#include "doubles/FakeFiles.h"

#include <dlfcn.h>

#include <cerrno>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <set>

namespace {

struct Files {
    std::mutex mutex;
    std::map<std::string, std::string> contents;
    std::map<std::string, unsigned> opened;
    std::set<std::FILE*> open;
};

Files& files() {
    static Files* const instance = new Files;
    return *instance;
}

bool isServed(const std::string& path) {
    return path.rfind("/proc/", 0) == 0 || path.rfind("/sys/", 0) == 0;
}

template <typename Function>
Function realFunction(const char* name) {
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

}  // namespace

namespace doubles {

void setFile(const std::string& path, const std::string& content) {
    const std::lock_guard<std::mutex> lock(files().mutex);
    files().contents[path] = content;
}

void removeFile(const std::string& path) {
    const std::lock_guard<std::mutex> lock(files().mutex);
    files().contents.erase(path);
}

void removeAllFiles() {
    const std::lock_guard<std::mutex> lock(files().mutex);
    files().contents.clear();
}

unsigned timesOpened(const std::string& path) {
    const std::lock_guard<std::mutex> lock(files().mutex);
    const auto found = files().opened.find(path);
    return found == files().opened.end() ? 0 : found->second;
}

int openFiles() {
    const std::lock_guard<std::mutex> lock(files().mutex);
    return static_cast<int>(files().open.size());
}

}  // namespace doubles

extern "C" std::FILE* fopen(const char* path, const char* mode) {
    if (!isServed(path)) {
        static const auto realOpen = realFunction<std::FILE* (*)(const char*, const char*)>("fopen");
        return realOpen(path, mode);
    }
    const std::lock_guard<std::mutex> lock(files().mutex);
    ++files().opened[path];
    const auto found = files().contents.find(path);
    if (found == files().contents.end()) {
        errno = ENOENT;
        return nullptr;
    }
    // A copy of the content that the stream owns, so that a test may change the file while it is open.
    std::FILE* const stream = fmemopen(nullptr, found->second.size() + 1, "w+");
    if (stream != nullptr) {
        std::fwrite(found->second.data(), 1, found->second.size(), stream);
        std::fflush(stream);
        std::rewind(stream);
        files().open.insert(stream);
    }
    return stream;
}

extern "C" int fclose(std::FILE* stream) {
    {
        const std::lock_guard<std::mutex> lock(files().mutex);
        files().open.erase(stream);
    }
    static const auto realClose = realFunction<int (*)(std::FILE*)>("fclose");
    return realClose(stream);
}
