#include "terminal/common_options.h"

#include <CLI/CLI.hpp>
#include <string>

#include "terminal/engine_log.h"

namespace {

std::string notALimit(const std::string& text) {
    double seconds = -1.0;
    // Not a number fails the comparison.
    return CLI::detail::lexical_cast(text, seconds) && seconds >= 0.0
               ? ""
               : "'" + text + "' is no number of seconds; give 0 for no limit, or more";
}

void declareSeconds(CLI::App& app, const char* name, double& seconds, const char* what) {
    app.add_option(name, seconds, what)
        ->check(CLI::Validator(notALimit, ""))
        ->option_text("SECONDS");
}

}  // namespace

void declareVerbose(CLI::App& app) {
    app.add_flag_callback("-v,--verbose", showEngineLog,
                          "Show the library's log on standard error");
}

void declareTimeLimit(CLI::App& app, double& seconds) {
    declareSeconds(app, "--time-limit", seconds,
                   "Seconds that each segmentation may take; 0, the default, is no limit");
}

void declareTimeBudget(CLI::App& app, double& seconds) {
    declareSeconds(app, "--time-budget", seconds,
                   "Seconds after which a mark makes do with the passes that it has made; 0, the "
                   "default, is no limit");
}
