// Visibility of the library's symbols: the library is compiled with hidden visibility, and what a
// host or a test may reach is marked with SEGCORE_API.
#pragma once

#ifndef SEGCORE_API
#define SEGCORE_API __attribute__((visibility("default")))
#endif

// For data, and for classes whose members are static data. Their plain names (`storage`,
// `contours`) may well be those of a host's own variables. Protected symbols stay exported, but the
// library's references to them always mean its own. Hosts that read them are compiled with -fPIC,
// as the CMake target SegmentationCore::Engine asks for; without it the program would hold a copy,
// which linkers refuse for a protected symbol.
#ifndef SEGCORE_DATA_API
#ifdef SEGCORE_BUILDING
#define SEGCORE_DATA_API __attribute__((visibility("protected")))
#else
#define SEGCORE_DATA_API SEGCORE_API
#endif
#endif

// For inline functions: the engine's loops get their body, hosts that look symbols up a callable
// copy in the library.
#ifndef SEGCORE_INLINE_API
#define SEGCORE_INLINE_API SEGCORE_API __attribute__((used))
#endif
