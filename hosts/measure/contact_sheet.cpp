#include "contact_sheet.h"

#include <algorithm>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

namespace {

constexpr int kTile = 240;          // pixels, longer side of a photograph on the sheet
constexpr int kCaptionHeight = 16;  // pixels
constexpr double kOutsideBrightness = 0.35;

const cv::Scalar kOutline(0, 255, 255);
const cv::Scalar kObjectScribble(0, 255, 0);
const cv::Scalar kBackgroundScribble(0, 0, 255);

void paintScribbles(cv::Mat& tile, const cv::Mat& scribbles) {
    cv::Mat small;
    cv::resize(scribbles, small, tile.size(), 0, 0, cv::INTER_NEAREST);
    tile.setTo(kBackgroundScribble, small == 1);
    tile.setTo(kObjectScribble, small == 2);
}

}  // namespace

void ContactSheet::startRow() {
    m_rows.emplace_back();
}

void ContactSheet::add(const cv::Mat& image, const cv::Mat& mask, const cv::Mat& scribbles,
                       const std::string& caption) {
    const double scale = static_cast<double>(kTile) / std::max(image.cols, image.rows);
    cv::Mat tile;
    cv::resize(image, tile, cv::Size(), scale, scale, cv::INTER_AREA);
    cv::Mat smallMask;
    cv::resize(mask, smallMask, tile.size(), 0, 0, cv::INTER_NEAREST);
    cv::Mat dark = tile * kOutsideBrightness;
    tile.copyTo(dark, smallMask);
    std::vector<std::vector<cv::Point>> outline;
    cv::findContours(smallMask, outline, cv::RETR_LIST, cv::CHAIN_APPROX_NONE);
    cv::drawContours(dark, outline, -1, kOutline);
    if (!scribbles.empty()) {
        paintScribbles(dark, scribbles);
    }
    cv::Mat captioned(kTile + kCaptionHeight, kTile, CV_8UC3, cv::Scalar::all(255));
    dark.copyTo(captioned(cv::Rect(0, kCaptionHeight, dark.cols, dark.rows)));
    cv::putText(captioned, caption, cv::Point(2, kCaptionHeight - 4), cv::FONT_HERSHEY_SIMPLEX, 0.4,
                cv::Scalar::all(0));
    m_rows.back().push_back(captioned);
}

void ContactSheet::write(const std::string& file) const {
    std::size_t columns = 0;
    for (const std::vector<cv::Mat>& row : m_rows) {
        columns = std::max(columns, row.size());
    }
    if (columns == 0) {
        throw std::runtime_error("no result to put on the contact sheet");
    }
    const cv::Size tile(kTile, kTile + kCaptionHeight);
    cv::Mat sheet(tile.height * static_cast<int>(m_rows.size()),
                  tile.width * static_cast<int>(columns), CV_8UC3, cv::Scalar::all(255));
    for (std::size_t y = 0; y < m_rows.size(); ++y) {
        for (std::size_t x = 0; x < m_rows[y].size(); ++x) {
            const cv::Point corner(static_cast<int>(x) * tile.width,
                                   static_cast<int>(y) * tile.height);
            m_rows[y][x].copyTo(sheet(cv::Rect(corner, tile)));
        }
    }
    if (!cv::imwrite(file, sheet)) {
        throw std::runtime_error(file + ": cannot be written");
    }
}
