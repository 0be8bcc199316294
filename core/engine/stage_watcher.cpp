#include "engine/stage_watcher.h"

#include <array>
#include <utility>

namespace {

StageWatcher* current = nullptr;

constexpr std::array<const char*, 18> kNames = {
    "label image",   "working region", "crops",        "graph memory", "smoothness choice",
    "samples",       "k-means",        "model update", "graph build",  "max-flow",
    "cut to labels", "first or last",  "working mask", "upscaling",    "post-processing",
    "history write", "outline",        "mask out"};
static_assert(kNames.size() == static_cast<std::size_t>(Stage::kMaskOut) + 1, "a name each");

}  // namespace

const char* nameOf(Stage stage) {
    return kNames[static_cast<std::size_t>(stage)];
}

StageWatcher::~StageWatcher() = default;
void StageWatcher::begins(Stage /*stage*/, int /*pass*/) {}
void StageWatcher::ends(Stage /*stage*/, int /*pass*/) noexcept {}
void StageWatcher::seesWorkingMask(const IplImage* /*mask*/, int /*object*/) {}

StageWatcher* watchStages(StageWatcher* watcher) {
    return std::exchange(current, watcher);
}

StageWatcher* stageWatcher() {
    return current;
}
