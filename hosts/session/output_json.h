// The choice of what is delivered as an object of a session file; session_file.h shows the format.
#pragma once

#include <nlohmann/json.hpp>
#include <string>

#include "session/output_choice.h"

// Throws UserError naming the object, as `name`, and the field.
OutputChoice readOutput(const nlohmann::ordered_json& object, const std::string& name);

// What has been chosen.
nlohmann::ordered_json asJson(const OutputChoice& choice);
