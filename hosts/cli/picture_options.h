// The options of the pictures that are written, beside their names, and of the one that is read.
#pragma once

#include <optional>
#include <string>

#include "matting/matting.h"
#include "pictures/read_picture.h"
#include "pictures/write_picture.h"

namespace CLI {
class App;
}

struct PictureChoice {
    std::optional<int> cropMargin;  // none: the whole photograph
    std::string background;         // as ground.h takes it; empty: transparent
    std::optional<Unseen> unseen;   // none: as serves the edges best
    WriteOptions writing;
};

constexpr const char* kCrop = "--crop";

void declarePictures(CLI::App& command, PictureChoice& choice);

// Damage of the photograph, and size of every picture that is read.
void declareReading(CLI::App& command, ReadOptions& options);
