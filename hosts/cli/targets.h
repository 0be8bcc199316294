// Where outputs go.
#pragma once

#include <string>
#include <vector>

#include "pictures/picture_format.h"

// Without the empty ones.
std::vector<std::string> wantedPaths(std::vector<std::string> paths);

// At most one of the paths is standard input, which can be read only once. Throws UserError.
void checkInputs(const std::vector<std::string>& inputs);

// Before any work: every output can be written, none over another or over an input. Throws UserError.
void checkTargets(const std::vector<std::string>& targets, const std::vector<std::string>& inputs);

// What tells a picture's format: its name's ending. What goes to a stream is PNG. Throws PictureError.
std::string endingFor(const std::string& path, PictureContent content);
