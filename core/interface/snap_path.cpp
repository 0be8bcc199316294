// The path along edges, from the host's pixel words to its pixels in order.
#include <algorithm>
#include <memory>
#include <vector>

#include "interface/engine_state.h"
#include "interface/host_call.h"
#include "interface/segmentation_core.h"
#include "path/edge_path.h"

namespace {

struct Pixel {
    int x;
    int y;
};

void requireInside(Pixel pixel, int width, int height) {
    if (pixel.x < 0 || pixel.y < 0 || pixel.x >= width || pixel.y >= height) {
        throw HostError("the path starts or ends outside the image");
    }
}

// Node numbers from the end back to the start, which is its own parent.
std::vector<int> nodesBackFrom(int node, const std::vector<int>& parents) {
    std::vector<int> nodes{node};
    for (int parent = parents[static_cast<std::size_t>(node)]; parent != nodes.back();
         parent = parents[static_cast<std::size_t>(parent)]) {
        nodes.push_back(parent);
    }
    return nodes;
}

}  // namespace

void segcore_snap_path(int width, int height, const std::uint32_t* pixels, int from_x, int from_y,
                       int to_x, int to_y, double alpha, int** array, int* count) {
    guardedCall("segcore_snap_path", [&] {
        requireBuffer(array, "address of the array");
        requireBuffer(count, "address of the count");
        *array = nullptr;
        *count = 0;
        requireSize(width, height);
        requireBuffer(pixels, "pixel buffer");
        requireInside({from_x, from_y}, width, height);
        requireInside({to_x, to_y}, width, height);
        if (!(alpha >= 0.0 && alpha <= 1.0)) {
            throw HostError("alpha is not 0 to 1");
        }
        const ImagePtr image = imageFromWords(width, height, pixels);
        const std::vector<int> parents =
            find_parent_info(image.get(), nullptr, from_y, from_x, alpha);
        if (parents.empty()) {
            throw std::bad_alloc();  // all else is checked
        }
        const std::vector<int> nodes = nodesBackFrom(to_y * width + to_x, parents);
        auto path = std::make_unique<int[]>(2 * nodes.size());
        int* next = path.get();
        std::for_each(nodes.rbegin(), nodes.rend(), [&next, width](int node) {
            *next++ = node % width;
            *next++ = node / width;
        });
        *array = path.release();
        *count = static_cast<int>(2 * nodes.size());
    });
}
