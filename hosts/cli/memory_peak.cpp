#include "memory_peak.h"

#include <sys/resource.h>

#include <fstream>
#include <string>

namespace {

constexpr double kKilobytesInMegabyte = 1024.0;

}  // namespace

void MemoryPeak::forgetPeak() {
    constexpr char kForgetPeakOnly = '5';
    std::ofstream("/proc/self/clear_refs") << kForgetPeakOnly;
}

double MemoryPeak::peakMegabytes() {
    std::ifstream status("/proc/self/status");
    for (std::string word; status >> word;) {
        double kilobytes = 0.0;
        if (word == "VmHWM:" && status >> kilobytes) {
            return kilobytes / kKilobytesInMegabyte;
        }
    }
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / kKilobytesInMegabyte;
}
