// Live-wire search: Dijkstra's algorithm over the pixel grid (E. Mortensen and W. Barrett,
// "Intelligent Scissors for Image Composition", SIGGRAPH 1995).
//
// A pixel's record is filled when the pixel is expanded and forgotten after: its cost while queued
// is that of its queue entry, and only the parents outlive the search. Records of the whole grid
// would take some 150 bytes a pixel, more than a phone has for a photograph.
//
// Invariant: a pixel that has left the queue has its final cost and parent.
#include "path/edge_path.h"

#include <cmath>
#include <cstddef>
#include <exception>
#include <functional>

#include "history/marker.h"
#include "path/min_priority_queue.h"
#include "support/image.h"
#include "support/log.h"

namespace {

constexpr int kColourChannels = 3;
constexpr double kChannelShare = 1.0 / 3.0;

struct Step {
    int dy;
    int dx;
};
constexpr Step kSteps[kPathNeighbours] = {{1, 1},   {0, 1},  {-1, 1}, {-1, 0},
                                          {-1, -1}, {0, -1}, {1, -1}, {1, 0}};

double stepWeight(int squaredLength, const std::uint8_t* a, const std::uint8_t* b, double alpha) {
    int difference = 0;
    for (int c = 0; c < kColourChannels; ++c) {
        const int d = a[c] - b[c];
        difference += d * d;
    }
    return std::sqrt(squaredLength * alpha + (1.0 - alpha) * kChannelShare * difference);
}

bool isForbidden(int from, int to) {
    return (label::isObject(from) && label::isBackground(to)) ||
           (label::isBackground(from) && label::isObject(to));
}

bool isEightBit(const IplImage* image, int channels) {
    return image != nullptr && image->imageData != nullptr && image->nChannels == channels &&
           image->depth == IPL_DEPTH_8U;
}

// Runs the search and hands every pixel's final cost to `report`. The arguments are checked.
std::vector<int> search(IplImage* image, IplImage* labels, int startNode, double alpha,
                        const std::function<void(int node, double cost)>& report) {
    const int width = image->width;
    const int height = image->height;
    const int count = width * height;
    std::vector<int> parents(static_cast<std::size_t>(count), kNoNode);
    parents[static_cast<std::size_t>(startNode)] = startNode;

    MinPriorityQueue queue;
    queue.m_heap.reserve(static_cast<std::size_t>(count) + 1);
    queue.m_position.reserve(static_cast<std::size_t>(count));
    for (int n = 0; n < count; ++n) {
        queue.push({n, n == startNode ? 0.0 : kPathUnreached});
    }
    for (int i = 0; i < count; ++i) {
        const Qnode nearest = queue.pop_min();
        report(nearest.index, nearest.cost);
        const int y = nearest.index / width;
        const int x = nearest.index % width;
        Node_ node;
        node.index = nearest.index;
        assign_index(node, height, width, y, x, alpha);
        assign_weight(image, labels, node, y, x, alpha);
        for (const Neighbour_& step : node.neighbours) {
            if (step.neighbour == kNoNode) {
                continue;
            }
            const auto next = static_cast<std::size_t>(step.neighbour);
            const int slot = queue.m_position[next];
            if (slot < 0) {
                continue;
            }
            Qnode& entry = queue.m_heap[static_cast<std::size_t>(slot)];
            const double offer = nearest.cost + step.weight;
            if (offer < entry.cost) {
                parents[next] = nearest.index;
                entry.cost = offer;
                queue.prelocate_up(slot);
            }
        }
    }
    return parents;
}

std::vector<int> guardedSearch(IplImage* image, IplImage* labels, int y, int x, double alpha,
                               const std::function<void(int node, double cost)>& report) {
    if (!isEightBit(image, kColourChannels) || !isEightBit(labels, 1) ||
        labels->width != image->width || labels->height != image->height || y < 0 || x < 0 ||
        y >= image->height || x >= image->width) {
        SEGCORE_LOG_ERROR("find_parent_info: no path from (%d, %d), bad start or images", x, y);
        return {};
    }
    try {
        return search(image, labels, y * image->width + x, alpha, report);
    } catch (const std::exception& failure) {
        SEGCORE_LOG_ERROR("find_parent_info: %s", failure.what());
        return {};
    }
}

}  // namespace

void assign_index(Node_& node, int height, int width, int y, int x, double /*alpha*/) {
    for (int k = 0; k < kPathNeighbours; ++k) {
        const int ny = y + kSteps[k].dy;
        const int nx = x + kSteps[k].dx;
        const bool inside = ny >= 0 && nx >= 0 && ny < height && nx < width;
        node.neighbours[k].neighbour = inside ? ny * width + nx : kNoNode;
    }
}

double find_weight(IplImage* image, int y1, int x1, int y2, int x2, double alpha) {
    const int dy = y2 - y1;
    const int dx = x2 - x1;
    return stepWeight(dy * dy + dx * dx, rowOf(image, y1) + kColourChannels * x1,
                      rowOf(image, y2) + kColourChannels * x2, alpha);
}

void assign_weight(IplImage* image, IplImage* labels, Node_& node, int y, int x, double alpha) {
    const int own = rowOf(labels, y)[x];
    for (int k = 0; k < kPathNeighbours; ++k) {
        if (node.neighbours[k].neighbour == kNoNode) {
            continue;
        }
        const int ny = y + kSteps[k].dy;
        const int nx = x + kSteps[k].dx;
        node.neighbours[k].weight = isForbidden(own, rowOf(labels, ny)[nx])
                                        ? kPathUnreached
                                        : find_weight(image, y, x, ny, nx, alpha);
    }
}

std::vector<int> find_parent_info(IplImage* image, IplImage* labels, int y, int x, double alpha) {
    return guardedSearch(image, labels, y, x, alpha, [](int, double) {});
}

std::vector<int> find_parent_info(IplImage* image, IplImage* labels, int y, int x, double alpha,
                                  IplImage* costMap) {
    if (costMap == nullptr || image == nullptr || costMap->width < image->width ||
        costMap->height < image->height) {
        SEGCORE_LOG_ERROR("find_parent_info: the cost map does not cover the image");
        return {};
    }
    return guardedSearch(image, labels, y, x, alpha, [&](int node, double cost) {
        cvSet2D(costMap, node / image->width, node % image->width, cvScalar(cost));
    });
}
