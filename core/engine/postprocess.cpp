// What the user sees of a new mask. Loops lose small islands and holes. Strokes keep only those
// changed regions that they touch. Then the mask is merged with the shown one: a mark that adds
// removes nothing, one that removes adds nothing, and neither changes anything outside the working
// region. All masks are of photo size with bytes 0 and 255.
#include <algorithm>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "engine/components.h"
#include "engine/hybrid.h"
#include "engine/stroke_rules.h"
#include "history/marker.h"
#include "support/image.h"
#include "support/log.h"

namespace {

constexpr double kIslandShare = 0.1;  // islands below this share of the largest one vanish
constexpr int kHolePixels = 5;        // holes below this size are filled
constexpr std::uint8_t kObjectByte = 255;
constexpr std::uint8_t kChanged = 255;

// Components are numbered from 2 on, in bytes; later ones than fit are not looked at. The last
// number, 255, is also the byte of the object. So its component counts all pixels of that byte that
// lie in its bounding rectangle.
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
        // Components without a number count for the last one where they lie in its rectangle.
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

void checkStrokeSize(const IplImage* mask) {
    checkImageSize(mask->width, mask->height, "postProcessForStroke", 1694);
}

std::uint8_t targetValue(int strokeType) {
    return stroke::adds(strokeType) ? 255 : 0;
}

// The regions in which the new mask changes the shown one in the stroke's direction, and which of
// them the stroke touches.
struct Changes {
    Components regions;
    std::vector<bool> touched;
};

Components changedRegions(const IplImage* mask, const IplImage* previous, int strokeType) {
    const std::uint8_t target = targetValue(strokeType);
    const std::uint8_t changedFrom = strokeType == stroke::kBrushRemove ? 255 : 0;
    // A copy of the width, so that the compiler can vectorise the loop: for all that it knows, a
    // store to a byte might change the image's header.
    const int width = mask->width;
    std::vector<std::uint8_t> changed(static_cast<std::size_t>(width));
    ComponentSearch search(kChanged);
    for (int y = 0; y < mask->height; ++y) {
        const std::uint8_t* row = rowOf(mask, y);
        const std::uint8_t* before = rowOf(previous, y);
        std::uint8_t* out = changed.data();
        for (int x = 0; x < width; ++x) {
            const bool asked = row[x] == target;
            const bool open = before[x] == changedFrom;
            out[x] = asked && open ? kChanged : 0;
        }
        search.add(out, width);
    }
    return search.finish();
}

Changes changesOf(const IplImage* mask, const IplImage* previous, const strokeInfo& stroke) {
    Changes changes{changedRegions(mask, previous, stroke.m_strokeType), {}};
    changes.touched.resize(changes.regions.components.size());
    const std::vector<PixelRun>& runs = changes.regions.runs;
    for (std::size_t i = 0; i + 1 < stroke.m_points.size(); i += 2) {
        const int x = stroke.m_points[i];
        const int y = stroke.m_points[i + 1];
        const auto run = std::partition_point(runs.begin(), runs.end(), [x, y](const PixelRun& r) {
            return r.y < y || (r.y == y && r.x1 <= x);
        });
        if (run != runs.end() && run->y == y && run->x0 <= x) {
            changes.touched[static_cast<std::size_t>(run->component)] = true;
        }
    }
    return changes;
}

// The shown mask with those changes that the stroke touches, as far as they lie in a rectangle.
void keepTouched(IplImage* mask, const IplImage* previous, const strokeInfo& current,
                 const cv::Rect& where) {
    const Changes changes = changesOf(mask, previous, current);
    for (int y = 0; y < mask->height; ++y) {
        std::copy_n(rowOf(previous, y), mask->width, rowOf(mask, y));
    }
    cv::Mat image = cv::cvarrToMat(mask);
    const std::uint8_t target = targetValue(current.m_strokeType);
    const Component box = {0, where.x, where.x + where.width - 1, where.y,
                           where.y + where.height - 1};
    for (const PixelRun& run : changes.regions.runs) {
        const PixelRun part = clipped(run, box);
        if (changes.touched[static_cast<std::size_t>(run.component)] && part.x1 > part.x0) {
            fillRun(image, part, target);
        }
    }
}

// The part of the photograph that the working image's crop stands for.
cv::Rect croppedPart(int cropWidth, int cropHeight) {
    const auto scaled = [](int working) {
        return static_cast<int>(g_imageResizeFactor * static_cast<float>(working));
    };
    return {scaled(VORNSEMarker::m_xMinBBox), scaled(VORNSEMarker::m_yMinBBox), scaled(cropWidth),
            scaled(cropHeight)};
}

// The shown mask with the new one's pixels of one value, as far as they lie in a rectangle.
void merge(IplImage* mask, const IplImage* previous, std::uint8_t target, const cv::Rect& where) {
    for (int y = 0; y < mask->height; ++y) {
        std::uint8_t* row = rowOf(mask, y);
        const std::uint8_t* before = rowOf(previous, y);
        if (y < where.y || y >= where.br().y) {
            std::copy_n(before, mask->width, row);
            continue;
        }
        std::copy_n(before, where.x, row);
        for (int x = where.x; x < where.br().x; ++x) {
            row[x] = row[x] == target ? target : before[x];
        }
        std::copy(before + where.br().x, before + mask->width, row + where.br().x);
    }
}

void cleanLoop(IplImage* mask) {
    cv::Mat image = cv::cvarrToMat(mask);
    removeIslands(image);
    fillHoles(image);
}

}  // namespace

void applyStrokeRules(IplImage* mask, const IplImage* previous, const strokeInfo& current,
                      const cv::Rect& region) {
    const int strokeType = current.m_strokeType;
    if (strokeType == stroke::kLoopAdd) {
        cleanLoop(mask);
    }
    if (previous == nullptr) {
        return;
    }
    const cv::Rect part = region & cv::Rect(0, 0, mask->width, mask->height);
    if (stroke::isBrush(strokeType)) {
        // What the stroke does not touch is the shown mask already, so that merging adds nothing.
        keepTouched(mask, previous, current, part);
    } else {
        const bool merges = stroke::adds(strokeType) || stroke::removes(strokeType);
        merge(mask, previous, targetValue(strokeType), merges ? part : cv::Rect());
    }
}

void VORNSEHybrid::postProcess(IplImage* mask) {
    const strokeInfo& current = VORNSEMarker::currentStroke;
    const IplImage* previous = VORNSEMarker::m_prevResult;
    if (previous != nullptr && stroke::isBrush(current.m_strokeType)) {
        checkStrokeSize(mask);
    }
    applyStrokeRules(mask, previous, current, croppedPart(m_cropWidth, m_cropHeight));
}

void VORNSEHybrid::postProcessForLoop(IplImage* mask) {
    cleanLoop(mask);
}

// Only what a brush touches is kept; postProcess does that and the merge in one go.
void VORNSEHybrid::postProcessForStroke(IplImage* mask) {
    const IplImage* previous = VORNSEMarker::m_prevResult;
    if (previous == nullptr) {
        return;
    }
    checkStrokeSize(mask);
    keepTouched(mask, previous, VORNSEMarker::currentStroke,
                cv::Rect(0, 0, mask->width, mask->height));
}
