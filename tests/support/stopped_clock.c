/* Preloaded by runs on a slow or emulated processor: the time of day stands still, so that no request
 * ends at its time limit. Clocks that measure intervals go on. */
#define _GNU_SOURCE
#include <sys/syscall.h>
#include <sys/time.h>
#include <time.h>
#include <unistd.h>

enum { kSeconds = 1 };

int gettimeofday(struct timeval* restrict result, void* restrict zone) {
    (void)zone;
    result->tv_sec = kSeconds;
    result->tv_usec = 0;
    return 0;
}

int clock_gettime(clockid_t clock, struct timespec* result) {
    if (clock != CLOCK_REALTIME) {
        return (int)syscall(SYS_clock_gettime, clock, result);
    }
    result->tv_sec = kSeconds;
    result->tv_nsec = 0;
    return 0;
}
