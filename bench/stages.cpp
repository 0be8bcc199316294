// Each stage by itself. Stages whose cost follows the working image run on 320 x 240 pixels, those
// that walk the photograph at 1, 4, 12 and 24 megapixels too, with memcpy of the same traffic
// beside the ones that only move bytes.
//
//     segcore-bench-stages [--photo FILE] [--csv FILE] [options of Google Benchmark]
#include <benchmark/benchmark.h>

#include <cstring>
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>

#include "colour/color_model.h"
#include "colour/k_means.h"
#include "colour/model_init.h"
#include "colour/model_update.h"
#include "colour/training_data.h"
#include "engine/hybrid.h"
#include "graph/graph.h"
#include "history/marker.h"
#include "interface/engine_state.h"
#include "interface/segmentation_core.h"
#include "stage_scene.h"
#if __has_include("path/edge_path.h")
#include "path/edge_path.h"
#define SEGCORE_BENCH_PATH 1
#endif

namespace {

using benchmark::State;

constexpr int kWorkingSize = 0;
constexpr int kPhotoSizes[] = {1, 4, 12, 24};
constexpr double kMillisecondsPerSecond = 1000.0;
constexpr const char* kProcessor = "processor";  // milliseconds of all threads, per iteration

std::string photoFile = SEGCORE_BENCH_PHOTO;

StageScene& sceneOf(const State& state) {
    return ::sceneOf(photoFile, static_cast<int>(state.range(0)));
}

// Runs prepare, then call, for every iteration; only the call counts.
template <typename Prepare, typename Call>
void measure(State& state, Prepare&& prepare, Call&& call) {
    double processor = 0.0;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        prepare();
        const Duration duration = durationOf(call);
        state.SetIterationTime(duration.wall / kMillisecondsPerSecond);
        processor += duration.processor;
    }
    state.counters[kProcessor] = benchmark::Counter(processor, benchmark::Counter::kAvgIterations);
}

template <typename Call>
void measure(State& state, Call&& call) {
    measure(
        state, [] {}, std::forward<Call>(call));
}

// ---- Photograph, mask and history: bytes that move ----

void photoIn(State& state) {
    StageScene& scene = sceneOf(state);
    const Photograph& photo = scene.photo;
    measure(state, [&] { setSourceImage(photo.width, photo.height, photo.words.data()); });
}

void photoOut(State& state) {
    std::vector<std::uint32_t> out(sceneOf(state).photo.pixels());
    measure(state, [&] { copySourceImage(out.data()); });
}

void maskOut(State& state) {
    StageScene& scene = sceneOf(state);
    std::vector<std::uint8_t> out(scene.photo.pixels());
    measure(
        state, [&] { g_resultMask = scene.mask.get(); }, [&] { loadMaskImageInfo(out.data()); });
    g_resultMask = nullptr;
}

void historyWrite(State& state) {
    StageScene& scene = sceneOf(state);
    scene.emptyHistory();
    const ImagePtr blank = cloneImage(scene.mask.get());
    cvZero(blank.get());
    measure(
        state, [&] { VORNSEManageUndoRedo::setMask(VORNSEManageUndoRedo::m_current, blank.get()); },
        [&] { VORNSEManageUndoRedo::record(scene.mask.get()); });
}

void historyRead(State& state) {
    sceneOf(state).oneMaskInHistory();
    ImagePtr read;
    measure(
        state, [&] { read.reset(); }, [&] { read.reset(VORNSEManageUndoRedo::shown()); });
}

// memcpy that reads and writes as many bytes together as the stage does.
void copyBytes(State& state, double trafficPerPixel) {
    const auto bytes = static_cast<std::size_t>(static_cast<double>(sceneOf(state).photo.pixels()) *
                                                trafficPerPixel / 2.0);
    const std::vector<char> from(bytes, 'x');
    std::vector<char> to(bytes, 'y');
    measure(state, [&] {
        std::memcpy(to.data(), from.data(), bytes);
        benchmark::ClobberMemory();
    });
}

// The same into memory that the system has to hand out first, as for a new image.
void copyBytesToFreshMemory(State& state, double trafficPerPixel) {
    const auto bytes = static_cast<std::size_t>(static_cast<double>(sceneOf(state).photo.pixels()) *
                                                trafficPerPixel / 2.0);
    const std::vector<char> from(bytes, 'x');
    std::unique_ptr<char[]> to;
    measure(
        state, [&] { to.reset(); },
        [&] {
            to.reset(new char[bytes]);
            std::memcpy(to.get(), from.data(), bytes);
            benchmark::ClobberMemory();
        });
}

