#include "delivery_options.h"

#include <CLI/CLI.hpp>
#include <cstdint>

namespace {

constexpr const char* kGroup = "The mask as it is delivered, in this order";

void declarePixels(CLI::App& command, const char* name, std::optional<int>& value, int most,
                   const char* letter, const char* description) {
    command.add_option(name, value, description)
        ->check(CLI::Range(0, most))
        ->option_text(letter)
        ->group(kGroup);
}

}  // namespace

void declareDelivery(CLI::App& command, OutputChoice& choice) {
    declarePixels(command, "--smooth", choice.smooth, kLargestSmoothing, "R",
                  "Make each pixel what most are within R pixels of it");
    declarePixels(command, "--fill-holes", choice.fillHoles, INT32_MAX, "N",
                  "Fill holes of at most N pixels");
    declarePixels(command, "--drop-islands", choice.dropIslands, INT32_MAX, "N",
                  "Drop pieces of the object of at most N pixels");
    const auto largest = [&](const char* name, bool kept, const char* description) {
        command
            .add_flag_callback(
                name, [&choice, kept] { choice.keepLargest = kept; }, description)
            ->group(kGroup);
    };
    largest("--keep-largest", true, "Keep the largest piece of the object alone");
    largest("--no-keep-largest", false, "Keep all pieces, whatever a session file says");
}
