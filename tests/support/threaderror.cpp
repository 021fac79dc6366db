// SPDX-License-Identifier: Apache-2.0
// Makes threads, or fails to. Called by the C++ library, so the linker cannot wrap it; the
// program's own one is found first.
#include "threaderror.h"

#include <dlfcn.h>
#include <pthread.h>

std::atomic<int> gThreadError{0};

extern "C" [[gnu::visibility("default")]] int pthread_create(pthread_t* thread,
                                                             const pthread_attr_t* attributes,
                                                             void* (*start)(void*),
                                                             void* argument) noexcept
{
    using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto real = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
    return gThreadError != 0 ? gThreadError.load() : real(thread, attributes, start, argument);
}