constexpr double kPhotoTraffic = 4 + 3;  // words and channels
constexpr double kMaskTraffic = 1 + 1;   // mask and host mask
// What a pass over every pixel moves; the stages leave most plane words alone.
constexpr double kHistoryWriteTraffic = 1 + 4 + 4;  // mask, plane words read and written
constexpr double kHistoryReadTraffic = 4 + 1;       // plane words and mask

// ---- Preparation ----

void preparation(State& state) {
    static_cast<void>(sceneOf(state));
    std::optional<VORNSEHybrid> engine;
    measure(
        state, [&] { engine.emplace(); }, [&] { engine->intializer(); });
}

void texture(State& state) {
    static_cast<void>(sceneOf(state));
    measure(state, [] { pHybrid->computeTexture(); });
}

void neighbourLinks(State& state) {
    static_cast<void>(sceneOf(state));
    measure(state, [] { pHybrid->computeNlinks(); });
}

// ---- Marks to labels ----

void labelImageOfBox(State& state) {
    StageScene& scene = sceneOf(state);
    const KeepRegion keep;
    scene.emptyHistory();
    scene.useStroke(scene.boxPoints, SEGCORE_LOOP_ADD);
    measure(state, [&] { pHybrid->labelMarks(scene.boxMarkers.get()); });
}

void labelImageOfBrush(State& state) {
    StageScene& scene = sceneOf(state);
    const KeepRegion keep;
    scene.oneMaskInHistory();
    scene.useStroke(scene.brushPoints, SEGCORE_BRUSH_ADD);
    measure(state, [&] { pHybrid->labelMarks(scene.brushMarkers.get()); });
    scene.emptyHistory();
}

void workingRegion(State& state) {
    StageScene& scene = sceneOf(state);
    const KeepRegion keep;
    scene.useStroke(scene.boxPoints, SEGCORE_LOOP_ADD);
    measure(state, [] {
        pHybrid->computeBoundingBox();
        pHybrid->preProcess();
    });
}

// ---- Colour models ----

void samples(State& state) {
    static_cast<void>(sceneOf(state));
    std::vector<pixelVal> foreground;
    std::vector<pixelVal> background;
    measure(state, [&] {
        extractTrainingData(pHybrid->m_cropImage, pHybrid->m_cropLabel, foreground, background);
    });
}

void seeding(State& state) {
    StageScene& scene = sceneOf(state);
    std::vector<double*> rows;
    rows.reserve(scene.background.size());
    for (pixelVal& sample : scene.background) {
        rows.push_back(&sample.ch0);
    }
    int seeds[kComponents];
    measure(state, [&] {
        chooseCentersKMeanspp(rows.data(), static_cast<int>(rows.size()), kComponents, seeds);
    });
}

void kMeans(State& state) {
    const StageScene& scene = sceneOf(state);
    VORNSEColorModel model;
    measure(state, [&] { initModel(scene.background, model, 0); });
}

void modelUpdate(State& state) {
    const StageScene& scene = sceneOf(state);
    VORNSEColorModel foreground;
    VORNSEColorModel background;
    measure(
        state,
        [&] {
            foreground = pHybrid->m_fgModel;
            background = pHybrid->m_bgModel;
        },
        [&] { updateModel(scene.foreground, scene.background, foreground, background); });
}

// ---- Graph ----

// Labels every pixel of the region for the duration of a measurement: fixed ones cost no densities.
class WithLabels {
  public:
    explicit WithLabels(std::uint8_t code) : m_kept(cloneImage(pHybrid->m_cropLabel)) {
        cvSet(pHybrid->m_cropLabel, cvScalarAll(code));
    }
    ~WithLabels() { cvCopy(m_kept.get(), pHybrid->m_cropLabel); }
    WithLabels(const WithLabels&) = delete;
    WithLabels& operator=(const WithLabels&) = delete;

  private:
    ImagePtr m_kept;
};

void graphBuild(State& state) {
    static_cast<void>(sceneOf(state));
    const WithLabels labels(label::kBackground);
    measure(state, [] { pHybrid->constructGraphVORN_Whole_Image(); });
}

