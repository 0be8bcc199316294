// The stages of a request, told one by one to whoever watches: benchmarks time them, the pictures
// of the documentation stop between them, and hosts show progress.
//
// Threads: the watcher is set and told on the thread that makes the request.
#pragma once

#include <opencv2/core/core_c.h>

#include "support/export.h"

// In the order of a request; those from kSmoothnessChoice to kCutToLabels come again in every pass.
enum class Stage {
    kLabelImage,
    kWorkingRegion,
    kCrops,
    kGraphMemory,
    kSmoothnessChoice,
    kSamples,
    kKMeans,
    kModelUpdate,
    kGraphBuild,
    kMaxFlow,
    kCutToLabels,
    kFirstOrLastPass,
    kWorkingMask,
    kUpscaling,
    kPostProcessing,
    kHistoryWrite,
    kOutline,
    kMaskOut
};

SEGCORE_API const char* nameOf(Stage stage);

constexpr int kNoPass = -1;  // of a stage outside the passes

class SEGCORE_API StageWatcher {
  public:
    StageWatcher() = default;
    virtual ~StageWatcher();
    StageWatcher(const StageWatcher&) = delete;
    StageWatcher& operator=(const StageWatcher&) = delete;

    // An exception thrown from here ends the request, as one thrown by the stage would.
    virtual void begins(Stage stage, int pass);
    virtual void ends(Stage stage, int pass) noexcept;
    // The labels are final and nothing is enlarged yet. `mask` is of working size, 0 and `object`.
    virtual void seesWorkingMask(const IplImage* mask, int object);
};

// From here on `watcher` is told; null for nobody. The one before it is handed back,
// to be set again.
SEGCORE_API StageWatcher* watchStages(StageWatcher* watcher);
// Null when nobody watches.
StageWatcher* stageWatcher();

// A stage of the running request, from construction to destruction.
class StageScope {
  public:
    explicit StageScope(Stage stage, int pass = kNoPass)
        : m_watcher(stageWatcher()), m_stage(stage), m_pass(pass) {
        if (m_watcher != nullptr) {
            m_watcher->begins(stage, pass);
        }
    }
    ~StageScope() {
        if (m_watcher != nullptr) {
            m_watcher->ends(m_stage, m_pass);
        }
    }
    StageScope(const StageScope&) = delete;
    StageScope& operator=(const StageScope&) = delete;

  private:
    StageWatcher* m_watcher;
    Stage m_stage;
    int m_pass;
};
