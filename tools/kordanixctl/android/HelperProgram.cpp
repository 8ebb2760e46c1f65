#include "android/HelperProgram.h"

#include "io/PlainFile.h"

#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <system_error>

namespace control {

namespace {

constexpr int SIGNALLED = 128;

[[noreturn]] void failWith(int error, const std::string& what) {
    throw std::system_error(error, std::generic_category(), what);
}

/// A file without a name. Unlike a pipe it never fills up, and a server that adb leaves running does not keep
/// us waiting for its end.
class Stream {
public:
    Stream() : mFile(memfd_create("kordanixctl", MFD_CLOEXEC)) {
        if (mFile < 0) {
            failWith(errno, "no memory for the output of a program");
        }
    }
    ~Stream() { close(mFile); }
    Stream(const Stream&) = delete;
    Stream& operator=(const Stream&) = delete;

    int file() const { return mFile; }

    void fill(std::string_view bytes) const {
        const int error = platform::writeAll(mFile, bytes);
        if (error != 0) {
            failWith(error, "no memory for the input of a program");
        }
        lseek(mFile, 0, SEEK_SET);
    }

    std::string contents() const {
        std::string bytes(static_cast<std::size_t>(lseek(mFile, 0, SEEK_END)), '\0');
        std::size_t size = 0;
        ssize_t part = 1;
        while (size < bytes.size() && part > 0) {
            part = pread(mFile, bytes.data() + size, bytes.size() - size, static_cast<off_t>(size));
            size += part > 0 ? static_cast<std::size_t>(part) : 0;
        }
        bytes.resize(size);
        return bytes;
    }

private:
    int mFile;
};

/// Attributes of a child with the default actions of signals that we ignore, and its three streams.
class Start {
public:
    Start(const Stream& in, const Stream& out, const Stream& err) {
        sigset_t signals;
        sigemptyset(&signals);
        sigaddset(&signals, SIGPIPE);
        sigaddset(&signals, SIGXFSZ);
        posix_spawnattr_init(&mAttributes);
        posix_spawnattr_setsigdefault(&mAttributes, &signals);
        posix_spawnattr_setflags(&mAttributes, POSIX_SPAWN_SETSIGDEF);
        posix_spawn_file_actions_init(&mActions);
        posix_spawn_file_actions_adddup2(&mActions, in.file(), STDIN_FILENO);
        posix_spawn_file_actions_adddup2(&mActions, out.file(), STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&mActions, err.file(), STDERR_FILENO);
    }
    ~Start() {
        posix_spawn_file_actions_destroy(&mActions);
        posix_spawnattr_destroy(&mAttributes);
    }
    Start(const Start&) = delete;
    Start& operator=(const Start&) = delete;

    posix_spawnattr_t mAttributes = {};
    posix_spawn_file_actions_t mActions = {};
};

}  // namespace

Answer runHelper(const std::string& path, const std::vector<std::string>& arguments, std::string_view input) {
    const Stream in;
    const Stream out;
    const Stream err;
    in.fill(input);
    std::vector<char*> words = {const_cast<char*>(path.c_str())};  // the interface is older than const
    for (const std::string& argument : arguments) {
        words.push_back(const_cast<char*>(argument.c_str()));
    }
    words.push_back(nullptr);
    const Start start(in, out, err);
    pid_t process = 0;
    const int error =
        posix_spawn(&process, path.c_str(), &start.mActions, &start.mAttributes, words.data(), environ);
    if (error != 0) {
        failWith(error, path);
    }
    int status = 0;
    while (waitpid(process, &status, 0) < 0) {
        if (errno != EINTR) {
            failWith(errno, path);
        }
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : SIGNALLED + WTERMSIG(status), out.contents(),
            err.contents()};
}

}  // namespace control
