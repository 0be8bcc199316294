#include "session.h"

#include <engine/hybrid.h>
#include <history/marker.h>
#include <interface/engine_state.h>
#include <interface/segmentation_core.h>

#include <algorithm>
#include <opencv2/imgproc.hpp>

namespace {

constexpr std::uint8_t kNotObject = 255;

std::vector<std::uint32_t> pixelWords(const cv::Mat& image) {
    std::vector<std::uint32_t> words;
    words.reserve(image.total());
    for (int y = 0; y < image.rows; ++y) {
        const auto* row = image.ptr<cv::Vec3b>(y);
        for (int x = 0; x < image.cols; ++x) {
            words.push_back(0xFF000000U | static_cast<std::uint32_t>(row[x][2]) << 16U |
                            static_cast<std::uint32_t>(row[x][1]) << 8U | row[x][0]);
        }
    }
    return words;
}

}  // namespace

Session::Session(const cv::Mat& image)
    : m_width(image.cols),
      m_height(image.rows),
      m_pixels(pixelWords(image)),
      m_blended(m_pixels),
      m_mask(m_pixels.size(), kNotObject) {
    setSourceImage(m_width, m_height, m_pixels.data());
    initSegmentationEngine(0);
}

Session::~Session() {
    deinitSegmentation();
}

void Session::box(const cv::Rect& box) {
    doSegmentationBB(m_width, m_height, m_pixels.data(), box.x, box.y, box.x + box.width - 1,
                     box.y + box.height - 1, m_mask.data());
}

void Session::lasso(const std::vector<cv::Point>& loop) {
    cv::Mat inside = cv::Mat::zeros(m_height, m_width, CV_8UC1);
    cv::fillPoly(inside, std::vector<std::vector<cv::Point>>{loop}, cv::Scalar(255));
    request(inside, SEGCORE_MARK_CANDIDATE, loop, SEGCORE_LOOP_ADD);
}

void Session::brush(const BrushStroke& stroke, bool adds) {
    request(stroke.painted, adds ? SEGCORE_MARK_OBJECT : SEGCORE_MARK_BACKGROUND, stroke.points,
            adds ? SEGCORE_BRUSH_ADD : SEGCORE_BRUSH_REMOVE);
}

void Session::request(const cv::Mat& marked, int code, std::vector<cv::Point> points,
                      int strokeType) {
    std::vector<int> coordinates;
    for (const cv::Point& point : points) {
        coordinates.push_back(point.x);
        coordinates.push_back(point.y);
    }
    setCurrentMarkerVector(static_cast<int>(coordinates.size()), coordinates.data());
    cv::Mat markers = cv::Mat::zeros(m_height, m_width, CV_32SC1);
    markers.setTo(code, marked);
    setMarkerImage(m_width, m_height, markers.ptr<int>(), strokeType);
    std::copy(m_pixels.begin(), m_pixels.end(), m_blended.begin());
    processSegment(0, 0, 0, m_blended.data(), m_mask.data());
}

cv::Mat Session::mask() const {
    cv::Mat mask(m_height, m_width, CV_8UC1);
    std::transform(m_mask.begin(), m_mask.end(), mask.ptr<std::uint8_t>(),
                   [](std::uint8_t byte) { return static_cast<std::uint8_t>(255 - byte); });
    return mask;
}

cv::Rect Session::region() const {
    const auto factor = static_cast<double>(g_imageResizeFactor);
    const auto inPhoto = [factor](int working) { return static_cast<int>(working * factor); };
    const cv::Point first(inPhoto(VORNSEMarker::m_xMinBBox), inPhoto(VORNSEMarker::m_yMinBBox));
    const cv::Point end(inPhoto(VORNSEMarker::m_xMinBBox + pHybrid->m_cropWidth),
                        inPhoto(VORNSEMarker::m_yMinBBox + pHybrid->m_cropHeight));
    return cv::Rect(first, end) & cv::Rect(0, 0, m_width, m_height);
}
