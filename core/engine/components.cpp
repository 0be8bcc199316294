// Runs are joined to the runs that they touch in the row above by a union-find whose roots are the
// first runs of their components, so components come out in the order of their first pixels.
#include "engine/components.h"

#include <algorithm>
#include <cstring>

namespace {

int rootOf(std::vector<PixelRun>& runs, int run) {
    while (runs[static_cast<std::size_t>(run)].component != run) {
        PixelRun& current = runs[static_cast<std::size_t>(run)];
        current.component = runs[static_cast<std::size_t>(current.component)].component;
        run = current.component;
    }
    return run;
}

void join(std::vector<PixelRun>& runs, int a, int b) {
    const int rootA = rootOf(runs, a);
    const int rootB = rootOf(runs, b);
    runs[static_cast<std::size_t>(std::max(rootA, rootB))].component = std::min(rootA, rootB);
}

void appendRuns(const std::uint8_t* row, int width, int y, std::uint8_t value,
                std::vector<PixelRun>& runs) {
    const auto next = [row, width](int from, int byte) {
        const void* found = std::memchr(row + from, byte, static_cast<std::size_t>(width - from));
        return found == nullptr ? width
                                : static_cast<int>(static_cast<const std::uint8_t*>(found) - row);
    };
    for (int x = next(0, value); x < width;) {
        const int end = next(x, 255 - value);
        runs.push_back({y, x, end, static_cast<int>(runs.size())});
        x = end < width ? next(end, value) : width;
    }
}

}  // namespace

Components findComponents(const cv::Mat& image, std::uint8_t value) {
    Components found;
    std::vector<PixelRun>& runs = found.runs;
    std::size_t above = 0;
    for (int y = 0; y < image.rows; ++y) {
        const std::size_t first = runs.size();
        appendRuns(image.ptr<std::uint8_t>(y), image.cols, y, value, runs);
        for (std::size_t i = first, j = above; i < runs.size() && j < first;) {
            if (runs[i].x0 < runs[j].x1 && runs[j].x0 < runs[i].x1) {
                join(runs, static_cast<int>(i), static_cast<int>(j));
            }
            if (runs[i].x1 < runs[j].x1) {
                ++i;
            } else {
                ++j;
            }
        }
        above = first;
    }
    for (std::size_t i = 0; i < runs.size(); ++i) {
        PixelRun& run = runs[i];
        // A root precedes its members, so its own entry already holds the component's number.
        if (run.component == static_cast<int>(i)) {
            run.component = static_cast<int>(found.components.size());
            found.components.push_back({0, run.x0, run.x1 - 1, run.y, run.y});
        } else {
            run.component = runs[static_cast<std::size_t>(run.component)].component;
        }
        Component& component = found.components[static_cast<std::size_t>(run.component)];
        component.pixels += run.x1 - run.x0;
        component.xMin = std::min(component.xMin, run.x0);
        component.xMax = std::max(component.xMax, run.x1 - 1);
        component.yMax = run.y;
    }
    return found;
}
