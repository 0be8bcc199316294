// What the library logs. A user gets one line for an error, the program's own, so the log is kept
// back and the library's reason goes into that line; a verbose run shows the log on standard error.
#pragma once

#include <string>

// From here on the library's log lines come here.
void keepEngineLog();
void showEngineLog();

// The first error that the library logged since the last call; empty when there was none.
std::string takeEngineError();
