// segcore: cuts the object out of a photograph from the command line.
//
// Exit codes: 0 done, 1 failed, 2 wrong use, 128 plus the signal's number when interrupted (130 for
// Ctrl-C). Failures say in one line what is wrong and what to do, and leave no output behind, with one
// exception: statistics come last, since they time the writing of the outputs. Where only they cannot be
// printed, the outputs are in place.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <exception>
#include <iostream>
#include <opencv2/core.hpp>
#include <opencv2/core/utils/logger.hpp>
#include <sstream>

#include "arguments.h"
#include "byte_stream.h"
#include "errors.h"
#include "interrupt.h"
#include "terminal/engine_log.h"
#include "wrong_use.h"

namespace {

constexpr int kFailed = 1;
constexpr int kWrongUse = 2;
constexpr int kSignalBase = 128;

int report(const std::string& what, int code) {
    std::cerr << "segcore: " << what << "\n";
    return code;
}

void parse(CLI::App& app, std::vector<std::string> words) {
    std::reverse(words.begin(), words.end());  // the parser takes them from the back
    try {
        app.parse(std::move(words));
    } catch (const CLI::Success& asked) {  // help or version
        std::ostringstream text;
        app.exit(asked, text, text);
        const std::string asText = text.str();
        writeAll(STDOUT_FILENO, {asText.begin(), asText.end()}, "standard output");
    }
}

int parseAndRun(int argc, char** argv) {
    CLI::App app("Cuts the object out of a photograph.", "segcore");
    declareCommands(app);
    try {
        parse(app, wordsOf(argc, argv));
        return 0;
    } catch (const CLI::ParseError& error) {
        return report(explain(app, error), kWrongUse);
    }
}

int run(int argc, char** argv) {
    try {
        return parseAndRun(argc, argv);
    } catch (const Interrupted& error) {
        return report(error.what(), kSignalBase + error.signal);
    } catch (const std::bad_alloc&) {
        return report("memory ran out; reduce the photograph", kFailed);
    } catch (const cv::Exception& error) {
        return report("imaging library: " + oneLine(error.err) + "; reduce the photograph",
                      kFailed);
    } catch (const std::exception& error) {
        return report(error.what(), kFailed);
    }
}

}  // namespace

int main(int argc, char** argv) {
    // A reader that goes away is an error like any other.
    std::signal(SIGPIPE, SIG_IGN);
    cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
    hideEngineLog();
    const InterruptWatch watch;
    return run(argc, argv);
}
