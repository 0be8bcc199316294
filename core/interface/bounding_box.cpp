// The one-call entry: a rectangle on a photograph becomes a stroke, a marker image and a request.
#include <algorithm>
#include <vector>

#include "interface/engine_state.h"
#include "interface/host_call.h"
#include "interface/parked_context.h"
#include "interface/segmentation_core.h"

namespace {

struct Box {
    int left;
    int top;
    int right;
    int bottom;
};

Box clampToPhoto(const Box& box, int width, int height) {
    const auto clamped = [](int value, int size) { return std::min(std::max(value, 0), size - 1); };
    return {clamped(box.left, width), clamped(box.top, height), clamped(box.right, width),
            clamped(box.bottom, height)};
}

// The rectangle's outline, clockwise from the upper left corner, each side without its last corner.
// An inverted rectangle has the sides of its upright direction only, and of them as many points as
// both its extents add up to, the negative one included.
std::vector<int> outlineOf(const Box& box) {
    std::vector<int> points;
    const auto add = [&points](int x, int y) {
        points.push_back(x);
        points.push_back(y);
    };
    for (int x = box.left; x < box.right; ++x) {
        add(x, box.top);
    }
    for (int y = box.top; y < box.bottom; ++y) {
        add(box.right, y);
    }
    for (int x = box.right; x > box.left; --x) {
        add(x, box.bottom);
    }
    for (int y = box.bottom; y > box.top; --y) {
        add(box.left, y);
    }
    if (box.right < box.left || box.bottom < box.top) {
        const int count = 2 * ((box.right - box.left) + (box.bottom - box.top));
        points.resize(2 * static_cast<std::size_t>(std::max(count, 0)));
    }
    return points;
}

// The marker image of the rectangle; inverted rectangles mark nothing.
ImagePtr markersOf(const Box& box, int width, int height) {
    ImagePtr markers = createImage(width, height, 1);
    cvSetZero(markers.get());
    if (box.right >= box.left) {
        for (int y = box.top; y <= box.bottom; ++y) {
            std::uint8_t* row = rowOf(markers.get(), y);
            std::fill(row + box.left, row + box.right + 1, std::uint8_t{SEGCORE_MARK_CANDIDATE});
        }
    }
    return markers;
}

void segmentBox(int width, int height, const std::uint32_t* pixels, const Box& wanted,
                std::uint8_t* mask) {
    requireSize(width, height);
    requireBuffer(pixels, "pixel buffer");
    requireBuffer(mask, "mask buffer");
    const Box box = clampToPhoto(wanted, width, height);
    std::vector<int> points = outlineOf(box);

    Parked<PhotoParts> oldPhoto;
    Parked<EngineParts> oldEngine;
    tearDown();
    VORNSEMarker::resetMarkers();
    VORNSEManageUndoRedo::reset();
    storePhoto(width, height, pixels);
    createEngine();
    storeStroke(static_cast<int>(points.size()), points.data());
    g_markerImage = markersOf(box, width, height).release();
    VORNSEMarker::currentStroke.m_strokeType = SEGCORE_LOOP_ADD;
    runRequest(nullptr, mask);
    releaseImage(g_markerImage);
    oldEngine.release();
    oldPhoto.release();
}

}  // namespace

int doSegmentationBB(int width, int height, const std::uint32_t* pixels, int left, int top,
                     int right, int bottom, std::uint8_t* mask) {
    guardedCall(
        "doSegmentationBB",
        [&] {
            checkImageSize(width, height, "setSourceImage", 115);
            segmentBox(width, height, pixels, {left, top, right, bottom}, mask);
        },
        [] {
            if (!tearDownIfExitPending()) {
                g_exitStatus = 0;
            }
        });
    return 0;
}
