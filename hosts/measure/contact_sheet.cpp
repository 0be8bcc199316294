#include "contact_sheet.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <stdexcept>

#include "picture_on_disk.h"

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
    std::size_t tiles = 0;  // of the longest row
    for (const std::vector<cv::Mat>& row : m_rows) {
        tiles = std::max(tiles, row.size());
    }
    if (tiles == 0) {
        throw std::runtime_error("no result to put on the contact sheet");
    }
    // Rows stand side by side in as many columns as make the sheet about square.
    const double rowsPerTile = static_cast<double>(m_rows.size()) / static_cast<double>(tiles);
    const auto columns = static_cast<std::size_t>(std::lround(std::ceil(std::sqrt(rowsPerTile))));
    const std::size_t lines = (m_rows.size() + columns - 1) / columns;
    const cv::Size tile(kTile, kTile + kCaptionHeight);
    cv::Mat sheet(tile.height * static_cast<int>(lines),
                  tile.width * static_cast<int>(columns * tiles), CV_8UC3, cv::Scalar::all(255));
    for (std::size_t row = 0; row < m_rows.size(); ++row) {
        for (std::size_t i = 0; i < m_rows[row].size(); ++i) {
            const cv::Point corner(static_cast<int>(row / lines * tiles + i) * tile.width,
                                   static_cast<int>(row % lines) * tile.height);
            m_rows[row][i].copyTo(sheet(cv::Rect(corner, tile)));
        }
    }
    writePicture(file, sheet, PictureContent::kPicture);
}
