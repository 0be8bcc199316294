// What a user waits for: box, loop, first and later brush strokes and undo as host calls, over the
// photographs of folders and over one large photograph. Each kind runs in a process of its own, so
// that its peak memory is its own.
//
//     segcore-bench-sessions [--photos DIR]... [--photo FILE] [--megapixels N] [--runs N]
//                            [--strokes N] [--csv FILE]
//
// --megapixels is the size that --photo is enlarged to, 12 unless stated. A folder counts once; the
// sample photographs are always measured.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <map>
#include <sstream>
#include <stdexcept>

#include "interface/segmentation_core.h"
#include "support/arguments.h"
#include "support/child_process.h"
#include "support/marks.h"
#include "support/measurements.h"
#include "support/process_memory.h"

namespace {

constexpr double kMegabyte = 1e6;
constexpr const char* kKinds[] = {"box", "loop", "first brush", "second brush", "undo"};

struct Options {
    std::string kind;  // set in the child processes
    std::string photo;
    double megapixels;
    int runs;
    int strokes;
    std::string csv;
    std::vector<std::string> folders;
};

// ---- In the child: one kind of session on one photograph ----

class HostSession {
  public:
    HostSession(const Photograph& photo, int strokes)
        : m_photo(photo), m_strokes(strokes), m_blended(photo.words), m_mask(photo.pixels()) {}
    ~HostSession() { deinitSegmentation(); }
    HostSession(const HostSession&) = delete;
    HostSession& operator=(const HostSession&) = delete;

    void run(const std::string& kind) {
        if (kind == "box") {
            box();
            return;
        }
        setSourceImage(m_photo.width, m_photo.height, m_photo.words.data());
        initSegmentationEngine(0);
        if (kind == "loop") {
            request(loopMarks(m_photo), true);
        } else if (kind == "first brush") {
            request(firstBrush(m_photo), true);
        } else {
            laterStrokes(kind == "undo");
        }
    }
    const std::vector<double>& times() const { return m_times; }

  private:
    void time(const std::function<void()>& call) { m_times.push_back(durationOf(call).wall); }

    void box() {
        const Box& box = m_photo.box;
        time([&] {
            doSegmentationBB(m_photo.width, m_photo.height, m_photo.words.data(), box.left, box.top,
                             box.right, box.bottom, m_mask.data());
        });
    }

    void request(Marks marks, bool timed) {
        const auto call = [&] {
            storeMarks(m_photo, marks);
            processSegment(0, 0, 0, m_blended.data(), m_mask.data());
        };
        if (timed) {
            time(call);
        } else {
            call();
        }
    }

    // Every stroke starts from the mask of the same first one: each is undone again.
    void laterStrokes(bool timeUndo) {
        request(firstBrush(m_photo), false);
        for (int i = 0; i < m_strokes; ++i) {
            request(laterBrush(m_photo, i), !timeUndo);
            const auto back = [&] { undo(m_blended.data(), m_mask.data()); };
            if (timeUndo) {
                time(back);
            } else {
                back();
            }
        }
    }

    const Photograph& m_photo;
    int m_strokes;
    std::vector<std::uint32_t> m_blended;
    std::vector<std::uint8_t> m_mask;
    std::vector<double> m_times;
};

Photograph photographOf(const Options& options) {
    const Photograph photo = loadPhotograph(options.photo);
    return options.megapixels > 0.0 ? enlarged(photo, options.megapixels) : photo;
}

// Writes pixels, peak bytes and the times of the session.
void measureKind(const Options& options) {
    const Photograph photo = photographOf(options);
    std::vector<double> times;
    std::size_t peak = 0;
    resetPeakMemory();
    for (int run = 0; run < options.runs; ++run) {
        HostSession session(photo, options.strokes);
        session.run(options.kind);
        peak = run == 0 ? peakMemory() : peak;
        times.insert(times.end(), session.times().begin(), session.times().end());
    }
    std::cout << photo.pixels() << ' ' << peak;
    for (const double value : times) {
        std::cout << ' ' << value;
    }
    std::cout << '\n';
}

// ---- In the parent: all kinds over a group of photographs ----

struct Group {
    std::string name;
    std::vector<std::string> files;
    double megapixels;  // 0 leaves the photographs as they are
};

struct KindResult {
    std::vector<double> times;
    std::vector<double> peaks;          // megabytes
    std::vector<double> bytesPerPixel;  // at the peak
    std::vector<double> megapixels;

    void add(const std::string& childOutput) {
        std::istringstream in(childOutput);
        double pixels = 0.0;
        double peak = 0.0;
        in >> pixels >> peak;
        megapixels.push_back(pixels / kMegabyte);
        peaks.push_back(peak / kMegabyte);
        bytesPerPixel.push_back(peak / pixels);
        for (double value = 0.0; in >> value;) {
            times.push_back(value);
        }
    }
};

void measureGroup(const Options& options, const Group& group, ResultFile& results) {
    std::printf("%s: %zu photographs\n", group.name.c_str(), group.files.size());
    for (const std::string kind : kKinds) {
        KindResult result;
        for (const std::string& file : group.files) {
            result.add(outputOfSelf({"--kind", kind, "--photo", file, "--megapixels",
                                     std::to_string(group.megapixels), "--runs",
                                     std::to_string(options.runs), "--strokes",
                                     std::to_string(options.strokes)}));
        }
        const double size = median(result.megapixels);
        const double p50 = percentile(result.times, 0.5);
        const double p95 = percentile(result.times, 0.95);
        const double peak = percentile(result.peaks, 1.0);
        const double bytes = percentile(result.bytesPerPixel, 1.0);
        std::printf(
            "  %-14s p50 %9.2f ms   p95 %9.2f ms   peak %8.1f MB, %7.1f bytes a pixel (%zu "
            "requests)\n",
            kind.c_str(), p50, p95, peak, bytes, result.times.size());
        std::fflush(stdout);
        const std::string subject = kind + " on " + group.name;
        results.add(subject, size, "p50", p50, "ms");
        results.add(subject, size, "p95", p95, "ms");
        results.add(subject, size, "peak memory", peak, "MB");
        results.add(subject, size, "peak memory a pixel", bytes, "B");
        results.add(subject, size, "requests", static_cast<double>(result.times.size()),
                    "requests");
    }
}

void measureAll(const Options& options) {
    ResultFile results(options.csv, "sessions");
    std::vector<std::string> folders = options.folders;
    folders.emplace_back(SEGCORE_BENCH_PHOTOS);
    for (const std::string& folder : folders) {
        Group group{std::filesystem::path(folder).filename().string(), photographsIn(folder), 0.0};
        if (!group.files.empty()) {
            measureGroup(options, group, results);
        } else {
            std::fprintf(stderr, "%s: no photographs in this folder\n", folder.c_str());
        }
    }
    std::ostringstream name;
    name << options.megapixels << " megapixels";
    measureGroup(options, {name.str(), {options.photo}, options.megapixels}, results);
}

Options optionsOf(Arguments arguments) {
    Options options;
    options.kind = arguments.text("--kind", "");
    options.photo = arguments.text("--photo", SEGCORE_BENCH_PHOTO);
    options.megapixels = arguments.number("--megapixels", 12.0);
    options.runs = static_cast<int>(arguments.number("--runs", 3));
    options.strokes = static_cast<int>(arguments.number("--strokes", 8));
    options.csv = arguments.text("--csv", "");
    for (std::string folder; !(folder = arguments.text("--photos", "")).empty();) {
        while (folder.size() > 1 && folder.back() == '/') {
            folder.pop_back();
        }
        options.folders.push_back(folder);
    }
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
