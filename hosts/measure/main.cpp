// segcore-measure: cuts the photographs of a folder from their marks and says how far the masks are
// from the true ones.
//
// Without --robot the marks are those of a case, joined by "+": box, lasso, s1 and s2. A scribble
// set is one step of painted marks. With --robot strokes on the largest mistakes follow, one by
// one.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <stdexcept>

#include "cases.h"
#include "csv.h"
#include "curves.h"
#include "json.h"
#include "measure/folder_on_disk.h"
#include "measure/photo_choice.h"
#include "options.h"
#include "output_file.h"
#include "result_pictures.h"
#include "table.h"
#include "terminal/engine_log.h"

namespace {

constexpr int kWrongUse = 2;

template <typename Result>
void append(std::vector<Result>& all, const std::vector<Result>& some) {
    all.insert(all.end(), some.begin(), some.end());
}

template <typename Result>
void requireAny(const std::vector<Result>& results, const Options& options) {
    if (results.empty()) {
        throw std::runtime_error(options.folder + ": no photograph with these marks");
    }
}

// The robot takes a second or more for each photograph. The next line written to the terminal
// covers the number.
void showProgress(std::size_t photo, std::size_t photos) {
    if (isatty(STDERR_FILENO) != 0) {
        std::fprintf(stderr, "%zu of %zu photographs\r", photo, photos);
    }
}

void runCases(const Options& options) {
    ResultPictures pictures(options.pictures);
    std::vector<CaseResult> results;
    const FolderOnDisk folder(options.folder);
    for (const DataPhoto& photo : chosenPhotos(folder, options.only)) {
        append(results, cutCases(photo, options.cases, pictures));
    }
    requireAny(results, options);
    options.json ? printJson(results) : printTable(results);
    pictures.finish();
}

void runRobot(const Options& options) {
    OutputFile csv(options.csv);
    OutputFile curves(options.curves);
    ResultPictures pictures(options.pictures);
    const RobotWatcher watch = [&](const RobotView& view) { pictures.add(view); };
    csv.write(csvHeading());
    std::vector<RobotResult> results;
    const FolderOnDisk folder(options.folder);
    const std::vector<DataPhoto> photos = chosenPhotos(folder, options.only);
    for (const DataPhoto& photo : photos) {
        showProgress(static_cast<std::size_t>(&photo - photos.data()) + 1, photos.size());
        const std::vector<RobotResult> some = runRobot(photo, options.robot, watch);
        csv.write(csvOf(some, options.robot.start));
        append(results, some);
    }
    requireAny(results, options);
    const std::vector<MethodSummary> summaries = summariesOf(results, options.robot);
    options.json ? printJson(results, summaries, options.robot)
                 : printTable(summaries, options.robot);
    curves.write(curvesOf(summaries, options.robot));
    pictures.finish();
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
        options.useRobot ? runRobot(options) : runCases(options);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "segcore-measure: %s\n", error.what());
    } catch (...) {
        std::fputs("segcore-measure: failed for an unknown reason\n", stderr);
    }
    return 1;
}
