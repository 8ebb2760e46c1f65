#include "properties/RuntimeDirectory.h"

#include "runs/RunFolder.h"

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <memory>
#include <system_error>

namespace platform {
namespace {

struct OwnDirectory {
    std::string path;
    const OwnDirectory* previous;  ///< kept, because somebody may still refer to its path
};

/// No destructor, since a thread that reads properties outlives the statics.
std::atomic<const OwnDirectory*> gOwn = nullptr;
std::atomic<bool> gIsOwnChosen = false;

std::string environment(const char* name) {
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): the header says so
    return value == nullptr ? std::string() : std::string(value);
}

/// Whether the folder really lies below /tmp, whatever its path looks like.
bool isBelowTmp(const std::string& path) {
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr), &std::free);
    return real == nullptr || std::string(real.get()).rfind("/tmp/", 0) == 0;
}

/// Says what is wrong with the folder; empty when nothing is.
std::string objection(const std::string& path) {
    if (path.front() != '/') {
        return "is not an absolute path";
    }
    const bool isOfRun = runProcess(path) != 0;
    const bool created = !isOfRun && mkdir(path.c_str(), 0700) == 0;
    const int createError = errno;
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0) {
        if (isOfRun && errno == ENOENT) {
            return "is that of a run that has ended";
        }
        return "cannot be created: " + std::generic_category().message(created ? errno : createError);
    }
    if (S_ISLNK(status.st_mode)) {
        return "is a symbolic link";
    }
    if (!S_ISDIR(status.st_mode)) {
        return "is not a folder";
    }
    if (status.st_uid != geteuid()) {
        return "belongs to another user (id " + std::to_string(status.st_uid) + ")";
    }
    // Below /tmp, anyone may have prepared the folder; elsewhere the user chose to let a group write to it.
    if ((status.st_mode & S_IWOTH) != 0 || ((status.st_mode & S_IWGRP) != 0 && isBelowTmp(path))) {
        return "can be written to by other users (chmod 700 mends it)";
    }
    return {};
}

}  // namespace

std::string runtimeDirectoryPath() {
    std::string path = environment("KORDANIX_RUNTIME_DIR");
    if (path.empty()) {
        path = environment("XDG_RUNTIME_DIR");
        path = path.empty() ? "/tmp/kordanix-" + std::to_string(geteuid()) : path + "/kordanix";
    }
    // With a slash at its end, lstat would follow a symbolic link.
    while (path.size() > 1 && path.back() == '/') {
        path.pop_back();
    }
    return path;
}

RuntimeDirectory openRuntimeDirectory(const std::string& path) {
    const std::string wrong = objection(path);
    if (wrong.empty()) {
        return {path, {}};
    }
    return {{}, "the runtime directory " + path + " " + wrong + "; KORDANIX_RUNTIME_DIR can name another"};
}

RuntimeDirectory openRuntimeDirectory() {
    return openRuntimeDirectory(runtimeDirectoryPath());
}

const std::string* ownRuntimeDirectory(std::string& error) {
    const OwnDirectory* own = gOwn.load(std::memory_order_acquire);
    if (own != nullptr && gIsOwnChosen.load(std::memory_order_acquire)) {
        return &own->path;
    }
    RuntimeDirectory found = openRuntimeDirectory();
    error = found.error;
    if (!error.empty()) {
        return nullptr;
    }
    auto fresh = std::make_unique<OwnDirectory>(OwnDirectory{std::move(found.path), own});
    // When several threads get here at once, the first one wins.
    if (gOwn.compare_exchange_strong(own, fresh.get(), std::memory_order_acq_rel)) {
        own = fresh.release();
    }
    gIsOwnChosen.store(true, std::memory_order_release);
    return &own->path;
}

void useRuntimeDirectory(const std::string& directory) {
    auto fresh =
        std::make_unique<OwnDirectory>(OwnDirectory{directory, gOwn.load(std::memory_order_acquire)});
    gOwn.store(fresh.release(), std::memory_order_release);
    gIsOwnChosen.store(true, std::memory_order_release);
}

void changeRuntimeDirectory(const std::string& directory) {
    // NOLINTNEXTLINE(concurrency-mt-unsafe): the header says so
    setenv("KORDANIX_RUNTIME_DIR", directory.c_str(), 1);
    gIsOwnChosen.store(false, std::memory_order_release);
}

}  // namespace platform
