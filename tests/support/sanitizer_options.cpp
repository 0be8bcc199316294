// An allocation that cannot be met gives null under the address sanitizer too: what the library
// does then is tested.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
    return "allocator_may_return_null=1";
}

// Reading image files loads a geographic data library whose own locks come in two orders.
extern "C" const char* __tsan_default_suppressions();
extern "C" const char* __tsan_default_suppressions() {
    return "deadlock:libgdal";
}
