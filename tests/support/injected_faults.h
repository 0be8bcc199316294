// Makes allocations and thread starts of the whole process fail on demand: the executable's own
// malloc family, operator new and pthread_create stand before the system's. The log is exempt, since
// its capture allocates.
//
// Threads: any may allocate; one arms.
#pragma once

enum class Fault { kAllocation, kThread };

// Fails number `first` (from 1) of the allocations or thread starts from here on, and with
// `onward` all after it, until disarmed.
void armFault(Fault kind, long first, bool onward = false);
// True when something failed.
bool disarmFault();
// Blocks allocated and not freed.
long liveBlocks();
// Failures of the imaging library's own `new` so far. The header of a matrix comes after its pixels,
// and the library loses the pixels when there is no memory for the header.
long imagingLibraryFailures();