// What free pixels cost beyond fixed ones.
void terminalWeights(State& state) {
    static_cast<void>(sceneOf(state));
    const auto build = [](std::uint8_t code) {
        const WithLabels labels(code);
        return durationOf([] { pHybrid->constructGraphVORN_Whole_Image(); });
    };
    double processor = 0.0;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        const Duration all = build(label::kFree);
        const Duration fixed = build(label::kBackground);
        state.SetIterationTime(std::max(all.wall - fixed.wall, 0.0) / kMillisecondsPerSecond);
        processor += all.processor - fixed.processor;
    }
    state.counters[kProcessor] = benchmark::Counter(processor, benchmark::Counter::kAvgIterations);
}

void maxFlow(State& state, double lambda) {
    static_cast<void>(sceneOf(state));
    const double kept = pHybrid->m_lambda;
    const ImagePtr keptLabels = cloneImage(pHybrid->m_cropLabel);
    pHybrid->m_lambda = lambda;
    cvCopy(pHybrid->m_startLabel, pHybrid->m_cropLabel);
    measure(
        state,
        [] {
            pHybrid->constructGraphVORN_Whole_Image();
            restartCancelTimer();
        },
        [] { pHybrid->m_graph->maxFlow(); });
    pHybrid->m_lambda = kept;
    cvCopy(keptLabels.get(), pHybrid->m_cropLabel);
}

void smoothnessChoice(State& state) {
    StageScene& scene = sceneOf(state);
    IplImage* trials[] = {scene.trialLabels[0].get(), scene.trialLabels[1].get(),
                          scene.trialLabels[2].get()};
    measure(state, [&] { pHybrid->optimalLamda(trials, nullptr); });
}

// ---- From the cut to the mask ----

void upscaling(State& state) {
    StageScene& scene = sceneOf(state);
    ImagePtr working;
    ImagePtr result;
    measure(
        state,
        [&] {
            working = cloneImage(scene.workingMask.get());
            result.reset();
            restartCancelTimer();
        },
        [&] { result.reset(pHybrid->intelligentUpscaling(working.get())); });
}

void upscalingGraph(State& state) {
    BandGraph band(cv::cvarrToMat(sceneOf(state).workingMask.get()));
    measure(
        state, [&] { band.drop(); }, [&] { band.build(); });
}

void upscalingFlow(State& state) {
    BandGraph band(cv::cvarrToMat(sceneOf(state).workingMask.get()));
    measure(
        state,
        [&] {
            band.build();
            restartCancelTimer();
        },
        [] { pHybrid->m_trimapGraph->maxFlow(); });
}

void postProcessing(State& state, bool brush) {
    StageScene& scene = sceneOf(state);
    if (brush) {
        scene.oneMaskInHistory();
        scene.useStroke(scene.brushPoints, SEGCORE_BRUSH_ADD);
    } else {
        scene.emptyHistory();
        scene.useStroke(scene.boxPoints, SEGCORE_LOOP_ADD);
    }
    ImagePtr mask;
    measure(
        state, [&] { mask = cloneImage(scene.mask.get()); },
        [&] { pHybrid->postProcess(mask.get()); });
    scene.emptyHistory();
}

void outline(State& state) {
    StageScene& scene = sceneOf(state);
    std::vector<std::uint32_t> blended = scene.photo.words;
    g_resultMask = scene.mask.get();
    measure(state, [&] { loadBlendedImageInfo(blended.data()); });
    g_resultMask = nullptr;
}

#ifdef SEGCORE_BENCH_PATH
void pathSearch(State& state) {
    static_cast<void>(sceneOf(state));
    constexpr double kAlpha = 0.3;
    std::vector<int> parents;
    measure(state, [&] {
        parents = find_parent_info(VORNSEMarker::m_srcImage, VORNSEMarker::m_labelImage,
                                   VORNSEMarker::m_height / 2, VORNSEMarker::m_width / 2, kAlpha);
    });
}
#endif

// ---- Programme ----

template <typename Function>
void atSize(const std::string& name, int megapixels, Function function) {
    benchmark::RegisterBenchmark(name.c_str(), function)
        ->Arg(megapixels)
        ->UseManualTime()
        ->Unit(benchmark::kMillisecond);
}

