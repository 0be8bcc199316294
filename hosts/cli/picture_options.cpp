#include "picture_options.h"

#include <CLI/CLI.hpp>
#include <map>

namespace {

constexpr const char* kGroup = "Pictures";
constexpr int kLargestMargin = 100000;
constexpr int kMostCompression = 9;

// Beyond it nothing can be addressed, whatever the machine.
constexpr std::int64_t kLargestMaxPixels = std::int64_t{1} << 40U;

const std::map<std::string, Unseen> kUnseen{{"nearest", Unseen::kNearest}, {"zero", Unseen::kZero}};

// The parser takes a negative number for a huge one where it is to have no sign.
std::string notMaxPixels(const std::string& text) {
    std::int64_t pixels = 0;
    return CLI::detail::lexical_cast(text, pixels) && pixels >= 1 && pixels <= kLargestMaxPixels
               ? ""
               : "'" + text + "' is no number of pixels; give 1 to " +
                     std::to_string(kLargestMaxPixels);
}

}  // namespace

void declarePictures(CLI::App& command, PictureChoice& choice) {
    command
        .add_option(kCrop, choice.cropMargin,
                    "Crop cut-out and alpha to the object, with so many pixels around it [0]")
        ->check(CLI::Range(0, kLargestMargin))
        ->option_text("[MARGIN]")
        ->group(kGroup);
    command
        .add_option(
            "--background", choice.background,
            "What stands behind the cut-out: RRGGBB, RGB, white, black, photo or a picture file")
        ->check(CLI::Validator(
            [](const std::string& what) {
                return std::string(what.empty() ? "names nothing; give a colour, photo or a "
                                                  "picture file"
                                                : "");
            },
            ""))
        ->option_text("WHAT")
        ->group(kGroup);
    command
        .add_option_function<std::string>(
            "--unseen", [&choice](const std::string& name) { choice.unseen = kUnseen.at(name); },
            "Colours where nothing of the object is seen: nearest, those of its edge, or zero")
        ->check(CLI::IsMember({"nearest", "zero"}))
        ->option_text("nearest|zero")
        ->group(kGroup);
    command
        .add_flag("--strip", choice.writing.strip,
                  "Leave out what the photograph's file notes, but for the colour profile")
        ->group(kGroup);
    command
        .add_option("--compression", choice.writing.compression,
                    "Of PNG and TIFF: 0, fast, to 9, small")
        ->check(CLI::Range(0, kMostCompression))
        ->capture_default_str()
        ->option_text("N")
        ->group(kGroup);
    command
        .add_option("--quality", choice.writing.quality,
                    "Of JPEG and AVIF, 1 to 100; with it WebP loses what is hardly seen")
        ->check(CLI::Range(1, 100))
        ->option_text("Q")
        ->group(kGroup);
}

void declareReading(CLI::App& command, ReadOptions& options) {
    command.add_flag_callback(
        "--accept-damaged", [&options] { options.damaged = Damaged::kAccepted; },
        "Take what there is of a damaged photograph");
    command
        .add_option("--max-pixels", options.maxPixels,
                    "Refuse larger pictures before they are decoded")
        ->check(CLI::Validator(notMaxPixels, ""))
        ->capture_default_str()
        ->option_text("N");
}
