#include "interface/call_status.h"

#include <cstdio>

#include "interface/host_call.h"
#include "interface/segmentation_core.h"

namespace {

int status = SEGCORE_DONE;
// No memory is needed to tell that there is none.
char text[call_status::kLongestReason] = "";

}  // namespace

namespace call_status {

void set(int newStatus, const char* newReason) noexcept {
    status = newStatus;
    std::snprintf(text, sizeof text, "%s", newReason);
}

int latest() noexcept {
    return status;
}

const char* reason() noexcept {
    return text;
}

}  // namespace call_status

int segcore_last_status(void) {
    return admitsCall("segcore_last_status") ? call_status::latest() : SEGCORE_REFUSED;
}

const char* segcore_last_reason(void) {
    return admitsCall("segcore_last_reason") ? call_status::reason() : "";
}
