// The library's log in a program at a terminal. An error that concerns the user is told in the
// program's own words, so the log is kept back unless it is asked for.
#pragma once

// To be called before any other call of the library.
void hideEngineLog();
// From here on each line goes to standard error, with its tag.
void showEngineLog();
