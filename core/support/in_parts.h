// Passes over a photograph on several cores.
#pragma once

#include <algorithm>
#include <cstdint>
#include <thread>

#include "support/thread_batch.h"

namespace in_parts {

constexpr int kMostParts = 4;  // memory feeds no more
// Below these a thread costs more than it brings: for moving bytes, and for computing.
constexpr std::int64_t kLeastMoved = std::int64_t{1} << 20;
constexpr std::int64_t kLeastComputed = std::int64_t{1} << 16;

inline std::int64_t cores() {
    return static_cast<std::int64_t>(std::thread::hardware_concurrency());
}

template <typename Work>
struct Part {
    const Work* work;
    int first;
    int last;
};

template <typename Work>
void run(void* argument) {
    const auto* const part = static_cast<const Part<Work>*>(argument);
    (*part->work)(part->first, part->last);
}

template <typename Work>
void* runOnThread(void* argument) {
    run<Work>(argument);
    return nullptr;
}

}  // namespace in_parts

// Calls work(first, last) for consecutive ranges that make up 0 .. count - 1, one per core where the
// pixels are worth it, at the same time. The ranges must not depend on one another, and the work must
// not throw. Throws std::bad_alloc before any work is done.
template <typename Work>
void inParts(int count, std::int64_t pixelsEach, const Work& work) {
    using namespace in_parts;
    const std::int64_t worthwhile = count * pixelsEach / kLeastMoved;
    const std::int64_t parts =
        std::clamp<std::int64_t>(std::min(cores(), worthwhile), 1, kMostParts);
    Part<Work> all[kMostParts];
    ThreadBatch threads(kMostParts);
    const auto bound = [&](int part) { return static_cast<int>(count * part / parts); };
    for (int i = 1; i < parts; ++i) {
        all[i] = {&work, bound(i), bound(i + 1)};
        threads.start(runOnThread<Work>, run<Work>, &all[i]);
    }
    work(0, bound(1));
}

// Calls both, at the same time where the pixels are worth it. Neither may depend on the other; only
// `here` may throw, and runs on the calling thread.
template <typename Here, typename Aside>
void sideBySide(std::int64_t pixels, const Here& here, const Aside& aside) {
    using namespace in_parts;
    const auto asPart = [&aside](int /*first*/, int /*last*/) { aside(); };
    using Work = decltype(asPart);
    Part<Work> part = {&asPart, 0, 1};
    ThreadBatch threads(1);
    if (pixels >= kLeastComputed && cores() > 1) {
        threads.start(runOnThread<Work>, run<Work>, &part);
    } else {
        aside();
    }
    here();
}
