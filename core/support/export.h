// Visibility of the library's symbols: the library is compiled with hidden visibility, and what a
// host or a test may reach is marked with SEGCORE_API.
#pragma once

#ifndef SEGCORE_API
#define SEGCORE_API __attribute__((visibility("default")))
#endif

// For inline functions: the engine's loops get their body, hosts that look symbols up a callable
// copy in the library.
#ifndef SEGCORE_INLINE_API
#define SEGCORE_INLINE_API SEGCORE_API __attribute__((used))
#endif
