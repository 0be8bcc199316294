/* Preloaded by runs that are compared with one another: time stands still, so that a request on a slow
 * or emulated processor does not end at its time limit. */
#include <sys/time.h>

int gettimeofday(struct timeval* restrict result, void* restrict zone) {
    (void)zone;
    result->tv_sec = 1;
    result->tv_usec = 0;
    return 0;
}