// Stages that walk the photograph.
void registerPhotoStages(int size) {
    atSize("photo in", size, photoIn);
    atSize("photo out", size, photoOut);
    atSize("photo memcpy", size, [](State& state) { copyBytes(state, kPhotoTraffic); });
    atSize("photo memcpy to fresh memory", size,
           [](State& state) { copyBytesToFreshMemory(state, kPhotoTraffic); });
    atSize("mask out", size, maskOut);
    atSize("mask memcpy", size, [](State& state) { copyBytes(state, kMaskTraffic); });
    atSize("history write", size, historyWrite);
    atSize("history write memcpy", size,
           [](State& state) { copyBytes(state, kHistoryWriteTraffic); });
    atSize("history read", size, historyRead);
    atSize("history read memcpy", size,
           [](State& state) { copyBytes(state, kHistoryReadTraffic); });
    atSize("preparation", size, preparation);
    atSize("label image of a box", size, labelImageOfBox);
    atSize("label image of a brush", size, labelImageOfBrush);
    atSize("post-processing of a loop", size, [](State& state) { postProcessing(state, false); });
    atSize("post-processing of a brush", size, [](State& state) { postProcessing(state, true); });
    atSize("outline", size, outline);
    if (size != kWorkingSize) {
        atSize("upscaling", size, upscaling);
        atSize("upscaling graph", size, upscalingGraph);
        atSize("upscaling max-flow", size, upscalingFlow);
    }
}

void registerWorkingStages() {
    atSize("texture", kWorkingSize, texture);
    atSize("neighbour links", kWorkingSize, neighbourLinks);
    atSize("working region", kWorkingSize, workingRegion);
    atSize("samples", kWorkingSize, samples);
    atSize("seeding", kWorkingSize, seeding);
    atSize("k-means", kWorkingSize, kMeans);
    atSize("model update", kWorkingSize, modelUpdate);
    atSize("graph build", kWorkingSize, graphBuild);
    atSize("terminal weights", kWorkingSize, terminalWeights);
    atSize("max-flow weight 50", kWorkingSize, [](State& state) { maxFlow(state, 50.0); });
    atSize("max-flow weight 13", kWorkingSize, [](State& state) { maxFlow(state, 13.0); });
    atSize("max-flow weight 8", kWorkingSize, [](State& state) { maxFlow(state, 8.0); });
    atSize("smoothness choice", kWorkingSize, smoothnessChoice);
#ifdef SEGCORE_BENCH_PATH
    atSize("path search", kWorkingSize, pathSearch);
#endif
}

// The console's table, and one line of the result file for each statistic.
class RecordingReporter : public benchmark::ConsoleReporter {
  public:
    explicit RecordingReporter(const std::string& file)
        : ConsoleReporter(OO_Tabular), m_results(file, "stages") {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            const bool single = run.run_type != Run::RT_Aggregate && run.repetitions <= 1;
            if (run.error_occurred || !(single || run.aggregate_name == "median")) {
                continue;
            }
            const std::string& name = run.run_name.function_name;
            const double size = std::atof(run.run_name.args.c_str());
            m_results.add(name, size, "median", run.GetAdjustedRealTime(), "ms");
            const auto processor = run.counters.find(kProcessor);
            if (processor != run.counters.end()) {
                m_results.add(name, size, "processor", processor->second.value, "ms");
            }
        }
    }

  private:
    ResultFile m_results;
};

// Takes "--name value" out of the arguments.
std::string takeOption(int& count, char** arguments, const char* name, std::string value) {
    for (int i = 1; i + 1 < count; ++i) {
        if (std::strcmp(arguments[i], name) == 0) {
            value = arguments[i + 1];
            std::move(arguments + i + 2, arguments + count, arguments + i);
            count -= 2;
            break;
        }
    }
    return value;
}

}  // namespace

int main(int count, char** arguments) {
    photoFile = takeOption(count, arguments, "--photo", photoFile);
    const std::string csv = takeOption(count, arguments, "--csv", "");
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) {
        return EXIT_FAILURE;
    }
    if (!std::filesystem::exists(photoFile)) {
        std::cerr << photoFile << ": no such photograph, name one with --photo\n";
        return EXIT_FAILURE;
    }
    try {
        registerPhotoStages(kWorkingSize);
        registerWorkingStages();
        for (const int size : kPhotoSizes) {
            registerPhotoStages(size);
        }
        RecordingReporter reporter(csv);
        benchmark::RunSpecifiedBenchmarks(&reporter);
    } catch (const std::exception& error) {
        std::cerr << error.what() << '\n';
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
