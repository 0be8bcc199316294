// What soft edges take: alpha and the object's colours at 1, 12 and 24 megapixels, of crisp and of
// blurred edges, with the memory beyond pictures and results.
//
//     segcore-bench-matting [options of Google Benchmark]
#include <benchmark/benchmark.h>

#include <cmath>
#include <map>
#include <opencv2/imgproc.hpp>

#include "matting/matting.h"
#include "support/photograph.h"
#include "support/process_memory.h"

namespace {

constexpr int kSizes[] = {1, 12, 24};  // megapixels
constexpr int kBlurs[] = {5, 30};      // tenths of a pixel
constexpr double kMegabyte = 1e6;

struct Scene {
    cv::Mat photograph;
    cv::Mat mask;
};

// An object with an outline of about five of the picture's widths, textured by one sample over
// another, its edge blurred. The noise of a camera comes with the enlargement.
Scene makeScene(int megapixels, double sigma) {
    const std::string folder = SEGCORE_BENCH_PHOTOS;
    const auto sampleOf = [&](const char* name) {
        return imageOf(enlarged(loadPhotograph(folder + name), megapixels));
    };
    Scene scene{sampleOf("/coffee.png"), {}};
    cv::Mat back = sampleOf("/astronaut.png");
    cv::resize(back, back, scene.photograph.size());
    const cv::Point2d centre(scene.photograph.cols / 2.0, scene.photograph.rows / 2.0);
    scene.mask = cv::Mat::zeros(scene.photograph.size(), CV_8UC1);
    for (int y = 0; y < scene.mask.rows; ++y) {
        for (int x = 0; x < scene.mask.cols; ++x) {
            const cv::Point2d way = cv::Point2d(x, y) - centre;
            const double turn = std::atan2(way.y, way.x);
            const double radius =
                centre.y * (0.66 + 0.15 * std::sin(5.0 * turn) + 0.05 * std::sin(17.0 * turn) +
                            0.013 * std::sin(61.0 * turn));
            scene.mask.at<std::uint8_t>(y, x) = std::hypot(way.x, way.y) < radius ? 255 : 0;
        }
    }
    cv::Mat alpha;
    cv::GaussianBlur(scene.mask, alpha, {}, sigma);
    for (int y = 0; y < scene.mask.rows; ++y) {
        for (int x = 0; x < scene.mask.cols; ++x) {
            const double share = alpha.at<std::uint8_t>(y, x) / 255.0;
            auto& pixel = scene.photograph.at<cv::Vec3b>(y, x);
            pixel = cv::Vec3b(cv::Vec3d(pixel) * share +
                              cv::Vec3d(back.at<cv::Vec3b>(y, x)) * (1.0 - share));
        }
    }
    return scene;
}

const Scene& sceneOf(const benchmark::State& state) {
    static std::map<std::pair<std::int64_t, std::int64_t>, Scene> scenes;
    const std::pair key(state.range(0), state.range(1));
    if (scenes.count(key) == 0) {
        scenes.clear();  // one at a time
        scenes[key] =
            makeScene(static_cast<int>(key.first), static_cast<double>(key.second) / 10.0);
    }
    return scenes[key];
}

template <typename Call>
void measure(benchmark::State& state, Call&& call) {
    double most = 0.0;
    for (auto iteration : state) {
        static_cast<void>(iteration);
        state.PauseTiming();
        resetPeakMemory();
        const auto before = static_cast<double>(residentMemory());
        state.ResumeTiming();
        const cv::Mat result = call();
        state.PauseTiming();
        const auto kept = static_cast<double>(result.total() * result.elemSize());
        most = std::max(most, static_cast<double>(peakMemory()) - before - kept);
        state.ResumeTiming();
    }
    state.counters["MB"] = most / kMegabyte;
}

void BM_softAlpha(benchmark::State& state) {
    const Scene& scene = sceneOf(state);
    measure(state, [&] { return softAlpha(scene.photograph, scene.mask, 0.0); });
}

void BM_foregroundColours(benchmark::State& state) {
    const Scene& scene = sceneOf(state);
    const cv::Mat alpha = softAlpha(scene.photograph, scene.mask, 0.0);
    measure(state, [&] { return foregroundColours(scene.photograph, alpha, Unseen::kNearest); });
}

void registerAll() {
    for (const int size : kSizes) {
        for (const int blur : kBlurs) {
            for (const auto& [name, run] :
                 {std::pair("softAlpha", &BM_softAlpha),
                  std::pair("foregroundColours", &BM_foregroundColours)}) {
                benchmark::RegisterBenchmark(name, run)
                    ->ArgNames({"megapixels", "blur"})
                    ->Args({size, blur})
                    ->Unit(benchmark::kMillisecond);
            }
        }
    }
}

}  // namespace

int main(int count, char** arguments) {
    benchmark::Initialize(&count, arguments);
    if (benchmark::ReportUnrecognizedArguments(count, arguments)) {
        return 2;
    }
    registerAll();
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
