#include "ground.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <filesystem>
#include <map>

#include "byte_stream.h"
#include "errors.h"
#include "photo.h"
#include "pictures/compose.h"

namespace {

constexpr std::size_t kHexDigits = 6;
constexpr std::size_t kShortHexDigits = 3;
constexpr int kHex = 16;

const std::map<std::string, unsigned> kNamed{{"black", 0x000000U}, {"white", 0xFFFFFFU}};

std::string inLowerCase(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return text;
}

// As style sheets have it: of three digits each stands for two.
std::string allDigits(const std::string& digits) {
    if (digits.size() != kShortHexDigits) {
        return digits;
    }
    std::string doubled;
    for (const char digit : digits) {
        doubled.append(2, digit);
    }
    return doubled;
}

// Red, green and blue from the upper byte on.
std::optional<unsigned> colourNamed(const std::string& text) {
    const auto named = kNamed.find(inLowerCase(text));
    if (named != kNamed.end()) {
        return named->second;
    }
    // With the sign in front, which shells take for the start of a comment, or without.
    const std::string digits = allDigits(text.rfind('#', 0) == 0 ? text.substr(1) : text);
    unsigned colour = 0;
    const char* const end = digits.data() + digits.size();
    const auto read = std::from_chars(digits.data(), end, colour, kHex);
    const bool isColour = digits.size() == kHexDigits && read.ec == std::errc() && read.ptr == end;
    return isColour ? std::optional(colour) : std::nullopt;
}

// One pixel, grey where it can be, so that a grey cut-out stays grey.
Picture pictureOf(unsigned colour) {
    const cv::Vec3b pixel(static_cast<std::uint8_t>(colour),
                          static_cast<std::uint8_t>(colour >> 8U),
                          static_cast<std::uint8_t>(colour >> 16U));
    Picture picture = plainPicture({1, 1}, pixel);
    if (pixel[0] == pixel[1] && pixel[1] == pixel[2]) {
        picture.pixels = cv::Mat(1, 1, CV_8UC1, cv::Scalar(pixel[0]));
    }
    return picture;
}

}  // namespace

bool isPhotoAsGround(const std::string& background) {
    return inLowerCase(background) == "photo";
}

bool isGroundFile(const std::string& background) {
    return !background.empty() && !isPhotoAsGround(background) && !colourNamed(background);
}

std::optional<Picture> readGround(const std::string& background, std::uint64_t maxPixels) {
    if (const std::optional<unsigned> colour = colourNamed(background)) {
        return pictureOf(*colour);
    }
    if (!isGroundFile(background)) {
        return std::nullopt;
    }
    std::error_code ignored;
    if (background != kStandardStream && !std::filesystem::exists(background, ignored)) {
        throw UserError(
            "--background " + background +
            " is neither a colour nor a file; give RRGGBB, RGB, white, black, photo or a "
            "picture");
    }
    return readCompanion(background, maxPixels);
}
