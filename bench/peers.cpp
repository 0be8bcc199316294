// The engine beside what a user would take instead, in one program and one run:
// - OpenCV's grabCut from the same box, on the full photograph and on a working image of about the
//   engine's size whose mask is enlarged;
// - Boost's Boykov-Kolmogorov maximum flow on the engine's own graphs.
// Runs alternate between the contestants, so that a slow moment of the machine hits all of them.
//
//     segcore-bench-peers [--photos DIR] [--photo FILE] [--megapixels N] [--runs N]
//                         [--full-runs N] [--iterations N] [--csv FILE]
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

#include "engine/hybrid.h"
#include "interface/engine_state.h"
#include "interface/segmentation_core.h"
#include "measure/grab_cut.h"
#include "peer_max_flow.h"
#include "support/arguments.h"
#include "support/marks.h"
#include "support/measurements.h"
#include "support/staged_request.h"
#include "support/timers.h"

namespace {

// Flows in single precision leave cuts that differ slightly, and the engine's search may miss an edge
// that adoption has opened again.
constexpr double kCutTolerance = 5e-3;

struct Options {
    std::string photo;
    std::string photos;
    double megapixels;
    int runs;
    int fullRuns;    // of grabCut on the full photograph, which takes minutes
    int iterations;  // of grabCut; the engine makes up to five passes too
    std::string csv;
};

// ---- grabCut ----

// Photograph words in, mask bytes out, as the engine's call.
std::vector<std::uint8_t> grabCutMask(const Photograph& photo, const cv::Size& size,
                                      int iterations) {
    Step box;
    box.operation = Operation::kBox;
    box.points = {{photo.box.left, photo.box.top}, {photo.box.right, photo.box.bottom}};
    GrabCut grabCut(imageOf(photo), size, iterations);
    grabCut.apply(box);
    const cv::Mat mask = ~grabCut.mask();
    return {mask.begin<std::uint8_t>(), mask.end<std::uint8_t>()};
}

std::vector<std::uint8_t> engineMask(const Photograph& photo) {
    std::vector<std::uint8_t> mask(photo.pixels());
    const Box& box = photo.box;
    doSegmentationBB(photo.width, photo.height, photo.words.data(), box.left, box.top, box.right,
                     box.bottom, mask.data());
    deinitSegmentation();
    return mask;
}

void report(ResultFile& results, double megapixels, const std::string& subject,
            const std::vector<double>& engine, const std::vector<double>& peer) {
    const double ratio = median(peer) / median(engine);
    std::printf("  %-44s engine %10.2f ms   peer %12.2f ms   ratio %8.2f   (%zu runs)\n",
                subject.c_str(), median(engine), median(peer), ratio, peer.size());
    std::fflush(stdout);
    results.add(subject, megapixels, "engine", median(engine), "ms");
    results.add(subject, megapixels, "peer", median(peer), "ms");
    results.add(subject, megapixels, "ratio", ratio, "times");
    results.add(subject, megapixels, "runs", static_cast<double>(peer.size()), "runs");
}

void compareBoxRequests(const Options& options, ResultFile& results) {
    const Photograph original = loadPhotograph(options.photo);
    const Photograph photo = enlarged(original, options.megapixels);
    std::printf("box request on %s, %d x %d\n", photo.name.c_str(), photo.width, photo.height);
    engineMask(photo);  // warms the machine up
    std::vector<double> engine;
    std::vector<double> small;
    std::vector<double> full;
    const auto timeOf = [](auto call) { return durationOf(call).wall; };
    for (int run = 0; run < options.runs; ++run) {
        engine.push_back(timeOf([&] { engineMask(photo); }));
        const cv::Size size(photo.width, photo.height);
        small.push_back(timeOf(
            [&] { grabCutMask(photo, reducedSize(size, kGrabCutPixels), options.iterations); }));
        if (run < options.fullRuns) {
            full.push_back(timeOf([&] { grabCutMask(photo, size, options.iterations); }));
        }
    }
    if (!full.empty()) {
        report(results, photo.megapixels(), "grabCut on the full photograph", engine, full);
    }
    report(results, photo.megapixels(), "grabCut on a working image", engine, small);
}

// ---- Maximum flow ----

struct FlowTimes {
    std::vector<double> engine;
    std::vector<double> list;
    std::vector<double> rows;
    double engineBuild = 0.0;
    double listBuild = 0.0;
    double rowsBuild = 0.0;

