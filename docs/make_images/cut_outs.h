// Hard and soft edges side by side.
#pragma once

#include <string>

// The cat of SAMPLES, cut out as its session file says and put on a new ground; writes IMAGES/cutouts.jpg.
void paintCutOuts(const std::string& samples, const std::string& images);
