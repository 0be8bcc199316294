#include "support/injected_faults.h"

#include <dlfcn.h>
#include <pthread.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <new>

#include "support/log_capture.h"

#ifdef SEGCORE_INTERCEPTED_ALLOCATOR
#define SYSTEM(name) __interceptor_##name
constexpr bool kIntercepted = true;
#else
#define SYSTEM(name) __libc_##name
constexpr bool kIntercepted = false;
#endif

extern "C" {
void* SYSTEM(malloc)(std::size_t);
void* SYSTEM(calloc)(std::size_t, std::size_t);
void* SYSTEM(realloc)(void*, std::size_t);
void* SYSTEM(memalign)(std::size_t, std::size_t);
void SYSTEM(free)(void*);
}

namespace {

constexpr long kDisarmed = LONG_MAX;
std::atomic<long> countdown[2]{{kDisarmed}, {kDisarmed}};  // by kind; below 1 after the first fault
std::atomic<bool> failsOnward{false};
std::atomic<bool> hasFailed{false};
std::atomic<long> live{0};
std::atomic<long> imagingFailures{0};

// The address sanitizer does not survive a failure of its own while it starts a thread.
thread_local bool exempt = kIntercepted;

bool failsNow(Fault kind) {
    std::atomic<long>& left = countdown[static_cast<int>(kind)];
    if (left.load(std::memory_order_relaxed) == kDisarmed || isLogging() ||
        (exempt && kind == Fault::kAllocation)) {
        return false;
    }
    const long before = left.fetch_sub(1);
    if (before > 1 || (before < 1 && !failsOnward)) {
        return false;
    }
    hasFailed = true;
    return true;
}

template <typename Allocate>
void* allocate(Allocate&& allocation) {
    void* block = failsNow(Fault::kAllocation) ? nullptr : allocation();
    if (block == nullptr) {
        errno = ENOMEM;
    } else {
        live.fetch_add(1, std::memory_order_relaxed);
    }
    return block;
}

}  // namespace

void armFault(Fault kind, long first, bool onward) {
    exempt = false;  // this thread
    hasFailed = false;
    failsOnward = onward;
    countdown[static_cast<int>(kind)] = first;
}

bool disarmFault() {
    countdown[0] = countdown[1] = kDisarmed;
    return hasFailed;
}

long liveBlocks() {
    return live;
}

long imagingLibraryFailures() {
    return imagingFailures;
}

extern "C" {

// What imagingLibraryFailures counts, and what the loader keeps, which goes unnoticed only when it
// comes from the system's allocator directly.
const char* __lsan_default_suppressions();
const char* __lsan_default_suppressions() {
    return "leak:cv::Mat::create\nleak:cv::_OutputArray::create\nleak:ld-linux";
}

void* malloc(std::size_t size) noexcept {
    return allocate([=] { return SYSTEM(malloc)(size); });
}

void* calloc(std::size_t count, std::size_t size) noexcept {
    return allocate([=] { return SYSTEM(calloc)(count, size); });
}

void* realloc(void* block, std::size_t size) noexcept {
    if (block == nullptr) {
        return malloc(size);
    }
    return failsNow(Fault::kAllocation) ? nullptr : SYSTEM(realloc)(block, size);
}

int posix_memalign(void** block, std::size_t alignment, std::size_t size) noexcept {
    *block = allocate([=] { return SYSTEM(memalign)(alignment, size); });
    return *block == nullptr ? ENOMEM : 0;
}

void* aligned_alloc(std::size_t alignment, std::size_t size) noexcept {
    return allocate([=] { return SYSTEM(memalign)(alignment, size); });
}

void free(void* block) noexcept {
    if (block != nullptr) {
        live.fetch_sub(1, std::memory_order_relaxed);
    }
    SYSTEM(free)(block);
}

int pthread_create(pthread_t* __restrict thread, const pthread_attr_t* __restrict attributes,
                   void* (*entry)(void*), void* __restrict argument) noexcept {
    using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
    static const auto create = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
    if (failsNow(Fault::kThread)) {
        return EAGAIN;
    }
    exempt = kIntercepted;
    const int failure = create(thread, attributes, entry, argument);
    exempt = false;
    return failure;
}

}  // extern "C"

void* operator new(std::size_t size) {
    if (void* block = std::malloc(size)) {
        return block;
    }
    Dl_info caller{};
    if (dladdr(__builtin_return_address(0), &caller) != 0 &&
        std::strstr(caller.dli_fname, "libopencv") != nullptr) {
        ++imagingFailures;
    }
    throw std::bad_alloc();
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size);
}
void* operator new[](std::size_t size) {
    return operator new(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}
