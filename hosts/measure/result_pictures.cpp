#include "result_pictures.h"

#include <filesystem>
#include <sstream>

#include "picture_on_disk.h"
#include "session/strokes.h"

namespace {

// The codes of scribbles.
constexpr int kBackground = 1;
constexpr int kObject = 2;

std::string captionOf(const ResultPictures::Result& result) {
    std::ostringstream caption;
    caption.precision(3);
    caption << result.photo << ' ' << result.way;
    if (result.score) {
        caption << ' ' << 100.0 * result.score->errorRate << '%';
    }
    return caption.str();
}

}  // namespace

void ResultPictures::add(const Result& result) {
    if (!m_options.contactSheet.empty()) {
        if (m_photo != result.photo) {
            m_photo = result.photo;
            m_sheet.startRow();
        }
        m_sheet.add(result.image, result.mask, result.scribbles, captionOf(result));
    }
    if (!m_options.maskFolder.empty()) {
        const std::string file = result.photo + "." + result.way + ".png";
        writePicture((std::filesystem::path(m_options.maskFolder) / file).string(), result.mask,
                     PictureContent::kMask);
    }
}

void ResultPictures::add(const RobotView& view) {
    if (view.result.strokes == 0) {
        m_strokes = cv::Mat::zeros(view.image.size(), CV_8UC1);
    }
    if (view.mark && isBrush(view.mark->operation)) {
        drawBrush(m_strokes, view.mark->points, *view.mark->radius,
                  removes(view.mark->operation) ? kBackground : kObject);
    }
    add({view.result.photo, view.result.method + "+" + std::to_string(view.result.strokes),
         view.result.score, view.image, view.mask, m_strokes});
}

void ResultPictures::finish() const {
    if (!m_options.contactSheet.empty()) {
        m_sheet.write(m_options.contactSheet);
    }
}
