// If a program never called a swap that we saw, it leaves a note in its run's folder, in the form of
// platform/runs/OverlayNote.cpp. Without the note the launcher could not tell whether the program uses OpenGL
// at all.

#include "opengl/shim/LayerLoader.h"

#include <errno.h>
#include <fcntl.h>
#include <link.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <initializer_list>

namespace opengl {

namespace {

constexpr const char* MARKER_TEXT = "This folder belongs to a program that kordanixctl started.\n";

int isOpenGl(dl_phdr_info* library, std::size_t, void*) {
    const char* const slash = strrchr(library->dlpi_name, '/');
    const char* const file = slash != nullptr ? slash + 1 : library->dlpi_name;
    for (const char* name : {"libGL.so", "libEGL.so", "libGLX.so", "libOpenGL.so", "libGLESv2.so"}) {
        if (strncmp(file, name, strlen(name)) == 0) {
            return 1;
        }
    }
    return 0;
}

/// Opens a regular file of this user, never a link, and never waits.
int openFile(int folder, const char* name, int flags) {
    const int file = openat(folder, name, flags | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, 0600);
    struct stat status = {};
    if (file >= 0 && (fstat(file, &status) != 0 || !S_ISREG(status.st_mode) || status.st_uid != geteuid())) {
        close(file);
        return -1;
    }
    return file;
}

/// Reads the program's name into one line, without bytes that would need escaping.
void readName(char* name, std::size_t size) {
    const int file = open("/proc/self/cmdline", O_RDONLY | O_CLOEXEC);
    const ssize_t length = file >= 0 ? read(file, name, size - 1) : 0;
    if (file >= 0) {
        close(file);
    }
    name[length > 0 ? length : 0] = '\0';
    char* end = name;
    for (const char* from = name; *from != '\0'; ++from) {
        if (static_cast<unsigned char>(*from) > ' ' && *from != '\\' && *from != '\x7f') {
            *end++ = *from;
        }
    }
    *end = '\0';
}

bool isRun(int folder) {
    char text[128] = {};
    const int marker = openFile(folder, "run", O_RDONLY);
    const ssize_t length = marker >= 0 ? read(marker, text, sizeof(text) - 1) : -1;
    if (marker >= 0) {
        close(marker);
    }
    return length > 0 && strcmp(text, MARKER_TEXT) == 0;
}

void write(int folder) {
    char name[256];
    char text[512];
    char file[32];
    readName(name, sizeof(name));
    const int length = snprintf(text, sizeof(text),
                                "kordanix note 2\nname %s\napi 0\nshown 0\nframes 0\nreason "
                                "it loaded OpenGL, but no swap came to the overlay: it presents nothing, or "
                                "finds its functions past it (RTLD_DEEPBIND)\nown 0\n",
                                name);
    snprintf(file, sizeof(file), "note.%d", static_cast<int>(getpid()));
    const int note = openFile(folder, file, O_WRONLY | O_CREAT | O_EXCL);
    if (note < 0) {
        return;
    }
    const bool isWritten = ::write(note, text, static_cast<std::size_t>(length)) == length;
    close(note);
    if (!isWritten) {
        unlinkat(folder, file, 0);
    }
}

[[gnu::destructor]] void tellAtExit() {
    const char* const path = getenv("KORDANIX_RUNTIME_DIR");  // NOLINT(concurrency-mt-unsafe)
    if (path == nullptr || hasSwapped() || dl_iterate_phdr(isOpenGl, nullptr) == 0) {
        return;
    }
    const int callersErrno = errno;
    const int folder = open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (folder >= 0) {
        if (isRun(folder)) {
            // A file-size limit must not kill the program here.
            sigset_t limit;
            sigset_t previous;
            sigset_t pending;
            sigemptyset(&limit);
            sigaddset(&limit, SIGXFSZ);
            sigpending(&pending);
            pthread_sigmask(SIG_BLOCK, &limit, &previous);
            write(folder);
            const timespec now = {};
            if (sigismember(&pending, SIGXFSZ) == 0) {
                sigtimedwait(&limit, nullptr, &now);
            }
            pthread_sigmask(SIG_SETMASK, &previous, nullptr);
        }
        close(folder);
    }
    errno = callersErrno;
}

}  // namespace

}  // namespace opengl
