// Peak memory of this process, in bytes.
#pragma once

#include <cstddef>

// Forgets the peak so far: it starts again from what is resident now. Freed memory that the
// allocator still holds is given back first.
void resetPeakMemory();

// The largest resident size since then, everything included: program, libraries, the host's own
// buffers, the engine.
std::size_t peakMemory();
std::size_t residentMemory();
