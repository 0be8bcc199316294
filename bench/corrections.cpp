// What a user waits for when correcting: from a stroke to the first mask shown and to the final one,
// for both kinds of correction, and what a box with all its passes takes beside its single request.
// The sample photographs are enlarged; each photograph and kind runs in a process of its own, so
// that its peak memory is its own.
//
//     segcore-bench-corrections [--megapixels N]... [--strokes N] [--runs N] [--csv FILE]
//
// Without --megapixels at 0.3, 2, 12 and 24. A digest of all masks is printed beside the times: two
// states of the session that print the same one have made the same masks.
#define XXH_INLINE_ALL
#include <xxhash.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iomanip>
#include <iostream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "session/session.h"
#include "support/arguments.h"
#include "support/child_process.h"
#include "support/measurements.h"
#include "support/photograph.h"
#include "support/process_memory.h"

namespace {

constexpr double kMegabyte = 1e6;
constexpr double kUsualSizes[] = {0.3, 2.0, 12.0, 24.0};
constexpr const char* kBox = "box";
// A person makes some strokes one after the other; then they are undone and others follow.
constexpr int kStrokesInARow = 3;

struct Options {
    std::string kind;   // kBox or the name of a correction; set in the child processes
    std::string photo;  // of the child processes
    std::vector<double> megapixels;
    int strokes;
    int runs;
    std::string csv;
};

// ---- In the child: one photograph, boxes or corrections of one kind ----

// Notes when the first mask of a step could be shown.
class WatchingHost : public SessionHost {
  public:
    void beginStep() {
        m_stopwatch = Stopwatch();
        m_firstMask.reset();
    }
    bool onProgress(const RequestProgress& progress) override {
        if (!progress.workingMask.empty() && !m_firstMask) {
            m_firstMask = m_stopwatch.elapsed();
        }
        return true;
    }
    Duration elapsed() const { return m_stopwatch.elapsed(); }
    Duration firstMask() const {
        if (!m_firstMask) {
            throw std::runtime_error("a step showed no working mask");
        }
        return *m_firstMask;
    }

  private:
    Stopwatch m_stopwatch;
    std::optional<Duration> m_firstMask;
};

Step stepOf(Operation operation) {
    Step step;
    step.operation = operation;
    return step;
}

Step boxAround(const Photograph& photo, std::optional<int> passes) {
    Step step = stepOf(Operation::kBox);
    step.points = {{photo.box.left, photo.box.top}, {photo.box.right, photo.box.bottom}};
    step.correction = Correction::kWholeObject;
    step.passes = passes;
    return step;
}

// Strokes of one to four hundredths up to a third of the box's sides: most in its middle half, which
// add, the others around that, which remove.
Step strokeOn(const Photograph& photo, int number) {
    cv::RNG generator(static_cast<std::uint64_t>(number) + 1);
    const auto inBox = [&photo](double u, double v) {
        const Box& box = photo.box;
        const double x = box.left + u * (box.right - box.left);
        const double y = box.top + v * (box.bottom - box.top);
        return cv::Point(std::clamp(static_cast<int>(x), 0, photo.width - 1),
                         std::clamp(static_cast<int>(y), 0, photo.height - 1));
    };
    double u = generator.uniform(-0.02, 1.02);
    double v = generator.uniform(-0.02, 1.02);
    const bool adds = std::abs(u - 0.5) < 0.25 && std::abs(v - 0.5) < 0.25;
    Step step = stepOf(adds ? Operation::kBrushAdd : Operation::kBrushRemove);
    const int bends = generator.uniform(1, 4);
    const double length = generator.uniform(0.01, 0.12);
    double direction = generator.uniform(0.0, 2.0 * CV_PI);
    step.points = {inBox(u, v)};
    for (int i = 0; i < bends; ++i) {
        u += length * std::cos(direction);
        v += length * std::sin(direction);
        direction += generator.uniform(-1.0, 1.0);
        step.points.push_back(inBox(u, v));
    }
    return step;
}

class MeasuredSession {
  public:
    explicit MeasuredSession(const Photograph& photo)
        : m_photo{photo.width, photo.height, photo.words}, m_session(m_photo, m_host, m_stats) {}

