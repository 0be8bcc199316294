#include "arguments.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <memory>
#include <sstream>

#include "commands.h"
#include "engine_log.h"
#include "session/snapped_loop.h"
#include "session_on_disk.h"

namespace {

using Words = std::vector<std::string>;

constexpr const char* kVersion = "segcore " SEGCORE_VERSION;
constexpr std::size_t kBoxNumbers = 4;

// The whole numbers of "1,2,3"; anything else is a fault of the command line.
std::vector<int> numbersOf(const std::string& option, const std::string& text, std::size_t count,
                           const char* form) {
    std::vector<int> numbers;
    const char* next = text.data();
    const char* const end = text.data() + text.size();
    std::from_chars_result read{next, std::errc()};
    do {
        int number = 0;
        read = std::from_chars(next, end, number);
        numbers.push_back(number);
        next = read.ptr + 1;
    } while (read.ec == std::errc() && read.ptr != end && *read.ptr == ',');
    if (read.ec != std::errc() || read.ptr != end || numbers.size() != count) {
        const bool isName = text.find_first_of("0123456789") != 0 && text.find('-') != 0;
        throw CLI::ValidationError(option, "'" + text + "' is not " + form + " in whole pixels" +
                                               (isName ? ", and files go before marks" : ""));
    }
    return numbers;
}

// Points may come as several words or as one quoted one.
std::vector<cv::Point> pointsOf(const std::string& option, const Words& words) {
    std::vector<cv::Point> points;
    for (const std::string& word : words) {
        std::istringstream stream(word);
        for (std::string pair; stream >> pair;) {
            const std::vector<int> xy = numbersOf(option, pair, 2, "x,y");
            points.emplace_back(xy[0], xy[1]);
        }
    }
    return points;
}

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

void declareOutputs(CLI::App& command, CutOutputs& outputs) {
    const auto file = [&command](const char* names, std::string& path, const char* what) {
        command.add_option(names, path, what)->option_text("FILE")->group("Outputs");
    };
    file("-m,--mask", outputs.mask, "Mask: 255 object, 0 the rest; .png, .bmp, .tif or .webp");
    file("-o,--cutout", outputs.cutout,
         "Cut-out: the object on a transparent ground; .png, .tif or .webp");
    file("-p,--preview", outputs.preview,
         "Photograph with the object's outline painted in; also .jpg");
    file("--svg", outputs.svg, "Object as an SVG path");
    file("--json", outputs.json, "Outline as JSON lists of points");
    file("--save-session", outputs.session, "The marks as a session file for segcore replay");
    command
        .add_option("--dump-steps", outputs.stepFolder,
                    "The mask after each step, step-001.png …, in a new or empty folder")
        ->option_text("DIR")
        ->group("Outputs");
    command
        .add_flag("--force", outputs.force,
                  "Let --dump-steps write into a folder that holds files already")
        ->group("Outputs");
    declareStats(command, outputs.stats);
}

void declareDamaged(CLI::App& command, Damaged& damaged) {
    command.add_flag_callback(
        "--accept-damaged", [&damaged] { damaged = Damaged::kAccepted; },
        "Take what there is of a damaged photograph");
}

struct CutArguments {
    SessionFile session;     // its steps are those of the options
    std::string oldSession;  // to be continued
    Damaged damaged = Damaged::kRefused;
    CutOutputs outputs;
    std::optional<int> radius;    // of the brushes that follow
    std::optional<double> alpha;  // of the snapped loops that follow
    // Options that no mark has come after yet.
    bool radiusWaits = false;
    bool alphaWaits = false;
};

// Options whose order counts run as they are parsed.
template <typename Value, typename Action>
CLI::Option* inOrder(CLI::App& command, const std::string& name, Action action,
                     const char* description) {
    return command.add_option_function<Value>(name, action, description)
        ->trigger_on_parse()
        ->group("Marks, applied in the given order");
}

void declarePointMarks(CLI::App& command, CutArguments& arguments) {
    const auto mark = [&](Operation operation, const char* description) {
        const std::string option = std::string("--") + nameOf(operation);
        inOrder<Words>(
            command, option,
            [&arguments, operation, option](const Words& words) {
                Step step;
                step.operation = operation;
                step.points = pointsOf(option, words);
                step.radius = isBrush(operation) ? arguments.radius : std::nullopt;
                step.alpha = isSnappedLoop(operation) ? arguments.alpha : std::nullopt;
                arguments.radiusWaits = arguments.radiusWaits && !isBrush(operation);
                arguments.alphaWaits = arguments.alphaWaits && !isSnappedLoop(operation);
                arguments.session.steps.push_back(step);
            },
            description)
            ->option_text("X,Y X,Y ...");
    };
    mark(Operation::kLoopAdd, "Loop around what is to be added");
    mark(Operation::kLoopRemove, "Loop around what is to be removed");
    mark(Operation::kSnapLoopAdd, "Like --loop-add, snapped to the edges nearby");
    mark(Operation::kSnapLoopRemove, "Like --loop-remove, snapped to the edges nearby");
    mark(Operation::kBrushAdd, "Brush path over the object");
    mark(Operation::kBrushRemove, "Brush path over the background");
}

void declareMarks(CLI::App& command, CutArguments& arguments) {
    std::vector<Step>& steps = arguments.session.steps;
    inOrder<std::string>(
        command, "--box",
        [&steps](const std::string& text) {
            const std::vector<int> box =
                numbersOf("--box", text, kBoxNumbers, "left,top,right,bottom");
            Step step;
            step.points = {{box[0], box[1]}, {box[2], box[3]}};
            steps.push_back(step);
        },
        "Box around the object; the right and lower border belong to it")
        ->option_text("LEFT,TOP,RIGHT,BOTTOM");
    declarePointMarks(command, arguments);
    inOrder<int>(
        command, "--brush-radius",
        [&arguments](int radius) {
            arguments.radius = radius;
            arguments.radiusWaits = true;
        },
        "Radius in photograph pixels of the brushes that follow [1 % of the mean side]")
        ->option_text("R");
    inOrder<double>(
        command, "--snap-alpha",
        [&arguments](double alpha) {
            arguments.alpha = alpha;
            arguments.alphaWaits = true;
        },
        "Share of length, 0 to 1, in the path cost of the snapped loops that follow")
        ->option_text("A");
    inOrder<std::string>(
        command, "--marks",
        [&steps](const std::string& file) {
            Step step;
            step.operation = Operation::kMarks;
            step.marksFile = file;
            steps.push_back(step);
        },
        "Scribbles painted in an image: green object, red background, blue maybe object")
        ->option_text("FILE");
    const auto move = [&](Operation operation, const char* description) {
        command
            .add_flag_function(
                std::string("--") + nameOf(operation),
                [&steps, operation](std::int64_t) {
                    Step step;
                    step.operation = operation;
                    steps.push_back(step);
                },
                description)
            ->trigger_on_parse()
            ->group("Marks, applied in the given order");
    };
    move(Operation::kUndo, "Take the last mark back");
    move(Operation::kRedo, "Apply a mark again that was taken back");
}

CLI::App& subcommand(CLI::App& app, const char* name, const char* description) {
    CLI::App* command = app.add_subcommand(name, description);
    command->set_version_flag("--version", kVersion);
    command->add_flag_callback("-v,--verbose", showEngineLog,
                               "Show the library's log on standard error");
    return *command;
}

void declareCut(CLI::App& app) {
    CLI::App& command = subcommand(app, "cut", "Cut the object out of a photograph");
    const auto arguments = std::make_shared<CutArguments>();
    command.add_option("PHOTO", arguments->session.photo, "Photograph, or - for standard input")
        ->required()
        ->option_text(" ");
    command
        .add_option("--session", arguments->oldSession,
                    "Session file (JSON) whose steps come first, to be continued by the marks")
        ->option_text("FILE");
    declareDamaged(command, arguments->damaged);
    declareMarks(command, *arguments);
    declareOutputs(command, arguments->outputs);
    command.callback([arguments] {
        if (arguments->radiusWaits || arguments->alphaWaits) {
            throw CLI::ValidationError(
                arguments->radiusWaits ? "--brush-radius" : "--snap-alpha",
                "holds for the marks after it and there is none; put it before the mark");
        }
        SessionFile session = arguments->session;
        if (!arguments->oldSession.empty()) {
            session = readSessionFile(arguments->oldSession);
            session.photo = arguments->session.photo;
            session.steps.insert(session.steps.end(), arguments->session.steps.begin(),
                                 arguments->session.steps.end());
        }
        runCut(session, arguments->oldSession, arguments->damaged, arguments->outputs);
    });
}

void declareReplay(CLI::App& app) {
    CLI::App& command = subcommand(app, "replay", "Apply the steps of a session file");
    const auto path = std::make_shared<std::string>();
    const auto photo = std::make_shared<std::string>();
    const auto damaged = std::make_shared<Damaged>(Damaged::kRefused);
    const auto outputs = std::make_shared<CutOutputs>();
    command.add_option("SESSION", *path, "Session file (JSON), or - for standard input")
        ->required()
        ->option_text(" ");
    command.add_option("--photo", *photo, "Photograph to use instead of the session's")
        ->option_text("FILE");
    declareDamaged(command, *damaged);
    declareOutputs(command, *outputs);
    command.callback([path, photo, damaged, outputs] {
        SessionFile session = readSessionFile(*path);
        if (!photo->empty()) {
            session.photo = *photo;
        }
        runCut(session, *path, *damaged, *outputs);
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
    declareDamaged(command, request->damaged);
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
    declareSnap(app);
    app.footer(
        "Example: segcore cut samples/coffee.png --box 70,14,486,390 --cutout cup.png\n"
        "Points are x,y in photograph pixels. Details: man segcore, segcore COMMAND --help.");
}

Words wordsOf(int argc, const char* const* argv) {
    Words words(argv + std::min(argc, 1), argv + argc);
    for (std::size_t i = 0; i < words.size(); ++i) {
        if (words[i] != "--stats") {
            continue;
        }
        const bool hasForm =
            i + 1 < words.size() && (words[i + 1] == "text" || words[i + 1] == "json");
        words[i] += "=" + (hasForm ? words[i + 1] : "text");
        if (hasForm) {
            words.erase(words.begin() + static_cast<std::ptrdiff_t>(i) + 1);
        }
    }
    return words;
}