    void addTo(FlowTimes& total) const {
        total.engine.resize(engine.size());
        total.list.resize(list.size());
        total.rows.resize(rows.size());
        for (std::size_t i = 0; i < engine.size(); ++i) {
            total.engine[i] += engine[i];
            total.list[i] += list[i];
            total.rows[i] += rows[i];
        }
        total.engineBuild += engineBuild;
        total.listBuild += listBuild;
        total.rowsBuild += rowsBuild;
    }
};

void requireSameWeight(double engine, double peer, const std::string& subject) {
    if (!(std::fabs(engine - peer) <= kCutTolerance * std::max(std::fabs(engine), 1.0))) {
        throw std::runtime_error(subject + ": the cuts do not weigh the same, " +
                                 std::to_string(engine) + " and " + std::to_string(peer));
    }
}

// As the engine's own runs of the solver find it: the time limit is live during the first pass.
enum class Clock { kRunning, kStopped };

// Solves the graph that build makes, all three ways, `runs` times. Leaves a fresh graph behind.
template <typename Build>
FlowTimes compareFlows(const std::string& subject, VORNSEGraph*& graph, Build build,
                       const cv::Mat& trimap, Clock clock, int runs) {
    FlowTimes times;
    build();
    const FlowProblem problem = exportGraph(*graph, trimap);
    for (int run = 0; run < runs; ++run) {
        restartCancelTimer();
        if (clock == Clock::kStopped) {
            stop_cpu_timer(g_cancelTimer);
        }
        times.engine.push_back(durationOf([&] { graph->maxFlow(); }).wall);
        const double weight = problem.cutWeight(sinkSideOf(*graph, trimap));
        const PeerFlow list = solveOnAdjacencyList(problem);
        const PeerFlow rows = solveOnCompressedRows(problem);
        requireSameWeight(weight, problem.cutWeight(list.sinkSide), subject);
        requireSameWeight(weight, problem.cutWeight(rows.sinkSide), subject);
        times.list.push_back(list.solve);
        times.rows.push_back(rows.solve);
        times.listBuild = list.build;
        times.rowsBuild = rows.build;
        times.engineBuild = durationOf(build).wall;
    }
    return times;
}

void report(ResultFile& results, double megapixels, const std::string& subject,
            const FlowTimes& times) {
    report(results, megapixels, subject + " on an adjacency list", times.engine, times.list);
    report(results, megapixels, subject + " on compressed rows", times.engine, times.rows);
    results.add(subject, megapixels, "engine build", times.engineBuild, "ms");
    results.add(subject, megapixels, "adjacency list build", times.listBuild, "ms");
    results.add(subject, megapixels, "compressed rows build", times.rowsBuild, "ms");
}

void compareMaxFlows(const Options& options, const std::string& file, ResultFile& results,
                     FlowTimes& working, FlowTimes& bands) {
    const Photograph photo = enlarged(loadPhotograph(file), options.megapixels);
    std::printf("maximum flow, %s, %d x %d\n", photo.name.c_str(), photo.width, photo.height);
    StageClock clock;
    StagedRequest request(photo, clock);
    Marks marks = boxMarks(photo);
    request.begin(marks);
    request.runPasses([&](int pass) {
        const std::string subject = photo.name + " pass " + std::to_string(pass + 1);
        const auto build = [] { pHybrid->constructGraphVORN_Whole_Image(); };
        const FlowTimes times =
            compareFlows(subject, pHybrid->m_graph, build, cv::Mat(),
                         pass == 0 ? Clock::kRunning : Clock::kStopped, options.runs);
        report(results, photo.megapixels(), subject, times);
        times.addTo(working);
    });
    const ImagePtr mask = request.workingMask();
    BandGraph band(cv::cvarrToMat(mask.get()));
    if (band.empty()) {
        return;
    }
    const std::string subject = photo.name + " band";
    const FlowTimes times = compareFlows(
        subject, pHybrid->m_trimapGraph, [&] { band.build(); }, band.trimap(), Clock::kStopped,
        options.runs);
    report(results, photo.megapixels(), subject, times);
    times.addTo(bands);
}

void run(const Options& options) {
    ResultFile results(options.csv, "peers");
    FlowTimes working;
    FlowTimes bands;
    for (const std::string& file : photographsIn(options.photos)) {
        compareMaxFlows(options, file, results, working, bands);
    }
    if (!working.engine.empty()) {
        std::printf("maximum flow, all graphs together\n");
        report(results, 0.0, "all working graphs", working);
        report(results, options.megapixels, "all band graphs", bands);
    }
    compareBoxRequests(options, results);
}

}  // namespace

int main(int count, char** list) {
    return runProgram(count, list, [](Arguments arguments) {
        Options options;
        options.photo = arguments.text("--photo", SEGCORE_BENCH_PHOTO);
        options.photos = arguments.text("--photos", SEGCORE_BENCH_PHOTOS);
        options.megapixels = arguments.number("--megapixels", 12.0);
        options.runs = static_cast<int>(arguments.number("--runs", 5));
        options.fullRuns = static_cast<int>(arguments.number("--full-runs", options.runs));
        options.iterations = static_cast<int>(arguments.number("--iterations", kGrabCutIterations));
        options.csv = arguments.text("--csv", "");
        arguments.requireAllTaken();
        run(options);
    });
}
