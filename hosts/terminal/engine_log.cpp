#include "terminal/engine_log.h"

#include <cstdio>

#include "interface/segmentation_core.h"

namespace {

constexpr int kAnyLevel = 0;
constexpr int kAboveAllLevels = 100;

void print(int /*level*/, const char* tag, const char* text, void* /*user*/) {
    std::fprintf(stderr, "%s: %s\n", tag, text);
}

}  // namespace

void hideEngineLog() {
    segcore_set_log(print, nullptr, kAboveAllLevels);
}

void showEngineLog() {
    segcore_set_log(print, nullptr, kAnyLevel);
}
