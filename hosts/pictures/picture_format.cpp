#include "pictures/picture_format.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <vector>

#include "pictures/picture_error.h"

namespace {

struct Format {
    const char* name;
    std::vector<std::string> endings;
    bool isWritten;  // others are read alone
    bool keepsTransparency;
    bool loses;
};

const std::vector<Format>& formats() {
    static const std::vector<Format> all{
        {"PNG", {".png"}, true, true, false},   {"JPEG", {".jpg", ".jpeg"}, true, false, true},
        {"BMP", {".bmp"}, true, false, false},  {"TIFF", {".tif", ".tiff"}, true, true, false},
        {"WebP", {".webp"}, true, true, false},  // without loss unless told otherwise
        {"AVIF", {".avif"}, true, true, true},  {"HEIC", {".heic", ".heif"}, false, true, true},
        {"PPM", {".ppm"}, false, false, false}, {"PGM", {".pgm"}, false, false, false},
    };
    return all;
}

std::string listed(const std::vector<std::string>& words) {
    std::string list;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const char* const link = i + 1 == words.size() ? " or " : ", ";
        list += (i == 0 ? "" : link) + words[i];
    }
    return list;
}

bool canHold(const Format& format, PictureContent content) {
    return format.isWritten && (content != PictureContent::kMask || !format.loses) &&
           (content != PictureContent::kCutOut || format.keepsTransparency);
}

std::string endingsFor(PictureContent content) {
    std::vector<std::string> endings;
    for (const Format& format : formats()) {
        if (canHold(format, content)) {
            endings.insert(endings.end(), format.endings.begin(), format.endings.end());
        }
    }
    return listed(endings);
}

[[noreturn]] void refuse(const std::string& fileName, const std::string& why,
                         PictureContent content) {
    throw PictureError("cannot write " + fileName + ": " + why + "; end its name in " +
                       endingsFor(content));
}

}  // namespace

std::string readableFormats() {
    std::vector<std::string> names;
    for (const Format& format : formats()) {
        names.emplace_back(format.name);
    }
    return listed(names);
}

std::string formatFor(const std::string& fileName, PictureContent content) {
    std::string ending = std::filesystem::path(fileName).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    for (const Format& format : formats()) {
        if (!format.isWritten ||
            std::count(format.endings.begin(), format.endings.end(), ending) == 0) {
            continue;
        }
        if (content == PictureContent::kCutOut && !format.keepsTransparency) {
            refuse(fileName, std::string(format.name) + " has no transparency", content);
        }
        if (!canHold(format, content)) {
            refuse(fileName, std::string(format.name) + " blurs a mask's border", content);
        }
        return ending;
    }
    refuse(fileName,
           ending.empty() ? "nothing tells its format"
                          : "\"" + ending + "\" is no format of pictures that is written",
           content);
}
