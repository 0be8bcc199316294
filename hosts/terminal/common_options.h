// Options that mean the same in every program.
#pragma once

namespace CLI {
class App;
}

// --verbose shows the library's log.
void declareVerbose(CLI::App& app);

// --time-limit, for Session::setTimeLimit; 0, for none, unless the option is given.
void declareTimeLimit(CLI::App& app, double& seconds);

// --time-budget, for Session::setTimeBudget; likewise.
void declareTimeBudget(CLI::App& app, double& seconds);
