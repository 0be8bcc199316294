// What the user sees of a new mask: loops lose small islands and holes, strokes keep only the
// changed regions that they touch, and the result is merged with the previous one so that a mark
// changes it only where and in the direction that the mark asks for. All masks are of photo size
// with bytes 0 and 255.
#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "engine/hybrid.h"
#include "history/marker.h"
#include "support/image.h"
#include "support/log.h"

namespace {

constexpr double kIslandShare = 0.1;    // islands below this share of the largest one vanish
constexpr std::size_t kHolePixels = 5;  // holes below this size are filled
constexpr int kFirstComponent = 2;
constexpr int kLastComponent = 255;  // numbers live in bytes: fills beyond it match nothing
constexpr std::uint8_t kChanged = 127;
constexpr int kFourConnected = 4;

// Flood-fills every 4-connected component of `value` pixels, in scan order, with the next number
// and hands visit(list) the pixels of the fill's bounding rectangle that hold the number, `most` at
// the most. Stops after the last number that fits a byte: from there on no fill collects anything.
template <typename Visit>
void forEachComponent(cv::Mat image, std::uint8_t value, std::size_t most, Visit visit) {
    int number = kFirstComponent;
    for (int y = 0; y < image.rows; ++y) {
        for (int x = 0; x < image.cols; ++x) {
            if (image.at<std::uint8_t>(y, x) != value) {
                continue;
            }
            cv::Rect box;
            cv::floodFill(image, cv::Point(x, y), cv::Scalar(number), &box, cv::Scalar(),
                          cv::Scalar(), kFourConnected);
            std::vector<cv::Point> pixels;
            for (int row = box.y; row < box.y + box.height && pixels.size() < most; ++row) {
                const auto* line = image.ptr<std::uint8_t>(row);
                for (int column = box.x; column < box.x + box.width && pixels.size() < most;
                     ++column) {
                    if (line[column] == number) {
                        pixels.emplace_back(column, row);
                    }
                }
            }
            visit(std::move(pixels));
            if (number == kLastComponent) {
                return;
            }
            ++number;
        }
    }
}

void setPixels(cv::Mat mask, const std::vector<cv::Point>& pixels, std::uint8_t value) {
    for (const cv::Point& pixel : pixels) {
        mask.at<std::uint8_t>(pixel) = value;
    }
}

void removeIslands(cv::Mat mask) {
    std::vector<std::vector<cv::Point>> components;
    std::size_t largest = 0;
    forEachComponent(mask.clone(), 255, mask.total(), [&](std::vector<cv::Point> pixels) {
        largest = std::max(largest, pixels.size());
        components.push_back(std::move(pixels));
    });
    const auto threshold =
        static_cast<std::size_t>(static_cast<int>(static_cast<double>(largest) * kIslandShare));
    for (const std::vector<cv::Point>& pixels : components) {
        if (pixels.size() < threshold) {
            setPixels(mask, pixels, 0);
        }
    }
}

void fillHoles(cv::Mat mask) {
    forEachComponent(mask.clone(), 0, kHolePixels, [&](const std::vector<cv::Point>& pixels) {
        if (!pixels.empty() && pixels.size() < kHolePixels) {
            setPixels(mask, pixels, 255);
        }
    });
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
    const ImagePtr merged = cloneImage(VORNSEMarker::m_prevResult);
    const auto scaled = [](int working) {
        return static_cast<int>(g_imageResizeFactor * static_cast<float>(working));
    };
    const int top = scaled(VORNSEMarker::m_yMinBBox);
    const int left = scaled(VORNSEMarker::m_xMinBBox);
    const int bottom = std::min(top + scaled(m_cropHeight), mask->height);
    const int right = std::min(left + scaled(m_cropWidth), mask->width);
    const std::uint8_t target = targetValue(strokeType);
    if (stroke::adds(strokeType) || stroke::removes(strokeType)) {
        for (int y = top; y < bottom; ++y) {
            const std::uint8_t* row = rowOf(mask, y);
            std::uint8_t* out = rowOf(merged.get(), y);
            for (int x = left; x < right; ++x) {
                if (row[x] == target) {
                    out[x] = target;
                }
            }
        }
    }
    cvCopy(merged.get(), mask);
}

void VORNSEHybrid::postProcessForLoop(IplImage* mask) {
    const cv::Mat image = cv::cvarrToMat(mask);
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
    cv::Mat changed(mask->height, mask->width, CV_8UC1);
    for (int y = 0; y < mask->height; ++y) {
        const std::uint8_t* row = rowOf(mask, y);
        const std::uint8_t* before = rowOf(previous, y);
        auto* out = changed.ptr<std::uint8_t>(y);
        for (int x = 0; x < mask->width; ++x) {
            out[x] = row[x] == target && before[x] == changedFrom ? kChanged : 0;
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
        for (int x = 0; x < mask->width; ++x) {
            out[x] = row[x] == 255 ? target : before[x];
        }
    }
}