    // With `report` a line of milliseconds: to the first mask shown and to the final one, each with
    // the processor time until then. All masks go into the digest.
    void apply(const Step& step, bool report) {
        m_host.beginStep();
        m_session.apply(step);
        const Duration whole = m_host.elapsed();
        if (report) {
            const Duration first = m_host.firstMask();
            std::cout << first.wall << ' ' << first.processor << ' ' << whole.wall << ' '
                      << whole.processor << '\n';
        }
        const cv::Mat& mask = m_session.result();  // without gaps between its rows
        m_digest = XXH3_64bits_withSeed(mask.data, mask.total(), m_digest);
    }
    XXH64_hash_t digest() const { return m_digest; }

  private:
    Photo m_photo;
    WatchingHost m_host;
    Stats m_stats;
    Session m_session;
    XXH64_hash_t m_digest = 0;
};

// A box with all its passes and the single request in turns, so that a slow moment of the machine
// hits both; each is undone again.
void measureBoxes(const Options& options, const Photograph& photo, MeasuredSession& session) {
    for (int run = 0; run < options.runs; ++run) {
        for (const std::optional<int> passes : {std::optional<int>(), std::optional<int>(1)}) {
            session.apply(boxAround(photo, passes), true);
            session.apply(stepOf(Operation::kUndo), false);
        }
    }
}

void measureStrokes(const Options& options, const Photograph& photo, MeasuredSession& session) {
    session.apply(boxAround(photo, 1), false);
    resetPeakMemory();
    for (int stroke = 0; stroke < options.strokes; ++stroke) {
        Step step = strokeOn(photo, stroke);
        step.correction = correctionNamed(options.kind);
        session.apply(step, true);
        for (int i = 0; (stroke + 1) % kStrokesInARow == 0 && i < kStrokesInARow; ++i) {
            session.apply(stepOf(Operation::kUndo), false);
        }
    }
}

// Writes a line a step, then pixels, peak bytes and the digest.
void measureKind(const Options& options) {
    Photograph photo = enlarged(loadPhotograph(options.photo), options.megapixels.front());
    MeasuredSession session(photo);
    photo.words = {};  // the session has a copy
    options.kind == kBox ? measureBoxes(options, photo, session)
                         : measureStrokes(options, photo, session);
    std::cout << "end " << photo.width * photo.height << ' ' << peakMemory() << ' ' << std::hex
              << session.digest() << '\n';
}

// ---- In the parent: all kinds and sizes over the sample photographs ----

struct Times {
    std::vector<Duration> firstMask;
    std::vector<Duration> finalMask;
};

struct KindResult {
    Times times;
    double peak = 0.0;  // megabytes
    std::string digests;

