#include "session/painted_marks.h"

#include <opencv2/imgproc.hpp>
#include <vector>

#include "interface/segmentation_core.h"
#include "session/errors.h"

namespace {

// Apart enough that the soft edge of a painting program's brush is either mark or ground.
constexpr int kStrong = 192;
constexpr int kWeak = 63;
constexpr int kOpaque = 128;

// Of 73 photographs none comes near both limits: the nearest has three times as many stray pixels as
// marks, and those with marks on 0.2 % of the picture have stray pixels on 16 % and more. Scribbles of two
// pixels and wider, soft or saved as JPEG, seldom reach 0.4 of their marks and never 1 % of the picture.
constexpr int kTint = 32;
constexpr double kMostStrayToMarks = 0.5;
constexpr double kMostStray = 0.03;

cv::Mat pixelsBetween(const cv::Mat& image, const cv::Scalar& lowest, const cv::Scalar& highest) {
    cv::Mat found;
    cv::inRange(image, lowest, highest, found);
    return found;
}

bool isColourless(const cv::Mat& image) {
    std::vector<cv::Mat> channels;
    cv::split(image, channels);
    return cv::countNonZero(channels[0] != channels[1]) == 0 &&
           cv::countNonZero(channels[1] != channels[2]) == 0;
}

cv::Mat codesOfColours(const cv::Mat& image) {
    cv::Mat codes = cv::Mat::zeros(image.size(), CV_8UC1);
    codes.setTo(SEGCORE_MARK_OBJECT,
                pixelsBetween(image, {0, kStrong, 0, kOpaque}, {kWeak, 255, kWeak, 255}));
    codes.setTo(SEGCORE_MARK_BACKGROUND,
                pixelsBetween(image, {0, 0, kStrong, kOpaque}, {kWeak, kWeak, 255, 255}));
    codes.setTo(SEGCORE_MARK_CANDIDATE,
                pixelsBetween(image, {kStrong, 0, 0, kOpaque}, {255, kWeak, kWeak, 255}));
    return codes;
}

// Opaque pixels of a colour that is neither a mark nor ground nor one fading into the other: in all of
// these the two weaker channels are alike.
int countStray(const cv::Mat& image, const cv::Mat& codes) {
    std::vector<cv::Mat> channels;
    cv::split(image, channels);
    const cv::Mat lower = cv::min(channels[0], channels[1]);
    const cv::Mat upper = cv::max(channels[0], channels[1]);
    const cv::Mat lowest = cv::min(lower, channels[2]);
    const cv::Mat middle = cv::max(lower, cv::min(upper, channels[2]));
    return cv::countNonZero((middle - lowest > kTint) & (channels[3] >= kOpaque) &
                            (codes == SEGCORE_MARK_NONE));
}

void requirePainted(const cv::Mat& image, const cv::Mat& codes, const std::string& name) {
    const double stray = countStray(image, codes);
    if (stray > kMostStrayToMarks * cv::countNonZero(codes) ||
        stray > kMostStray * static_cast<double>(codes.total())) {
        throw UserError(
            name +
            " is no picture of marks, since it has too many other colours; paint object "
            "green, background red and candidates blue on a transparent, black, white "
            "or grey ground");
    }
}

void requireCodes(const cv::Mat& codes, const std::string& name) {
    const cv::Mat known = (codes == SEGCORE_MARK_NONE) | (codes == SEGCORE_MARK_BACKGROUND) |
                          (codes == SEGCORE_MARK_OBJECT) | (codes == SEGCORE_MARK_CANDIDATE);
    if (cv::countNonZero(known) != static_cast<int>(codes.total())) {
        throw UserError(name +
                        " has no colour and other values than 0, 1, 2 and 4; paint object "
                        "green, background red and candidates blue");
    }
}

std::vector<cv::Point> hullOf(const cv::Mat& marked) {
    std::vector<cv::Point> pixels;
    cv::findNonZero(marked, pixels);
    std::vector<cv::Point> hull;
    cv::convexHull(pixels, hull);
    return hull;
}

// The first pixel of every connected piece, in the order of a scan by rows.
std::vector<cv::Point> onePointInEachPiece(const cv::Mat& marked) {
    cv::Mat pieces;
    const int count = cv::connectedComponents(marked, pieces);
    std::vector<bool> seen(static_cast<std::size_t>(count), false);
    seen[0] = true;
    std::vector<cv::Point> points;
    for (int y = 0; y < pieces.rows; ++y) {
        const int* row = pieces.ptr<int>(y);
        for (int x = 0; x < pieces.cols; ++x) {
            const auto piece = static_cast<std::size_t>(row[x]);
            if (!seen[piece]) {
                seen[piece] = true;
                points.emplace_back(x, y);
            }
        }
    }
    return points;
}

Request brushRequest(const cv::Mat& codes, int code, std::vector<cv::Point> stroke) {
    const int strokeType = code == SEGCORE_MARK_OBJECT ? SEGCORE_BRUSH_ADD : SEGCORE_BRUSH_REMOVE;
    cv::Mat own = cv::Mat::zeros(codes.size(), CV_8UC1);
    own.setTo(code, codes == code);
    return {std::move(stroke), own, strokeType};
}

Request loopRequest(const cv::Mat& codes) {
    return {hullOf(codes == SEGCORE_MARK_CANDIDATE), codes, SEGCORE_LOOP_ADD};
}

}  // namespace

