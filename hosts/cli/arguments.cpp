#include "arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>

#include "commands.h"
#include "delivery_options.h"
#include "mark_options.h"
#include "points.h"
#include "session/snapped_loop.h"
#include "session_on_disk.h"
#include "terminal/common_options.h"
#include "used_options.h"

namespace {

using Words = std::vector<std::string>;

constexpr const char* kVersion = "segcore " SEGCORE_VERSION;

void declareStats(CLI::App& command, StatsForm& stats) {
    command
        .add_option_function<std::string>(
            "--stats",
            [&stats](const std::string& form) {
                stats = form == "json" ? StatsForm::kJson : StatsForm::kText;
            },
            "Print milliseconds and peak memory of each stage, as text or json; to standard error "
            "when an output goes to standard output")
        ->check(CLI::IsMember({"text", "json"}))
        ->option_text("[text|json]");
}

void declareFile(CLI::App& command, const char* names, std::string& path, const char* what) {
    command.add_option(names, path, what)->option_text("FILE")->group("Outputs");
}

void declareResults(CLI::App& command, ResultOutputs& outputs) {
    declareFile(command, "-m,--mask", outputs.mask,
                "Mask: 255 object, 0 the rest; .png, .bmp, .tif or .webp");
    declareFile(command, "-o,--cutout", outputs.cutout,
                "Cut-out: the object on a transparent ground; .png, .tif, .webp or .avif, with a "
                "--background also .jpg");
    declareFile(command, "--alpha", outputs.alpha, "How much of each pixel is object, as grey");
    declareFile(command, "--svg", outputs.svg, "Object as an SVG path");
    declareFile(command, "--json", outputs.json, "Outline as JSON lists of points");
    declareDelivery(command, outputs.choice);
    declarePictures(command, outputs.pictures);
    declareStats(command, outputs.stats);
}

void declareOutputs(CLI::App& command, CutOutputs& outputs) {
    declareResults(command, outputs);
    declareFile(command, "-p,--preview", outputs.preview,
                "Photograph with the object's outline painted in; also .jpg");
    declareFile(command, "--save-session", outputs.session,
                "The marks as a session file for segcore replay");
    command
        .add_option("--dump-steps", outputs.stepFolder,
                    "The mask after each step, step-001.png …, in a new or empty folder")
        ->option_text("DIR")
        ->group("Outputs");
    command
        .add_flag("--force", outputs.force,
                  "Let --dump-steps write into a folder that holds files already")
        ->group("Outputs");
}

void requireUseOfAll(const CLI::App& command, const CutOutputs& outputs) {
    requireUse(command, OptionUse{outputs, outputs.preview, !outputs.session.empty()});
}

void declareInput(CLI::App& command, CutInput& input) {
    declareReading(command, input.reading);
    declareTimeLimit(command, input.timeLimit);
    declareTimeBudget(command, input.timeBudget);
}

CLI::App& subcommand(CLI::App& app, const char* name, const char* description) {
    CLI::App* command = app.add_subcommand(name, description);
    command->set_version_flag("--version", kVersion);
    declareVerbose(*command);
    return *command;
}

void declareCut(CLI::App& app) {
    CLI::App& command = subcommand(app, "cut", "Cut the object out of a photograph");
    const auto photo = std::make_shared<std::string>();
    const auto input = std::make_shared<CutInput>();
    const auto marks = std::make_shared<MarkOptions>();
    const auto outputs = std::make_shared<CutOutputs>();
    command.add_option("PHOTO", *photo, "Photograph, or - for standard input")
        ->required()
        ->option_text(" ");
    command
        .add_option("--session", input->sessionName,
                    "Session file (JSON) whose steps come first, to be continued by the marks")
        ->option_text("FILE");
    declareInput(command, *input);
    declareMarks(command, *marks);
    declareOutputs(command, *outputs);
    command.callback([&command, photo, input, marks, outputs] {
        requireMarksAfter(*marks);
        requireUseOfAll(command, *outputs);
        input->session.inSrgb = true;
        if (!input->sessionName.empty()) {
            input->session = readSessionFile(input->sessionName);
        }
        input->session.photo = *photo;
        input->usualEdges = Edges::kSoft;
        input->marks = marks->steps;
        runCut(*input, *outputs);
    });
}

void declareReplay(CLI::App& app) {
    CLI::App& command = subcommand(app, "replay", "Apply the steps of a session file");
    const auto photo = std::make_shared<std::string>();
    const auto input = std::make_shared<CutInput>();
    const auto outputs = std::make_shared<CutOutputs>();
    command
        .add_option("SESSION", input->sessionName, "Session file (JSON), or - for standard input")
        ->required()
        ->option_text(" ");
    command.add_option("--photo", *photo, "Photograph to use instead of the session's")
        ->option_text("FILE");
    declareInput(command, *input);
    declareOutputs(command, *outputs);
    command.callback([&command, photo, input, outputs] {
        requireUseOfAll(command, *outputs);
        input->session = readSessionFile(input->sessionName);
        if (!photo->empty()) {
            input->session.photo = *photo;
        }
        runCut(*input, *outputs);
    });
}

void declareMatte(CLI::App& app) {
    CLI::App& command =
        subcommand(app, "matte", "Make a cut-out of a photograph and a mask from elsewhere");
    const auto request = std::make_shared<MatteRequest>();
    command.add_option("PHOTO", request->photo, "Photograph, or - for standard input")
        ->required()
        ->option_text(" ");
    command
        .add_option(
            "--from-mask", request->mask,
            "Mask of the photograph's size: object where its alpha, or else its grey, is 128 "
            "or more")
        ->required()
        ->option_text("FILE");
    declareReading(command, request->reading);
    declareResults(command, request->outputs);
    command.callback([&command, request] {
        requireUse(command, OptionUse{request->outputs, {}, false});
        runMatte(*request);
    });
}

void declareSnap(CLI::App& app) {
    CLI::App& command =
        subcommand(app, "snap", "Follow the edges of a photograph from point to point");
    const auto request = std::make_shared<SnapRequest>();
    request->alpha = kDefaultAlpha;
    const auto through = std::make_shared<std::pair<Words, Words>>();
    command.add_option("PHOTO", request->photo, "Photograph, or - for standard input")
        ->required()
        ->option_text(" ");
    declareReading(command, request->reading);
    command.add_option("--from", through->first, "Where the path starts")
        ->required()
        ->expected(1)
        ->option_text("X,Y");
    command.add_option("--to", through->second, "Points that it leads through, in order")
        ->required()
        ->option_text("X,Y ...");
    command.add_option("--alpha", request->alpha, "Share of length, 0 to 1, in the path's cost")
        ->capture_default_str();
    command.add_option("--svg", request->svg, "Path as SVG; without --svg and --json both go to -")
        ->option_text("FILE");
    command.add_option("--json", request->json, "Path as JSON")->option_text("FILE");
    declareStats(command, request->stats);
    command.callback([request, through] {
        request->points = pointsOf("--from", through->first);
        const std::vector<cv::Point> rest = pointsOf("--to", through->second);
        request->points.insert(request->points.end(), rest.begin(), rest.end());
        runSnap(*request);
    });
}

}  // namespace

