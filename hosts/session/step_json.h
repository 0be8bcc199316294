// A step as an object of a session file; session_file.h shows the format.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "session/session_file.h"
#include "session/step.h"

// The versions of the format: kinds of correction came with the second, what is delivered, colours and
// the photograph's border with the third.
constexpr int kPlainVersion = 1;
constexpr int kCorrectionVersion = 2;
constexpr int kOutputVersion = 3;

// The lowest version that can hold the step.
int versionFor(const Step& step);

// Throws UserError naming the step, as `name`, and the field; also for what `version` does not have.
Step readStep(const nlohmann::ordered_json& object, const std::string& name, int version,
              const FileNaming& nameForHost);

nlohmann::ordered_json asJson(const Step& step, const FileNaming& nameInFile);
