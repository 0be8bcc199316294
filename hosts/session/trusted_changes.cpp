#include "session/trusted_changes.h"

#include <algorithm>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace {

constexpr int kTrust = 2;  // times what changes with the stroke
constexpr int kThroughSides = 4;

}  // namespace

cv::Mat trustedChanges(const cv::Mat& before, const cv::Mat& found, const cv::Mat& stroke) {
    if (cv::countNonZero(found) == 0) {
        return before & (stroke == 0);
    }
    cv::Mat changed;
    cv::bitwise_xor(before, found, changed);
    const cv::Rect around = cv::boundingRect(changed);
    if (around.empty()) {
        return found;
    }
    cv::Mat pieces;
    cv::Mat figures;
    cv::Mat middles;
    const int count = cv::connectedComponentsWithStats(changed(around), pieces, figures, middles,
                                                       kThroughSides);
    std::vector<std::uint8_t> isTrusted(static_cast<std::size_t>(count), 0);
    for (int y = 0; y < pieces.rows; ++y) {
        const auto* piece = pieces.ptr<int>(y);
        const auto* marked = stroke.ptr<std::uint8_t>(around.y + y) + around.x;
        for (int x = 0; x < pieces.cols; ++x) {
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
    const std::int64_t most = std::int64_t{kTrust} * std::max(corrected, cv::countNonZero(stroke));
    for (int piece = 1; piece < count; ++piece) {
        auto& trusted = isTrusted[static_cast<std::size_t>(piece)];
        trusted = trusted != 0 || areaOf(piece) <= most ? 1 : 0;
    }
    cv::Mat result = found.clone();
    for (int y = 0; y < pieces.rows; ++y) {
        const auto* piece = pieces.ptr<int>(y);
        const auto* old = before.ptr<std::uint8_t>(around.y + y) + around.x;
        auto* out = result.ptr<std::uint8_t>(around.y + y) + around.x;
        for (int x = 0; x < pieces.cols; ++x) {
            out[x] = isTrusted[static_cast<std::size_t>(piece[x])] != 0 ? out[x] : old[x];
        }
    }
    return result;
}
