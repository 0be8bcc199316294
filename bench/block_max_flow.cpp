// The block solver beside the serial one, on graphs of the engine's own requests: the first pass of
// a box request at working size, and the same photograph at its full size, with the models of that
// pass. Solvers alternate, so that a slow moment of the machine hits all of them, and every cut is
// checked to weigh the same.
//
//     segcore-bench-block-max-flow [--photos DIR] [--megapixels N] [--threads N] [--runs N]
//                                  [--csv FILE]
//
// --megapixels enlarges the photographs first; without it they keep their size.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <utility>

#include "engine/hybrid.h"
#include "graph/graph.h"
#include "graph/parallel_gc.h"
#include "history/marker.h"
#include "interface/engine_state.h"
#include "peer_max_flow.h"
#include "support/arguments.h"
#include "support/staged_request.h"

namespace {

constexpr double kCutTolerance = 1e-4;  // single-precision flows leave cuts that differ slightly

struct Options {
    std::string photos;
    double megapixels;
    int threads;
    int runs;
    std::string csv;
};

// Milliseconds that the block solver takes when every thread has a processor of its own: its steps
// one after another, without the last look over the cut, and of each phase the longest alone.
// Processor time, so that a busy machine does not matter.
double timeOnFreeProcessors(VORNSEGraph& graph, int blocks) {
    ParallelGC solver(&graph, blocks);
    double total = 0.0;
    double longest = 0.0;
    const auto step = [&longest](auto call) {
        longest = std::max(longest, durationOf(call).processor);
    };
    const auto endPhase = [&] { total += std::exchange(longest, 0.0); };
    for (int b = 0; b < blocks; ++b) {
        step([&] { solver.AssignIDs(b / solver.m_blocksX, b % solver.m_blocksX); });
    }
    endPhase();
    for (int b = 0; b < blocks; ++b) {
        step([&] { solver.PartitionGraph(b / solver.m_blocksX, b % solver.m_blocksX); });
    }
    endPhase();
    for (const BlockViewPtr& view : solver.m_blockGraphs) {
        view->InitBlock();
        step([&] { view->maxFlowSerialCall(); });
    }
    endPhase();
    while (!solver.m_pairList.empty()) {
        std::vector<std::pair<int, int>> merges;
        std::vector<bool> busy(static_cast<std::size_t>(blocks));
        for (const blockEdges* pair : solver.m_pairList) {
            const auto a = static_cast<std::size_t>(pair->blockA);
            const auto b = static_cast<std::size_t>(pair->blockB);
            if (!busy[a] && !busy[b]) {
                busy[a] = busy[b] = true;
                merges.emplace_back(pair->blockA, pair->blockB);
            }
        }
        for (const auto& [a, b] : merges) {
            step([&, one = a, other = b] {
                const auto merged = static_cast<std::size_t>(solver.MergeBlocks(one, other));
                solver.m_blockGraphs[merged]->maxFlowSerialCall();
            });
        }
        endPhase();
        for (const auto& [a, b] : merges) {
            solver.MakeNeighbourChanges(a, b);
        }
    }
    return total;
}

// Other programs on the machine only ever add, and to two threads twice as often.
double fastest(const std::vector<double>& values) {
    return percentile(values, 0.0);
}

void replace(IplImage*& image, const cv::Mat& pixels) {
    releaseImage(image);
    const IplImage header = cvIplImage(pixels);
    image = cvCloneImage(&header);
}

// Puts the request's photograph and labels at photo size in the place of the working images, with
// the whole photograph as the region.
void goToFullSize(const Photograph& photo) {
    VORNSEHybrid& engine = *pHybrid;
    cv::Mat labels;
    cv::resize(cv::cvarrToMat(VORNSEMarker::m_labelImage), labels,
               cv::Size(photo.width, photo.height), 0.0, 0.0, cv::INTER_NEAREST);
    replace(VORNSEMarker::m_srcImage, imageOf(photo));
    replace(VORNSEMarker::m_labelImage, labels);
    engine.m_width = engine.m_cropWidth = photo.width;
    engine.m_height = engine.m_cropHeight = photo.height;
    VORNSEMarker::m_xMinBBox = VORNSEMarker::m_yMinBBox = 0;
    engine.computeNlinks();
    replace(engine.m_cropImage, cv::cvarrToMat(VORNSEMarker::m_srcImage));
    replace(engine.m_cropLabel, labels);
    engine.graphSpaceDellocator();
    engine.graphSpaceAllocator();
}

void compareSolvers(const std::string& subject, const Options& options, ResultFile& results) {
    VORNSEHybrid& engine = *pHybrid;
    std::vector<double> serial;
    std::vector<double> serialProcessor;
    std::vector<double> blocks;
    std::vector<double> free;
    double weight = std::nan("");
    for (int run = 0; run < options.runs; ++run) {
        for (const bool inBlocks : {false, true}) {
            engine.constructGraphVORN_Whole_Image();
            const FlowProblem problem = exportGraph(*engine.m_graph);
            engine.m_graph->m_numThreads = inBlocks ? options.threads : 0;
            restartCancelTimer();
            const Duration duration = durationOf([&] { engine.m_graph->maxFlow(); });
            (inBlocks ? blocks : serial).push_back(duration.wall);
            if (!inBlocks) {
                serialProcessor.push_back(duration.processor);
            }
            const double found = problem.cutWeight(sinkSideOf(*engine.m_graph));
            if (std::fabs(found - weight) > kCutTolerance * std::fabs(weight)) {
                throw std::runtime_error(subject + ": the cuts do not weigh the same, " +
                                         std::to_string(weight) + " and " + std::to_string(found));
            }
            weight = found;
        }
        engine.constructGraphVORN_Whole_Image();
        restartCancelTimer();
        free.push_back(timeOnFreeProcessors(*engine.m_graph, options.threads));
    }
    const int nodes = engine.m_graph->m_nodeCount;
    std::printf("| %s | %d |", subject.c_str(), nodes);
    const std::pair<const char*, const std::vector<double>&> columns[] = {
        {"serial", serial},
        {"blocks", blocks},
        {"serial, processor", serialProcessor},
        {"blocks, free processors", free},
    };
    for (const auto& [name, times] : columns) {
        std::printf(" %.4f |", fastest(times) / 1000.0);
        results.add(subject, nodes / 1e6, name, fastest(times), "ms");
    }
    std::printf(" %.2f |\n", fastest(serialProcessor) / fastest(free));
    std::fflush(stdout);
}

void run(const Options& options) {
    ResultFile results(options.csv, "block-max-flow");
    std::printf(
        "| graph | nodes | serial, s | %d threads, s | serial, processor s | %d threads, free "
        "processors, s | gain |\n",
        options.threads, options.threads);
    std::printf("|---|---|---|---|---|---|---|\n");
    for (const std::string& file : photographsIn(options.photos)) {
        Photograph photo = loadPhotograph(file);
        if (options.megapixels > 0.0) {
            photo = enlarged(photo, options.megapixels);
        }
        StageClock clock;
        StagedRequest request(photo, clock);
        Marks marks = boxMarks(photo);
        request.begin(marks);
        request.steps().prepareModels(0);
        const bool reduced = g_imageResizeFactor > 1.0F;
        compareSolvers(photo.name + ", working size", options, results);
        if (reduced) {
            goToFullSize(photo);
            compareSolvers(photo.name + ", full size", options, results);
        }
    }
}

}  // namespace

int main(int count, char** list) {
    return runProgram(count, list, [](Arguments arguments) {
        Options options;
        options.photos = arguments.text("--photos", SEGCORE_BENCH_PHOTOS);
        options.megapixels = arguments.number("--megapixels", 0.0);
        options.threads = static_cast<int>(arguments.number("--threads", 2));
        options.runs = static_cast<int>(arguments.number("--runs", 15));
        options.csv = arguments.text("--csv", "");
        arguments.requireAllTaken();
        run(options);
    });
}
