#include "session/trusted_changes.h"

#include <algorithm>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace {

constexpr int kTrust = 2;  // times what changes with the stroke
constexpr int kThroughSides = 4;

}  // namespace

void keepTrustedChanges(const cv::Mat& before, const Drawing& stroke, cv::Mat& found) {
    if (cv::countNonZero(found) == 0) {
        before.copyTo(found);
        found(stroke.where).setTo(0, stroke.inside);
        return;
    }
    cv::Mat changed;
    cv::bitwise_xor(before, found, changed);
    const cv::Rect around = cv::boundingRect(changed);
    if (around.empty()) {
        return;
    }
    cv::Mat pieces;
    cv::Mat figures;
    cv::Mat middles;
    const int count =
        cv::connectedComponentsWithStats(changed(around), pieces, figures, middles, kThroughSides);
    std::vector<std::uint8_t> isTrusted(static_cast<std::size_t>(count), 0);
    const cv::Rect common = stroke.where & around;
    for (int y = common.y; y < common.br().y; ++y) {
        const auto* piece = pieces.ptr<int>(y - around.y) + (common.x - around.x);
        const auto* marked =
            stroke.inside.ptr<std::uint8_t>(y - stroke.where.y) + (common.x - stroke.where.x);
        for (int x = 0; x < common.width; ++x) {
            if (marked[x] != 0) {
                isTrusted[static_cast<std::size_t>(piece[x])] = 1;
            }
        }
    }
    isTrusted[0] = 0;  // what did not change
    const auto areaOf = [&figures](int piece) { return figures.at<int>(piece, cv::CC_STAT_AREA); };
    int corrected = 0;
    for (int piece = 1; piece < count; ++piece) {
        corrected += isTrusted[static_cast<std::size_t>(piece)] != 0 ? areaOf(piece) : 0;
    }
    const std::int64_t most =
        std::int64_t{kTrust} * std::max(corrected, cv::countNonZero(stroke.inside));
    for (int piece = 1; piece < count; ++piece) {
        if (isTrusted[static_cast<std::size_t>(piece)] == 0 && areaOf(piece) > most) {
            const cv::Rect place(figures.at<int>(piece, cv::CC_STAT_LEFT),
                                 figures.at<int>(piece, cv::CC_STAT_TOP),
                                 figures.at<int>(piece, cv::CC_STAT_WIDTH),
                                 figures.at<int>(piece, cv::CC_STAT_HEIGHT));
            before(around)(place).copyTo(found(around)(place), pieces(place) == piece);
        }
    }
}