cv::Mat paintedMarks(cv::Mat picture, const std::string& name, cv::Size photo) {
    if (picture.size() != photo) {
        throw UserError(name + " is " + std::to_string(picture.cols) + " x " +
                        std::to_string(picture.rows) +
                        " pixels; paint the marks at the size of the " + "photograph, " +
                        std::to_string(photo.width) + " x " + std::to_string(photo.height));
    }
    if (picture.depth() != CV_8U) {
        throw UserError(name + " does not have 8 bits a channel; save it as an 8-bit image");
    }
    cv::Mat codes;
    if (picture.channels() < 3 || (picture.channels() == 3 && isColourless(picture))) {
        cv::extractChannel(picture, codes, 0);
        requireCodes(codes, name);
    } else {
        if (picture.channels() == 3) {
            cv::cvtColor(picture, picture, cv::COLOR_BGR2BGRA);
        }
        codes = codesOfColours(picture);
        requirePainted(picture, codes, name);
    }
    if (cv::countNonZero(codes) == 0) {
        throw UserError(name +
                        " holds no mark; paint object green (0,255,0), background red "
                        "(255,0,0) or candidates blue (0,0,255)");
    }
    return codes;
}

Request firstPaintedRequest(const cv::Mat& painted) {
    cv::Mat codes = painted.clone();
    const bool hasBackground = cv::countNonZero(codes == SEGCORE_MARK_BACKGROUND) > 0;
    const bool hasCandidates = cv::countNonZero(codes == SEGCORE_MARK_CANDIDATE) > 0;
    if (!hasBackground && !hasCandidates) {
        return brushRequest(codes, SEGCORE_MARK_OBJECT,
                            onePointInEachPiece(codes == SEGCORE_MARK_OBJECT));
    }
    if (!hasCandidates) {
        codes.setTo(SEGCORE_MARK_CANDIDATE, codes == SEGCORE_MARK_NONE);
    }
    return loopRequest(codes);
}

std::optional<Request> paintedRequest(const cv::Mat& codes, int code, const cv::Mat& result) {
    if (code == SEGCORE_MARK_CANDIDATE) {
        if (cv::countNonZero(codes == code) == 0) {
            return std::nullopt;
        }
        return loopRequest(codes);
    }
    const int wrong = code == SEGCORE_MARK_OBJECT ? 0 : 255;
    const cv::Mat disagreeing = (codes == code) & (result == wrong);
    if (cv::countNonZero(disagreeing) == 0) {
        return std::nullopt;
    }
    return brushRequest(codes, code, onePointInEachPiece(disagreeing));
}
