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

// What is not a number at all fails every comparison, and so must not pass for lack of one.
CLI::Validator pixelsUpTo(double most) {
    return CLI::Validator(
        [most](const std::string& text) {
            double pixels = -1.0;
            const bool isInRange =
                CLI::detail::lexical_cast(text, pixels) && pixels >= 0.0 && pixels <= most;
            return isInRange ? std::string()
                             : "'" + text + "' is no number of pixels; give 0 to " +
                                   std::to_string(static_cast<int>(most));
        },
        "");
}

void declareEdges(CLI::App& command, OutputChoice& choice) {
    constexpr const char* kEdgesGroup = "Edges of the cut-out and the alpha";
    command
        .add_option_function<std::string>(
            "--edges", [&choice](const std::string& name) { choice.edges = edgesNamed(name); },
            "Soft, partly object along the outline as the photograph shows it, or hard")
        ->check(CLI::IsMember({nameOf(Edges::kSoft), nameOf(Edges::kHard)}))
        ->option_text("soft|hard")
        ->group(kEdgesGroup);
    command
        .add_option("--edge-width", choice.edgeWidth,
                    "Pixels that a soft edge may reach to either side of the outline [as measured]")
        ->check(pixelsUpTo(kLargestEdgeWidth))
        ->option_text("W")
        ->group(kEdgesGroup);
    command
        .add_option("--feather", choice.feather,
                    "Blur soft edges further, by so many pixels (sigma) [0]")
        ->check(pixelsUpTo(kLargestFeather))
        ->option_text("S")
        ->group(kEdgesGroup);
}

void declareHygiene(CLI::App& command, OutputChoice& choice) {
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

}  // namespace

void declareDelivery(CLI::App& command, OutputChoice& choice) {
    declareEdges(command, choice);
    declareHygiene(command, choice);
}
