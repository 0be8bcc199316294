// Visibility of the library's symbols: the library is compiled with hidden visibility, and what a
// host or a test may reach is marked with SEGCORE_API.
#pragma once

#ifndef SEGCORE_API
#define SEGCORE_API __attribute__((visibility("default")))
#endif
