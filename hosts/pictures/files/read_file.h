// What every reader of a format is given, and how the formats are told apart.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "pictures/read_picture.h"

struct PictureFile {
    const std::vector<std::uint8_t>& bytes;
    const std::string& name;  // for messages
    const ReadOptions& options;

    bool takesDamaged() const { return options.damaged == Damaged::kAccepted; }
};

// None for a file of another format.
std::optional<PictureFormat> formatOf(const std::vector<std::uint8_t>& bytes);

Picture readFile(const PictureFile& file);

// Throws PictureError when there are more pixels than asked for. Sides are at least 0.
void requireFewPixels(const PictureFile& file, std::int64_t width, std::int64_t height);

[[noreturn]] void failAsDamaged(const PictureFile& file, const std::string& what);
// For what cannot even be told to be damaged.
[[noreturn]] void failAsNoPicture(const PictureFile& file);
