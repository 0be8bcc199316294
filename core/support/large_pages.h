// Large pages for large blocks. A photograph's images are written whole right after they are made,
// and most of that time is spent by the system on handing out small pages one by one.
#pragma once

#include <cstddef>
#include <cstdint>

#ifdef __linux__
#include <sys/mman.h>
#include <unistd.h>
#endif

// Asks the system to back the block with large pages. It need not do so. Small blocks do not ask.
inline void preferLargePages(void* block, std::size_t bytes) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
    constexpr std::size_t kWorthwhile = std::size_t{4} << 20;  // two large pages of the usual size
    if (block == nullptr || bytes < kWorthwhile) {
        return;
    }
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto past = reinterpret_cast<std::uintptr_t>(block) % page;
    const std::uintptr_t skipped = past == 0 ? 0 : page - past;
    madvise(static_cast<char*>(block) + skipped, bytes - skipped, MADV_HUGEPAGE);
#else
    static_cast<void>(block);
    static_cast<void>(bytes);
#endif
}
