// Where the time of one box request goes: each stage in the driver's order, the whole call, and its
// peak memory. Every figure is the median of several runs.
//
//     segcore-bench-profile [--photo FILE] [--megapixels N | --working] [--runs N] [--csv FILE]
//                           [--once]
//
// --working reduces the photograph to 320 x 240, where the working image is the photograph itself.
// --once makes a single doSegmentationBB and nothing else, for counting instructions.
#include <cstdio>
#include <cstdlib>
#include <map>
#include <stdexcept>

#include "interface/segmentation_core.h"
#include "support/arguments.h"
#include "support/marks.h"
#include "support/measurements.h"
#include "support/process_memory.h"
#include "support/staged_request.h"

namespace {

struct Options {
    std::string photo;
    double megapixels;
    bool working;
    bool once;
    int runs;
    std::string csv;
};

Photograph photographOf(const Options& options) {
    const Photograph photo = loadPhotograph(options.photo);
    if (options.working) {
        return resized(photo, 320, 240);
    }
    return options.megapixels > 0.0 ? enlarged(photo, options.megapixels) : photo;
}

std::vector<std::uint8_t> boxCall(const Photograph& photo) {
    std::vector<std::uint8_t> mask(photo.pixels());
    const Box& box = photo.box;
    doSegmentationBB(photo.width, photo.height, photo.words.data(), box.left, box.top, box.right,
                     box.bottom, mask.data());
    return mask;
}

std::vector<std::uint8_t> stagedRun(const Photograph& photo, StageClock& clock) {
    std::vector<std::uint32_t> blended = photo.words;
    std::vector<std::uint8_t> out(photo.pixels());
    Marks marks = boxMarks(photo);
    StagedRequest request(photo, clock);
    request.begin(marks);
    request.runPasses();
    request.deliver(request.finish(), blended, out);
    return out;
}

// On a busy machine the minimum and the processor time say more about the program than the median.
void report(ResultFile& results, const Photograph& photo, const std::string& stage,
            const std::vector<Duration>& durations) {
    std::vector<double> wall;
    std::vector<double> processor;
    for (const Duration& duration : durations) {
        wall.push_back(duration.wall);
        processor.push_back(duration.processor);
    }
    std::printf("  %-20s %10.3f ms   minimum %10.3f ms   processor %10.3f ms\n", stage.c_str(),
                median(wall), percentile(wall, 0.0), median(processor));
    results.add(stage, photo.megapixels(), "median", median(wall), "ms");
    results.add(stage, photo.megapixels(), "minimum", percentile(wall, 0.0), "ms");
    results.add(stage, photo.megapixels(), "processor", median(processor), "ms");
}

void profile(const Options& options) {
    const Photograph photo = photographOf(options);
    resetPeakMemory();
    const std::size_t before = residentMemory();
    const std::vector<std::uint8_t> expected = boxCall(photo);
    const std::size_t peak = peakMemory();
    if (options.once) {
        return;
    }
    deinitSegmentation();

    std::vector<std::string> order;
    std::map<std::string, std::vector<Duration>> times;
    std::vector<Duration> whole;
    for (int run = 0; run < options.runs; ++run) {
        whole.push_back(durationOf([&] { boxCall(photo); }));
        deinitSegmentation();
        StageClock clock;
        if (stagedRun(photo, clock) != expected) {
            throw std::runtime_error("the stages do not add up to the engine's own request");
        }
        for (const auto& [stage, duration] : clock.stages()) {
            if (times[stage].empty()) {
                order.push_back(stage);
            }
            times[stage].push_back(duration);
        }
    }

    ResultFile results(options.csv, "profile");
    std::printf("%s, %d x %d, box request, median of %d runs\n", photo.name.c_str(), photo.width,
                photo.height, options.runs);
    for (const std::string& stage : order) {
        report(results, photo, stage, times[stage]);
    }
    constexpr double kMegabyte = 1e6;
    const auto pixels = static_cast<double>(photo.pixels());
    report(results, photo, "doSegmentationBB", whole);
    std::printf("  peak memory %.1f MB, %.1f bytes a pixel; %.1f MB before the call\n",
                static_cast<double>(peak) / kMegabyte, static_cast<double>(peak) / pixels,
                static_cast<double>(before) / kMegabyte);
    results.add("doSegmentationBB", photo.megapixels(), "peak memory",
                static_cast<double>(peak) / kMegabyte, "MB");
    results.add("doSegmentationBB", photo.megapixels(), "peak memory a pixel",
                static_cast<double>(peak) / pixels, "B");
}

}  // namespace

int main(int count, char** list) {
    return runProgram(count, list, [](Arguments arguments) {
        Options options;
        options.photo = arguments.text("--photo", SEGCORE_BENCH_PHOTO);
        options.megapixels = arguments.number("--megapixels", 0.0);
        options.working = arguments.flag("--working");
        options.once = arguments.flag("--once");
        options.runs = static_cast<int>(arguments.number("--runs", 5));
        options.csv = arguments.text("--csv", "");
        arguments.requireAllTaken();
        profile(options);
    });
}
