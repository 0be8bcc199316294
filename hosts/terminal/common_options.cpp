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

}  // namespace

void declareVerbose(CLI::App& app) {
    app.add_flag_callback("-v,--verbose", showEngineLog,
                          "Show the library's log on standard error");
}

void declareTimeLimit(CLI::App& app, double& seconds) {
    app.add_option("--time-limit", seconds,
                   "Seconds that each segmentation may take; 0, the default, is no limit")
        ->check(CLI::Validator(notALimit, ""))
        ->option_text("SECONDS");
}
