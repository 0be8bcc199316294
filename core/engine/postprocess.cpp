// What the user sees of a new mask: loops lose small islands and holes, strokes keep only the
// changed regions that they touch, and the result is merged with the previous one so that a mark
// changes it only where and in the direction that the mark asks for. All masks are of photo size
// with bytes 0 and 255.
#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "engine/components.h"
#include "engine/hybrid.h"
#include "history/marker.h"
#include "support/image.h"
#include "support/log.h"

namespace {

constexpr double kIslandShare = 0.1;  // islands below this share of the largest one vanish
constexpr int kHolePixels = 5;        // holes below this size are filled
constexpr std::uint8_t kObjectByte = 255;
constexpr std::uint8_t kChanged = 127;
constexpr int kFourConnected = 4;

// Components are numbered from 2 in bytes, and only those whose number fits are looked at. The last
// number, 255, is also the byte of the object: what is collected for its component are all pixels of
// that byte in its bounding rectangle.
constexpr int kLastComponent = 253;  // index of the component numbered 255

std::uint8_t* pixelsOf(cv::Mat& mask, const PixelRun& run) {
    return mask.ptr<std::uint8_t>(run.y) + run.x0;
}

void fillRun(cv::Mat& mask, const PixelRun& run, std::uint8_t value) {
    std::fill_n(pixelsOf(mask, run), run.x1 - run.x0, value);
}

// The part of a run inside a component's bounding rectangle; empty runs have x1 <= x0.
PixelRun clipped(const PixelRun& run, const Component& box) {
    const bool inRows = run.y >= box.yMin && run.y <= box.yMax;
    return {run.y, std::max(run.x0, box.xMin), inRows ? std::min(run.x1, box.xMax + 1) : 0,
            run.component};
}

void removeIslands(cv::Mat& mask) {
    Components found = findComponents(mask, kObjectByte);
    std::vector<Component>& components = found.components;
    if (components.empty()) {
        return;
    }
    const bool overflow = components.size() > static_cast<std::size_t>(kLastComponent);
    if (overflow) {
        // Later components are not numbered; they count where they lie in the last one's rectangle.
        components.resize(kLastComponent + 1);
        Component& last = components.back();
        last.pixels = 0;
        for (const PixelRun& run : found.runs) {
            if (run.component >= kLastComponent) {
                const PixelRun part = clipped(run, last);
                last.pixels += std::max(part.x1 - part.x0, 0);
            }
        }
    }
    std::int64_t largest = 0;
    for (const Component& component : components) {
        largest = std::max(largest, component.pixels);
    }
    const auto threshold = static_cast<int>(static_cast<double>(largest) * kIslandShare);
    for (const PixelRun& run : found.runs) {
        const bool beyond = run.component >= kLastComponent;
        const Component& component =
            components[static_cast<std::size_t>(std::min(run.component, kLastComponent))];
        if (component.pixels < threshold) {
            const PixelRun part = beyond ? clipped(run, component) : run;
            if (part.x1 > part.x0) {
                fillRun(mask, part, 0);
            }
        }
    }
}

int objectPixelsIn(const cv::Mat& mask, const Component& box) {
    return cv::countNonZero(
        mask(cv::Rect(box.xMin, box.yMin, box.xMax - box.xMin + 1, box.yMax - box.yMin + 1)));
}

void fillHoles(cv::Mat& mask) {
    Components found = findComponents(mask, 0);
    if (found.components.size() > static_cast<std::size_t>(kLastComponent)) {
        found.components.resize(kLastComponent + 1);
        Component& last = found.components.back();
        last.pixels += objectPixelsIn(mask, last);
    }
    for (const PixelRun& run : found.runs) {
        if (run.component <= kLastComponent &&
            found.components[static_cast<std::size_t>(run.component)].pixels < kHolePixels) {
            fillRun(mask, run, kObjectByte);
        }
    }
}

std::uint8_t targetValue(int strokeType) {
    return stroke::adds(strokeType) ? 255 : 0;
}

}  // namespace

