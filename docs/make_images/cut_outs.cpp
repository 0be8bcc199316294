#include "cut_outs.h"

#include <fstream>
#include <iterator>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <vector>

#include "matting/matting.h"
#include "painting.h"
#include "pictures/compose.h"
#include "pictures/engine_colours.h"
#include "pictures/read_picture.h"
#include "session/session.h"
#include "session/session_file.h"

namespace {

const cv::Vec3b kGround(91, 125, 46);
const cv::Rect kEar(290, 20, 113, 75);
constexpr int kEnlarged = 4;
constexpr double kLevels = 257.0;  // of 16 bits in one of 8

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    return {std::istreambuf_iterator<char>(file), {}};
}

cv::Mat maskOf(const SessionFile& file, const cv::Mat& seen) {
    const Photo photo = photoOf(seen, file.photo);
    SessionHost host;
    Stats stats;
    Session session(photo, host, stats);
    for (const Step& step : file.steps) {
        session.apply(step);
    }
    return tidied(session.result(), hygieneOf(file.output));
}

cv::Mat onNewGround(const Picture& photograph, const cv::Mat& alpha) {
    Picture cut = photograph;
    cut.pixels = foregroundColours(photograph.pixels, alpha, Unseen::kNearest);
    cut.alpha = alpha;
    return over(cut, plainPicture(alpha.size(), kGround)).pixels;
}

// A picture over its enlarged detail, which a line marks.
cv::Mat withDetail(const cv::Mat& picture) {
    cv::Mat detail = enlarged(picture(kEar), kEnlarged);
    cv::Mat marked = picture.clone();
    cv::rectangle(marked, kEar, cv::Scalar::all(255), 1);
    cv::resize(detail, detail, {marked.cols, detail.rows * marked.cols / detail.cols}, 0, 0,
               cv::INTER_AREA);
    cv::Mat both;
    cv::vconcat(marked, detail, both);
    return both;
}

}  // namespace

void paintCutOuts(const std::string& samples, const std::string& images) {
    const std::string name = samples + "/cat.json";
    const SessionFile file = parseSessionFile(
        contentOf(name), name, [&](const std::string& photo) { return samples + "/" + photo; });
    const std::string bytes = contentOf(file.photo);
    const Picture photograph = readPicture({bytes.begin(), bytes.end()}, file.photo);
    const cv::Mat seen = engineColours(photograph, Colours::kSrgb);
    const cv::Mat mask = maskOf(file, seen);
    cv::Mat hard;
    mask.convertTo(hard, CV_16U, kLevels);
    writePicture(images, "cutouts",
                 sideBySide({withDetail(onNewGround(photograph, hard)),
                             withDetail(onNewGround(photograph, softAlpha(seen, mask, 0.0)))}));
}
