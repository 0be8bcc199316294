// segcore-measure: cuts the photographs of a folder from their marks and says how far the masks are
// from the true ones.
//
// A case names the marks of a session in order, joined by "+": box, lasso, s1 and s2. A scribble
// set is one step of painted marks.
#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>

#include "contact_sheet.h"
#include "measure/folder_on_disk.h"
#include "measure/mark_case.h"
#include "measure/score.h"
#include "picture_on_disk.h"
#include "terminal/common_options.h"
#include "terminal/engine_log.h"

namespace {

constexpr int kWrongUse = 2;
constexpr double kLargePhotoPixels = 1e6;  // means are taken for small and large ones apart

struct Options {
    std::string folder;
    std::vector<std::string> cases{"box", "lasso", "box+s2"};
    std::vector<std::string> only;
    std::string contactSheet;
    std::string maskFolder;
    double timeLimit = 0.0;  // seconds, 0 for none
    bool json = false;
};

struct Result {
    std::string photo;
    std::string markCase;
    bool large = false;
    std::optional<Score> score;  // none without a true mask
    double milliseconds = 0.0;
};

// Empty when the photograph lacks one of the case's marks.
cv::Mat cut(const DataPhoto& photo, const cv::Mat& image, const std::string& markCase,
            double timeLimit) {
    try {
        CaseSession session(photo, image, timeLimit);
        return session.apply(markCase) ? session.mask() : cv::Mat();
    } catch (const UserError& error) {
        throw std::runtime_error(photo.name() + " " + markCase + ": " + error.what());
    }
}

cv::Mat scribblesOf(const DataPhoto& photo, const std::string& markCase) {
    const std::string last = marksOf(markCase).back();
    return last == "s1" || last == "s2" ? photo.scribbles(last) : cv::Mat();
}

std::string captionOf(const Result& result) {
    std::ostringstream caption;
    caption.precision(3);
    caption << result.photo << ' ' << result.markCase;
    if (result.score) {
        caption << ' ' << 100.0 * result.score->errorRate << '%';
    }
    return caption.str();
}

std::vector<Result> measure(const Options& options, ContactSheet& sheet) {
    std::vector<Result> results;
    const FolderOnDisk folder(options.folder);
    for (const DataPhoto& photo : photosIn(folder)) {
        const bool wanted =
            options.only.empty() ||
            std::find(options.only.begin(), options.only.end(), photo.name()) != options.only.end();
        if (!wanted) {
            continue;
        }
        const cv::Mat image = photo.image();
        const cv::Mat truth = photo.truth();
        sheet.startRow();
        for (const std::string& markCase : options.cases) {
            const auto start = std::chrono::steady_clock::now();
            const cv::Mat mask = cut(photo, image, markCase, options.timeLimit);
            const std::chrono::duration<double, std::milli> elapsed =
                std::chrono::steady_clock::now() - start;
            if (mask.empty()) {
                continue;
            }
            Result result;
            result.photo = photo.name();
            result.markCase = markCase;
            result.large = static_cast<double>(image.total()) > kLargePhotoPixels;
            result.milliseconds = elapsed.count();
            if (!truth.empty()) {
                result.score = scoreOf(mask, truth);
            }
            sheet.add(image, mask, scribblesOf(photo, markCase), captionOf(result));
            if (!options.maskFolder.empty()) {
                const std::filesystem::path masks(options.maskFolder);
                writePicture((masks / (photo.name() + "." + markCase + ".png")).string(), mask,
                             PictureContent::kMask);
            }
            results.push_back(std::move(result));
        }
    }
    return results;
}

struct Mean {
    int count = 0;
    double errorRate = 0.0;
    double iou = 0.0;
    double milliseconds = 0.0;
};

// By case and size class.
std::map<std::pair<std::string, bool>, Mean> meansOf(const std::vector<Result>& results) {
    std::map<std::pair<std::string, bool>, Mean> means;
    for (const Result& result : results) {
        if (result.score) {
            Mean& sum = means[{result.markCase, result.large}];
            ++sum.count;
            sum.errorRate += result.score->errorRate;
            sum.iou += result.score->iou;
            sum.milliseconds += result.milliseconds;
        }
    }
    for (auto& [key, mean] : means) {
        mean.errorRate /= mean.count;
        mean.iou /= mean.count;
        mean.milliseconds /= mean.count;
    }
    return means;
}

void printTable(const std::vector<Result>& results) {
    std::printf("%-18s %-10s %8s %8s %9s\n", "photograph", "case", "error %", "IoU", "ms");
    for (const Result& result : results) {
        std::printf("%-18s %-10s ", result.photo.c_str(), result.markCase.c_str());
        if (result.score) {
            std::printf("%8.3f %8.4f", 100.0 * result.score->errorRate, result.score->iou);
        } else {
            std::printf("%8s %8s", "-", "-");
        }
        std::printf(" %9.0f\n", result.milliseconds);
    }
    for (const auto& [key, mean] : meansOf(results)) {
        const std::string label =
            "mean of " + std::to_string(mean.count) + (key.second ? " large" : "");
        std::printf("%-18s %-10s %8.3f %8.4f %9.0f\n", label.c_str(), key.first.c_str(),
                    100.0 * mean.errorRate, mean.iou, mean.milliseconds);
    }
}

void printJson(const std::vector<Result>& results) {
    nlohmann::json document{{"results", nlohmann::json::array()},
                            {"means", nlohmann::json::array()}};
    for (const Result& result : results) {
        nlohmann::json entry{{"photograph", result.photo},
                             {"case", result.markCase},
                             {"large", result.large},
                             {"milliseconds", result.milliseconds}};
        if (result.score) {
            entry["errorRate"] = result.score->errorRate;
            entry["iou"] = result.score->iou;
        }
        document["results"].push_back(entry);
    }
    for (const auto& [key, mean] : meansOf(results)) {
        document["means"].push_back({{"case", key.first},
                                     {"large", key.second},
                                     {"photographs", mean.count},
                                     {"errorRate", mean.errorRate},
                                     {"iou", mean.iou},
                                     {"milliseconds", mean.milliseconds}});
    }
    std::printf("%s\n", document.dump(2).c_str());
}

void declareOptions(CLI::App& app, Options& options) {
    app.add_option("folder", options.folder, "Photographs with true masks and marks")
        ->required()
        ->check(CLI::ExistingDirectory);
    app.add_option("--case", options.cases, "Marks of a session, e.g. box+s1")
        ->delimiter(',')
        ->check(CLI::Validator(faultOf, "MARK[+MARK...]"))
        ->capture_default_str();
    app.add_option("--only", options.only, "Names of the photographs to measure")->delimiter(',');
    app.add_option("--contact-sheet", options.contactSheet, "Picture of all results");
    app.add_option("--masks", options.maskFolder, "Folder to write the masks to")
        ->check(CLI::ExistingDirectory);
    declareTimeLimit(app, options.timeLimit);
    app.add_flag("--json", options.json, "Print JSON instead of a table");
    declareVerbose(app);
}

void run(const Options& options) {
    if (!options.contactSheet.empty()) {
        formatFor(options.contactSheet, PictureContent::kPicture);  // before any work
    }
    ContactSheet sheet;
    const std::vector<Result> results = measure(options, sheet);
    if (results.empty()) {
        throw std::runtime_error(options.folder + ": no photograph with these marks");
    }
    options.json ? printJson(results) : printTable(results);
    if (!options.contactSheet.empty()) {
        sheet.write(options.contactSheet);
    }
}

}  // namespace

int main(int argc, char** argv) {
    try {
        hideEngineLog();
        Options options;
        CLI::App app{"Measures the masks that photographs are cut to from their marks"};
        declareOptions(app, options);
        try {
            app.parse(argc, argv);
        } catch (const CLI::ParseError& error) {
            return app.exit(error) == 0 ? 0 : kWrongUse;
        }
        run(options);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "segcore-measure: %s\n", error.what());
    } catch (...) {
        std::fputs("segcore-measure: failed for an unknown reason\n", stderr);
    }
    return 1;
}
