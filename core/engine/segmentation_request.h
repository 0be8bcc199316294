// One request as its named steps: begin, then for each pass the models, the graph and the cut, then
// choose, upscale and finish. VORNSEHybrid::segment makes them all; benchmarks and pictures
// make them one by one and look at the engine in between. Every step tells the stage
// watcher what it does.
//
// What the steps leave in the engine (crops, trial labels, graph, timer) is released by
// VORNSEHybrid::clearMemory, also after an exception.
#pragma once

#include <vector>

#include "colour/color_model.h"
#include "engine/hybrid.h"
#include "support/export.h"
#include "support/image.h"

class SEGCORE_API SegmentationRequest {
  public:
    static constexpr int kPasses = 5;

    // The engine outlives the request; its label image is set.
    explicit SegmentationRequest(VORNSEHybrid& engine);

    // Starts the clock, finds the working region and makes its crops and its graph.
    void begin();

    // The steps of one pass, 0 to kPasses - 1. prepareModels sets the smoothness weight and trains,
    // updates or keeps the colour models; buildGraph leaves a graph that waits for its flow.
    void prepareModels(int pass);
    void buildGraph(int pass);
    void cut(int pass);
    // All three. False when the request is cancelled or out of time.
    bool onePass(int pass);

    // The labels of the first pass or the last, on flat backgrounds. Releases the graph.
    void choose();

    // The labels as a mask of working size: 0 and 1 when it is going to be enlarged,
    // else 0 and 255.
    ImagePtr workingMask();
    // The mask at photo size, 0 and 255, by a second cut along its outline; a mask that has this
    // size already comes back as it is.
    ImagePtr upscale(ImagePtr workingMask);
    // Cleans the mask by the kind of the marks, merges it with the one on display and records it.
    void finish(IplImage* mask);

    // The samples of the last models that were made.
    const std::vector<pixelVal>& foreground() const { return m_foreground; }
    const std::vector<pixelVal>& background() const { return m_background; }

  private:
    VORNSEHybrid& m_engine;
    std::vector<pixelVal> m_foreground;
    std::vector<pixelVal> m_background;
    bool m_tryWeights = true;
    int m_mode;
};
