#include "properties/RuntimeDirectory.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <system_error>

namespace platform {
namespace {

std::string environment(const char* name) {
    const char* value = std::getenv(name);  // NOLINT(concurrency-mt-unsafe): the header says so
    return value == nullptr ? std::string() : std::string(value);
}

std::string choosePath() {
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

/// What is wrong with the folder, empty when nothing is.
std::string objection(const std::string& path) {
    if (path.front() != '/') {
        return "is not an absolute path";
    }
    const bool created = mkdir(path.c_str(), 0700) == 0;
    const int createError = errno;
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0) {
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
    // Below /tmp anyone may have prepared the place; elsewhere a group is the user's own choice.
    const mode_t refused = path.rfind("/tmp/", 0) == 0 ? S_IWGRP | S_IWOTH : S_IWOTH;
    if ((status.st_mode & refused) != 0) {
        return "can be written to by other users (chmod 700 mends it)";
    }
    return {};
}

}  // namespace

RuntimeDirectory openRuntimeDirectory() {
    RuntimeDirectory directory;
    std::string path = choosePath();
    const std::string wrong = objection(path);
    if (wrong.empty()) {
        directory.path = std::move(path);
    } else {
        directory.error =
            "the runtime directory " + path + " " + wrong + "; KORDANIX_RUNTIME_DIR can name another";
    }
    return directory;
}

}  // namespace platform
