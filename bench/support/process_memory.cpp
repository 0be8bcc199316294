#include "support/process_memory.h"

#include <malloc.h>

#include <fstream>
#include <string>

namespace {

// The getrusage peak survives exec and fork, so a child would report its parent's; these lines of
// the status file belong to the address space.
std::size_t statusLine(const std::string& wanted) {
    std::ifstream status("/proc/self/status");
    constexpr std::size_t kKibibyte = 1024;
    std::string key;
    for (std::string line; status >> key; std::getline(status, line)) {
        std::size_t kibibytes = 0;
        if (key == wanted && status >> kibibytes) {
            return kibibytes * kKibibyte;
        }
    }
    return 0;
}

}  // namespace

void resetPeakMemory() {
    malloc_trim(0);
    std::ofstream("/proc/self/clear_refs") << 5;
}

std::size_t peakMemory() {
    return statusLine("VmHWM:");
}

std::size_t residentMemory() {
    return statusLine("VmRSS:");
}
