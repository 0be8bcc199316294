#include "results.h"

#include <unistd.h>

#include <algorithm>

#include "cut_out.h"
#include "errors.h"
#include "ground.h"
#include "interrupt.h"
#include "pictures/compose.h"
#include "pictures/picture_error.h"
#include "session/outline.h"
#include "targets.h"

namespace {

Bytes bytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

PictureContent contentOfCutOut(const ResultOutputs& outputs) {
    return outputs.pictures.background.empty() ? PictureContent::kCutOut : PictureContent::kPicture;
}

bool isPictureName(const std::string& path) {
    try {
        endingFor(path, PictureContent::kPicture);
        return true;
    } catch (const PictureError&) {
        return false;
    }
}

void checkCutOut(const ResultOutputs& outputs) {
    try {
        endingFor(outputs.cutout, contentOfCutOut(outputs));
    } catch (const PictureError& error) {
        throw PictureError(std::string(error.what()) +
                           (isPictureName(outputs.cutout) ? ", or give a --background" : ""));
    }
}

// Soft edges get colours for what is not seen, or scaling would bring a dark seam. Beyond hard ones there
// is nothing, as there has always been.
Unseen unseenOf(const ObjectInPhoto& object, const PictureChoice& pictures) {
    const bool isSoft = object.choice.edges == Edges::kSoft;
    return pictures.unseen.value_or(isSoft ? Unseen::kNearest : Unseen::kZero);
}

// Of all of the photograph.
Picture cutOutOn(const std::optional<Picture>& ground, const ObjectInPhoto& object,
                 const cv::Mat& alpha, const cv::Mat& seen, const PictureChoice& pictures,
                 Stats& stats) {
    if (isPhotoAsGround(pictures.background)) {
        return object.photograph;
    }
    Picture cut = stats.measure("colours of the object", [&] {
        return cutOut(object.photograph, alpha, seen, unseenOf(object, pictures),
                      throwIfInterrupted);
    });
    if (!ground) {
        return cut;
    }
    return stats.measure("background",
                         [&] { return over(cut, covering(*ground, cut.pixels.size())); });
}

void addOutlines(const cv::Mat& mask, const std::optional<cv::Rect>& crop,
                 const ResultOutputs& outputs, OutputFiles& files) {
    const std::vector<Contour> outline = contoursOf(mask);
    if (!outputs.svg.empty()) {
        files.add(outputs.svg, bytesOf(asSvg(outline, mask.size())));
    }
    if (!outputs.json.empty()) {
        files.add(outputs.json, bytesOf(asJson(outline, mask.size(), crop)));
    }
}

}  // namespace

std::vector<std::string> pathsOf(const ResultOutputs& outputs) {
    return wantedPaths({outputs.mask, outputs.cutout, outputs.alpha, outputs.svg, outputs.json});
}

void checkFormats(const ResultOutputs& outputs) {
    for (const std::string& path : wantedPaths({outputs.mask, outputs.alpha})) {
        endingFor(path, PictureContent::kMask);
    }
    if (!outputs.cutout.empty()) {
        checkCutOut(outputs);
    }
}

cv::Mat deliveredMask(const cv::Mat& mask, const MaskHygiene& hygiene, Stats& stats) {
    if (!hygiene.isWanted()) {
        return mask;
    }
    cv::Mat tidy =
        stats.measure("tidy mask", [&] { return tidied(mask, hygiene, throwIfInterrupted); });
    if (cv::countNonZero(tidy) == 0) {
        throw UserError(
            "nothing of the object is left of what --smooth and --drop-islands take away; give "
            "smaller numbers");
    }
    return tidy;
}

MadeResults makeResults(const ObjectInPhoto& object, const std::optional<Picture>& ground,
                        const ResultOutputs& outputs, Stats& stats) {
    const PictureChoice& pictures = outputs.pictures;
    MadeResults made;
    const bool tellsCrop = pictures.cropMargin && !outputs.json.empty();
    if (!tellsCrop && outputs.cutout.empty() && outputs.alpha.empty()) {
        return made;
    }
    const auto find = [&] {
        return alphaOf(object.seen, object.mask, object.choice, throwIfInterrupted);
    };
    const bool isSoft = object.choice.edges == Edges::kSoft;
    const cv::Mat alpha = isSoft ? stats.measure("soft edges", find) : find();
    const cv::Mat seen = visible(alpha, object.photograph, object.choice, throwIfInterrupted);
    cv::Rect part({0, 0}, alpha.size());
    if (pictures.cropMargin) {
        part = partInUse(seen, *pictures.cropMargin);
        made.crop = part;
    }
    if (part.empty()) {
        throw UserError("nothing of the object can be seen; crop without it");
    }
    if (!outputs.cutout.empty()) {
        made.cutout = cropped(cutOutOn(ground, object, alpha, seen, pictures, stats), part);
    }
    made.alpha = seen(part);
    return made;
}

void addResults(const ObjectInPhoto& object, const MadeResults& made, const ResultOutputs& outputs,
                OutputFiles& files) {
    WriteOptions writing = outputs.pictures.writing;
    const auto add = [&](const std::string& path, const auto& picture, PictureContent content) {
        WriteOptions options = writing;
        if (content == PictureContent::kMask) {
            options.quality.reset();  // nothing of it may be lost
        }
        files.add(path, encodePicture(picture, endingFor(path, content), options));
    };
    if (!outputs.mask.empty()) {
        add(outputs.mask, object.mask, PictureContent::kMask);
    }
    if (made.crop) {
        writing.offset = made.crop->tl();
    }
    if (!outputs.cutout.empty()) {
        add(outputs.cutout, *made.cutout, contentOfCutOut(outputs));
    }
    if (!outputs.alpha.empty()) {
        add(outputs.alpha, made.alpha, PictureContent::kMask);
    }
    if (!outputs.svg.empty() || !outputs.json.empty()) {
        addOutlines(object.mask, made.crop, outputs, files);
    }
}

void printStats(const Stats& stats, StatsForm form, const std::vector<std::string>& targets) {
    if (form == StatsForm::kNone) {
        return;
    }
    const bool taken = std::count(targets.begin(), targets.end(), kStandardStream) > 0;
    writeAll(taken ? STDERR_FILENO : STDOUT_FILENO,
             bytesOf(form == StatsForm::kJson ? stats.json() : stats.text()),
             taken ? "standard error" : "standard output");
}
