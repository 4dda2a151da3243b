// Threads, clocks, and what the compiler and the loader call.
#include "macos/loader/system/errors.h"

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <pthread.h>
#include <sched.h>
#include <time.h>
#include <unistd.h>

namespace loader {

namespace {

// ---- Mutexes: a signature, then what is zero at first, as ours is at first ----

struct MutexOfMacos {
    std::int64_t signature;
    pthread_mutex_t here;
};
static_assert(sizeof(MutexOfMacos) <= 64);

int lockMutex(MutexOfMacos* mutex) {
    return errorOfMacos(pthread_mutex_lock(&mutex->here));
}
int unlockMutex(MutexOfMacos* mutex) {
    return errorOfMacos(pthread_mutex_unlock(&mutex->here));
}
int tryLockMutex(MutexOfMacos* mutex) {
    return errorOfMacos(pthread_mutex_trylock(&mutex->here));
}
int destroyMutex(MutexOfMacos* mutex) {
    return errorOfMacos(pthread_mutex_destroy(&mutex->here));
}

// A condition of Linux does not fit into one of macOS. Whoever waits may wake without a reason and
// looks again, so here it always does.
int waitForCondition(void*, MutexOfMacos* mutex) {
    unlockMutex(mutex);
    sched_yield();
    return lockMutex(mutex);
}
int wakeAll(void*) {
    return 0;
}

// A number that no other living thread has.
unsigned int threadNumber(pthread_t) {
    return static_cast<unsigned int>(gettid());
}

// ---- Clocks ----

int readClock(int clock, timespec* time) {
    switch (clock) {
    case 0:
        return withErrno([&] { return clock_gettime(CLOCK_REALTIME, time); });
    case 4:
        return withErrno([&] { return clock_gettime(CLOCK_MONOTONIC_RAW, time); });
    case 6:
    case 8: // stands still while the machine sleeps
        return withErrno([&] { return clock_gettime(CLOCK_MONOTONIC, time); });
    default:
        bundleErrno() = errorOfMacos(EINVAL);
        return -1;
    }
}

// ---- What the compiler calls ----

struct SineAndCosine {
    double sine;
    double cosine;
};
SineAndCosine sineAndCosine(double angle) {
    return {std::sin(angle), std::cos(angle)};
}

void clearBytes(void* bytes, std::size_t size) {
    std::memset(bytes, 0, size);
}

void repeatPattern(void* bytes, const void* pattern, std::size_t size) {
    auto* place = static_cast<char*>(bytes);
    for (; size >= 16; size -= 16, place += 16) {
        std::memcpy(place, pattern, 16);
    }
    std::memcpy(place, pattern, size);
}

[[noreturn]] void failAssertion(const char* function, const char* file, int line,
                                const char* condition) {
    std::fprintf(stderr, "%s:%d: %s: not so: %s\n", file, line, function, condition);
    std::abort();
}

// ---- What the loader is called for ----

// Thread locals and late imports are seen to before anything runs.
void neverCalled() {
    std::abort();
}

// Nothing else can be loaded. Asked for the system's version, the C++ runtime then knows none.
void* loadNothing(const char*, int) {
    return nullptr;
}
void* findNothing(void*, const char*) {
    return nullptr;
}

} // namespace

Symbols processSymbols() {
    static std::uintptr_t stackGuard = 0x00A5C35A'96E17B2D; // a text ends before its lowest zero
    return {
        {"_pthread_mutex_lock", addressOf(lockMutex)},
        {"_pthread_mutex_unlock", addressOf(unlockMutex)},
        {"_pthread_mutex_trylock", addressOf(tryLockMutex)},
        {"_pthread_mutex_destroy", addressOf(destroyMutex)},
        {"_pthread_cond_wait", addressOf(waitForCondition)},
        {"_pthread_cond_broadcast", addressOf(wakeAll)},
        {"_pthread_mach_thread_np", addressOf(threadNumber)},
        {"_clock_gettime", addressOf(readClock)},
        {"___sincos_stret", addressOf(sineAndCosine)},
        {"___bzero", addressOf(clearBytes)},
        {"___assert_rtn", addressOf(failAssertion)},
        {"_memset_pattern16", addressOf(repeatPattern)},
        {"___stack_chk_guard", addressOf(&stackGuard)},
        {"___stack_chk_fail", addressOf(std::abort)},
        {"__tlv_bootstrap", addressOf(neverCalled)},
        {"dyld_stub_binder", addressOf(neverCalled)},
        {"_dlopen", addressOf(loadNothing)},
        {"_dlsym", addressOf(findNothing)},
    };
}

} // namespace loader