void VORNSEHybrid::postProcess(IplImage* mask) {
    const int strokeType = VORNSEMarker::currentStroke.m_strokeType;
    if (strokeType == stroke::kLoopAdd) {
        postProcessForLoop(mask);
    } else if (stroke::isBrush(strokeType)) {
        postProcessForStroke(mask);
    }
    if (VORNSEMarker::m_prevResult == nullptr) {
        return;
    }
    const auto scaled = [](int working) {
        return static_cast<int>(g_imageResizeFactor * static_cast<float>(working));
    };
    const int top = scaled(VORNSEMarker::m_yMinBBox);
    const int left = scaled(VORNSEMarker::m_xMinBBox);
    const int bottom = std::min(top + scaled(m_cropHeight), mask->height);
    const int right = std::min(left + scaled(m_cropWidth), mask->width);
    const std::uint8_t target = targetValue(strokeType);
    const bool merges = (stroke::adds(strokeType) || stroke::removes(strokeType)) && left < right;
    for (int y = 0; y < mask->height; ++y) {
        std::uint8_t* row = rowOf(mask, y);
        const std::uint8_t* before = rowOf(VORNSEMarker::m_prevResult, y);
        if (!merges || y < top || y >= bottom) {
            std::copy_n(before, mask->width, row);
            continue;
        }
        std::copy_n(before, left, row);
        for (int x = left; x < right; ++x) {
            row[x] = row[x] == target ? target : before[x];
        }
        std::copy(before + right, before + mask->width, row + right);
    }
}

void VORNSEHybrid::postProcessForLoop(IplImage* mask) {
    cv::Mat image = cv::cvarrToMat(mask);
    removeIslands(image);
    fillHoles(image);
}

void VORNSEHybrid::postProcessForStroke(IplImage* mask) {
    const IplImage* previous = VORNSEMarker::m_prevResult;
    if (previous == nullptr) {
        return;
    }
    checkImageSize(mask->width, mask->height, "postProcessForStroke", 1694);
    const strokeInfo& current = VORNSEMarker::currentStroke;
    const std::uint8_t target = targetValue(current.m_strokeType);
    const std::uint8_t changedFrom = current.m_strokeType == stroke::kBrushRemove ? 255 : 0;
    const ImagePtr changedImage = createImage(mask->width, mask->height, 1);
    cv::Mat changed = cv::cvarrToMat(changedImage.get());
    // The stores below could alias the images' headers: a width of its own lets loops be vectorised.
    const int width = mask->width;
    for (int y = 0; y < mask->height; ++y) {
        const std::uint8_t* row = rowOf(mask, y);
        const std::uint8_t* before = rowOf(previous, y);
        auto* out = changed.ptr<std::uint8_t>(y);
        for (int x = 0; x < width; ++x) {
            const bool asked = row[x] == target;
            const bool open = before[x] == changedFrom;
            out[x] = asked && open ? kChanged : 0;
        }
    }
    const cv::Rect inside(0, 0, mask->width, mask->height);
    for (std::size_t i = 0; i + 1 < current.m_points.size(); i += 2) {
        const cv::Point point(current.m_points[i], current.m_points[i + 1]);
        if (inside.contains(point) && changed.at<std::uint8_t>(point) == kChanged) {
            cv::floodFill(changed, point, cv::Scalar(255), nullptr, cv::Scalar(), cv::Scalar(),
                          kFourConnected);
        }
    }
    for (int y = 0; y < mask->height; ++y) {
        const std::uint8_t* before = rowOf(previous, y);
        const auto* row = changed.ptr<std::uint8_t>(y);
        std::uint8_t* out = rowOf(mask, y);
        for (int x = 0; x < width; ++x) {
            out[x] = row[x] == 255 ? target : before[x];
        }
    }
}
