// Makes the pictures of README.md and docs/ from the sample photographs:
//     make-doc-images SAMPLES IMAGES
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "cut_outs.h"
#include "painting.h"
#include "pictures/engine_colours.h"
#include "pictures/read_picture.h"
#include "session/session.h"
#include "snapping.h"
#include "stages.h"

namespace {

// The marks of samples/coffee.json and samples/astronaut.json.
const cv::Rect kCupBox(cv::Point(70, 14), cv::Point(487, 391));
const cv::Rect kSpoon(375, 50, 64, 64);
const cv::Rect kPersonBox(cv::Point(20, 10), cv::Point(363, 512));
const std::vector<cv::Point> kCollar{{140, 180}, {175, 195}, {235, 205}, {285, 215},
                                     {265, 248}, {215, 262}, {185, 240}};
constexpr int kCollarRadius = 8;

// Points along the cup's rim and along the person, and what of the photographs is shown.
const std::vector<cv::Point> kRim{{185, 85},  {260, 28},  {385, 80}, {395, 160},
                                  {290, 198}, {190, 140}, {185, 85}};
const std::vector<cv::Point> kSilhouette{{57, 262}, {112, 192}, {160, 118}, {225, 13},
                                         {300, 95}, {258, 178}, {305, 238}, {358, 300}};
const cv::Rect kRimView(130, 0, 310, 320);
const cv::Rect kSilhouetteView(30, 0, 350, 320);

cv::Mat read(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file), {}};
    return engineColours(readPicture(bytes, path), Colours::kAsStored);
}

Step boxStep(const cv::Rect& box) {
    Step step;
    step.points = {box.tl(), box.br() - cv::Point(1, 1)};
    return step;
}

Step collarStep() {
    Step step;
    step.operation = Operation::kBrushAdd;
    step.points = kCollar;
    step.radius = kCollarRadius;
    return step;
}

// The masks after each step as a host gets them.
std::vector<cv::Mat> masksOf(const cv::Mat& image, const std::vector<Step>& steps) {
    const Photo photo = photoOf(image, "the photograph");
    SessionHost host;
    Stats stats;
    Session session(photo, host, stats);
    std::vector<cv::Mat> masks;
    for (const Step& step : steps) {
        session.apply(step);
        masks.push_back(session.result().clone());
    }
    return masks;
}

cv::Mat withBox(const cv::Mat& photo, const cv::Rect& box) {
    cv::Mat picture = photo.clone();
    cv::rectangle(picture, box, cv::Scalar(0, 255, 255), 2);
    return picture;
}

void write(const std::string& images, const std::string& name,
           const std::vector<cv::Mat>& pictures) {
    constexpr double kScale = 0.6;  // a strip fits a page
    cv::Mat strip;
    cv::resize(sideBySide(pictures), strip, cv::Size(), kScale, kScale, cv::INTER_AREA);
    writePicture(images, name, strip);
}

void paintCup(const cv::Mat& photo, const std::string& images) {
    const cv::Mat mask = paintStages(photo, kCupBox, kSpoon, images);
    // Pictures of something else than what a host gets are refused.
    if (cv::countNonZero(masksOf(photo, {boxStep(kCupBox)}).front() != mask) != 0) {
        throw std::runtime_error("the stages do not add up to the mask of the host calls");
    }
    write(images, "result",
          {withBox(photo, kCupBox), paintOutline(photo, mask), paintCutOut(photo, mask)});
}

void paintPerson(const cv::Mat& photo, const std::string& images) {
    const std::vector<cv::Mat> masks = masksOf(photo, {boxStep(kPersonBox), collarStep()});
    const cv::Mat boxCutOut = paintCutOut(photo, masks[0]);
    cv::Mat stroke = boxCutOut.clone();
    cv::polylines(stroke, kCollar, false, cv::Scalar(60, 190, 60), 2 * kCollarRadius, cv::LINE_AA);
    write(images, "brush", {withBox(photo, kPersonBox), stroke, paintCutOut(photo, masks[1])});
}

// A box that finds the saucer without the cup, and a stroke over the cup's rim, asked both ways.
void paintCorrections(const cv::Mat& photo, const std::string& images) {
    Step box = boxStep(kCupBox);
    box.correction = Correction::kWholeObject;
    box.start = "lying";
    box.passes = 1;
    Step rim;
    rim.operation = Operation::kBrushAdd;
    rim.points = {{200, 60}, {265, 35}, {330, 45}};
    rim.radius = kCollarRadius;
    const auto corrected = [&](Correction correction) {
        rim.correction = correction;
        return paintCutOut(photo, masksOf(photo, {box, rim}).back());
    };
    cv::Mat found = paintCutOut(photo, masksOf(photo, {box}).back());
    cv::polylines(found, rim.points, false, cv::Scalar(60, 190, 60), 2 * kCollarRadius,
                  cv::LINE_AA);
    write(images, "corrections",
          {withBox(photo, kCupBox), found, corrected(Correction::kWholeObject),
           corrected(Correction::kTouchUp)});
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: make-doc-images SAMPLES IMAGES\n");
        return 2;
    }
    try {
        const std::string samples = argv[1];
        const std::string images = argv[2];
        const cv::Mat cup = read(samples + "/coffee.png");
        const cv::Mat person = read(samples + "/astronaut.png");
        paintCup(cup, images);
        paintPerson(person, images);
        paintCorrections(cup, images);
        paintCutOuts(samples, images);
        writePicture(images, "snapping",
                     sideBySide({paintSnapping(cup, kRim)(kRimView),
                                 paintSnapping(person, kSilhouette)(kSilhouetteView)}));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "make-doc-images: %s\n", error.what());
        return 1;
    }
    return 0;
}