    void add(const std::string& childOutput) {
        std::istringstream lines(childOutput);
        for (std::string line; std::getline(lines, line);) {
            std::istringstream in(line);
            if (line.rfind("end ", 0) == 0) {
                double pixels = 0.0;
                double bytes = 0.0;
                std::string digest;
                in.ignore(4) >> pixels >> bytes >> digest;
                peak = std::max(peak, bytes / kMegabyte);
                digests += ' ' + digest;
                continue;
            }
            Duration first;
            Duration final;
            in >> first.wall >> first.processor >> final.wall >> final.processor;
            times.firstMask.push_back(first);
            times.finalMask.push_back(final);
        }
    }
};

KindResult resultOf(const Options& options, const std::string& kind, double megapixels) {
    KindResult result;
    for (const std::string& file : photographsIn(SEGCORE_BENCH_PHOTOS)) {
        result.add(outputOfSelf({"--kind", kind, "--photo", file, "--megapixels",
                                 std::to_string(megapixels), "--runs", std::to_string(options.runs),
                                 "--strokes", std::to_string(options.strokes)}));
    }
    return result;
}

void reportTimes(const std::string& subject, double megapixels, const std::vector<Duration>& times,
                 ResultFile& results) {
    std::vector<double> wall;
    std::vector<double> processor;
    for (const Duration& time : times) {
        wall.push_back(time.wall);
        processor.push_back(time.processor);
    }
    std::printf("  %-28s p50 %8.1f ms   p95 %8.1f ms   processor %8.1f and %8.1f ms\n",
                subject.c_str(), percentile(wall, 0.5), percentile(wall, 0.95),
                percentile(processor, 0.5), percentile(processor, 0.95));
    results.add(subject, megapixels, "p50", percentile(wall, 0.5), "ms");
    results.add(subject, megapixels, "p95", percentile(wall, 0.95), "ms");
    results.add(subject, megapixels, "processor p50", percentile(processor, 0.5), "ms");
    results.add(subject, megapixels, "processor p95", percentile(processor, 0.95), "ms");
    results.add(subject, megapixels, "steps", static_cast<double>(times.size()), "steps");
}

void measureCorrections(const Options& options, double megapixels, ResultFile& results) {
    for (const CorrectionName& correction : kCorrectionNames) {
        const std::string kind = correction.name;
        const KindResult result = resultOf(options, kind, megapixels);
        reportTimes(kind + ", first mask", megapixels, result.times.firstMask, results);
        reportTimes(kind + ", final mask", megapixels, result.times.finalMask, results);
        results.add(kind, megapixels, "peak memory", result.peak, "MB");
        std::printf("  %-28s peak %8.1f MB   masks%s\n", kind.c_str(), result.peak,
                    result.digests.c_str());
        std::fflush(stdout);
    }
}

// The steps come in turns: all passes, then the single request.
void measureBox(const Options& options, double megapixels, ResultFile& results) {
    const KindResult result = resultOf(options, kBox, megapixels);
    Times turns[2];
    std::vector<double> ratios;
    for (std::size_t i = 0; i < result.times.finalMask.size(); ++i) {
        Times& turn = turns[i % 2];
        turn.firstMask.push_back(result.times.firstMask[i]);
        turn.finalMask.push_back(result.times.finalMask[i]);
        if (i % 2 == 1) {
            ratios.push_back(turns[0].finalMask.back().processor /
                             turns[1].finalMask.back().processor);
        }
    }
    reportTimes("box, all passes", megapixels, turns[0].finalMask, results);
    reportTimes("box, all passes, first mask", megapixels, turns[0].firstMask, results);
    reportTimes("box, single request", megapixels, turns[1].finalMask, results);
    const double ratio = median(ratios);
    const double most = percentile(ratios, 1.0);
    std::printf("  %-28s %.2f times the processor time, at most %.2f   masks%s\n",
                "box, all to single", ratio, most, result.digests.c_str());
    results.add("box, all passes", megapixels, "ratio", ratio, "times");
    results.add("box, all passes", megapixels, "largest ratio", most, "times");
}

void measureAll(const Options& options) {
    ResultFile results(options.csv, "corrections");
    for (const double megapixels : options.megapixels) {
        std::printf("%g megapixels\n", megapixels);
        measureCorrections(options, megapixels, results);
        measureBox(options, megapixels, results);
    }
}

Options optionsOf(Arguments arguments) {
    Options options;
    options.kind = arguments.text("--kind", "");
    options.photo = arguments.text("--photo", "");
    for (double size; (size = arguments.number("--megapixels", 0.0)) > 0.0;) {
        options.megapixels.push_back(size);
    }
    if (options.megapixels.empty()) {
        options.megapixels.assign(std::begin(kUsualSizes), std::end(kUsualSizes));
    }
    options.strokes = static_cast<int>(arguments.number("--strokes", 24));
    options.runs = static_cast<int>(arguments.number("--runs", 3));
    options.csv = arguments.text("--csv", "");
    arguments.requireAllTaken();
    return options;
}

}  // namespace

int main(int count, char** list) {
    return runProgram(count, list, [](const Arguments& arguments) {
        const Options options = optionsOf(arguments);
        if (options.kind.empty()) {
            measureAll(options);
        } else {
            measureKind(options);
        }
    });
}
