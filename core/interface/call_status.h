// What became of the latest host call, for the calls that tell it.
//
// Threads: the one that makes the calls.
#pragma once

namespace call_status {

constexpr int kLongestReason = 256;

// One of the status codes of the public header. The reason is copied, and cut where it is long.
void set(int status, const char* reason = "") noexcept;
int latest() noexcept;
const char* reason() noexcept;

}  // namespace call_status
