#include "used_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <vector>

#include "pictures/picture_error.h"
#include "targets.h"

namespace {

using Endings = std::vector<std::string>;

constexpr const char* kEdgeWidth = "--edge-width";
constexpr const char* kFeather = "--feather";

bool isOneOf(const Endings& endings, const std::string& path) {
    try {
        const std::string ending = endingFor(path, PictureContent::kPicture);
        return std::count(endings.begin(), endings.end(), ending) > 0;
    } catch (const PictureError&) {
        return true;  // the name itself is what the user has to be told of
    }
}

bool isAny(const Endings& endings, const std::vector<std::string>& pictures) {
    const std::vector<std::string> paths = wantedPaths(pictures);
    return std::any_of(paths.begin(), paths.end(),
                       [&](const std::string& path) { return isOneOf(endings, path); });
}

void requireSoftEdges(const OutputChoice& choice) {
    if (choice.edges != Edges::kHard) {
        return;
    }
    for (const auto& [option, pixels] :
         {std::pair{kEdgeWidth, choice.edgeWidth}, {kFeather, choice.feather}}) {
        if (pixels.value_or(0.0) > 0.0) {
            throw CLI::ValidationError(
                option, "is for soft edges and --edges hard asks for others; leave one out");
        }
    }
}

}  // namespace

void requireUse(const CLI::App& command, const OptionUse& use) {
    const ResultOutputs& outputs = use.outputs;
    const bool isCut = !outputs.cutout.empty();
    const bool isCutOrAlpha = isCut || !outputs.alpha.empty();
    // The crop that an outline's file tells of depends on the edges.
    const bool isCropTold = outputs.pictures.cropMargin && !outputs.json.empty();
    const bool usesEdges = isCutOrAlpha || isCropTold || use.keepsChoice;
    const char* const cutOrAlpha = "a --cutout or --alpha";
    struct Rule {
        const char* option;
        bool isUsed;
        const char* users;
    };
    const Rule rules[] = {
        {"--edges", usesEdges, cutOrAlpha},
        {kEdgeWidth, usesEdges, cutOrAlpha},
        {kFeather, usesEdges, cutOrAlpha},
        {kCrop, isCutOrAlpha || isCropTold, "a --cutout, --alpha or --json"},
        {"--background", isCut, "a --cutout"},
        {"--unseen", isCut, "a --cutout"},
        {"--compression",
         isAny({".png", ".tif", ".tiff"},
               {outputs.mask, outputs.alpha, outputs.cutout, use.preview}),
         "a PNG or TIFF file"},
        {"--quality", isAny({".jpg", ".jpeg", ".webp", ".avif"}, {outputs.cutout, use.preview}),
         "a --cutout in JPEG, AVIF or WebP"}};
    for (const Rule& rule : rules) {
        if (command.count(rule.option) > 0 && !rule.isUsed) {
            throw CLI::ValidationError(
                rule.option, std::string("no output uses it; leave it out or name ") + rule.users);
        }
    }
    requireSoftEdges(outputs.choice);
}
