#include "figures/sources/Value.h"

#include <cerrno>

namespace sources {

Reason reasonOf(int error) {
    switch (error) {
        case 0:
            return Reason::NONE;
        case EACCES:
            return Reason::NOT_ALLOWED;
        // Drivers answer so while the card sleeps or is being reset.
        case EPERM:
        case EBUSY:
        case EAGAIN:
        case ENODATA:
            return Reason::ASLEEP;
        case EINVAL:
        case EOPNOTSUPP:
        case ENODEV:
        case EIO:
            return Reason::NOT_SUPPORTED;
        default:
            return Reason::NO_FILE;
    }
}

const char* describe(Reason reason) {
    switch (reason) {
        case Reason::NONE:
            return "";
        case Reason::NOT_READ:
            return "it has not been read yet";
        case Reason::NO_FILE:
            return "there is no such file";
        case Reason::NOT_ALLOWED:
            return "this user may not read it";
        case Reason::ASLEEP:
            return "the device is asleep, and is not woken for it";
        case Reason::NOT_SUPPORTED:
            return "the driver does not tell it";
        case Reason::SWITCHED_OFF:
            return "the driver's profiling is switched off";
        case Reason::MALFORMED:
            return "the file holds something else";
        case Reason::FIRST_READING:
            return "a rate needs two readings";
        case Reason::NO_PROCESS:
            return "it belongs to a process; --process PID names one";
        case Reason::NO_DEVICE:
            return "no GPU is known";
        case Reason::NOT_ANSWERING:
            return "the driver's library does not answer";
    }
    return "";
}

}  // namespace sources