void declareCommands(CLI::App& app) {
    app.set_version_flag("--version", kVersion);
    app.require_subcommand(1);
    declareCut(app);
    declareReplay(app);
    declareMatte(app);
    declareSnap(app);
    app.footer(
        "Example: segcore cut samples/astronaut.png --box 20,10,362,511 --cutout person.png\n"
        "Points are x,y in photograph pixels. Details: man segcore, segcore COMMAND --help.");
}

namespace {

// An option whose value may be left out, and would else take any word after it for that.
struct OptionalValue {
    const char* option;
    bool (*isValue)(const std::string& word);
    const char* otherwise;
};

const OptionalValue kOptionalValues[] = {
    {"--stats", [](const std::string& word) { return word == "text" || word == "json"; }, "text"},
    {kCrop,
     [](const std::string& word) {
         return !word.empty() && word.find_first_not_of("0123456789") == std::string::npos;
     },
     "0"}};

}  // namespace

Words wordsOf(int argc, const char* const* argv) {
    Words words(argv + std::min(argc, 1), argv + argc);
    for (std::size_t i = 0; i < words.size(); ++i) {
        for (const auto& [option, isValue, otherwise] : kOptionalValues) {
            if (words[i] != option) {
                continue;
            }
            const bool hasValue = i + 1 < words.size() && isValue(words[i + 1]);
            words[i] += std::string("=") + (hasValue ? words[i + 1] : otherwise);
            if (hasValue) {
                words.erase(words.begin() + static_cast<std::ptrdiff_t>(i) + 1);
            }
        }
    }
    return words;
}
