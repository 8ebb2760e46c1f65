#include "doubles/FakeThreads.h"

#include <dlfcn.h>
#include <pthread.h>

#include <cerrno>

extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                              void* argument) {
    static const auto realCreate =
        reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
    if (doubles::refusedThreads() > 0) {
        --doubles::refusedThreads();
        return EAGAIN;
    }
    return realCreate(thread, attributes, body, argument);
}
