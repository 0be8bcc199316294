// A run is joined to the runs that it touches in the row above (union-find). The root of a
// component is its first run, so components come out in the order of their first pixels.
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

void ComponentSearch::add(const std::uint8_t* row, int width) {
    const std::size_t first = m_runs.size();
    appendRuns(row, width, m_y, m_value, m_runs);
    joinWithRowAbove(first);
    m_above = first;
    ++m_y;
}

void ComponentSearch::joinWithRowAbove(std::size_t firstOfRow) {
    for (std::size_t i = firstOfRow, j = m_above; i < m_runs.size() && j < firstOfRow;) {
        if (m_runs[i].x0 < m_runs[j].x1 && m_runs[j].x0 < m_runs[i].x1) {
            join(m_runs, static_cast<int>(i), static_cast<int>(j));
        }
        if (m_runs[i].x1 < m_runs[j].x1) {
            ++i;
        } else {
            ++j;
        }
    }
}

Components ComponentSearch::finish() {
    Components found;
    found.runs.swap(m_runs);
    std::vector<PixelRun>& runs = found.runs;
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

Components findComponents(const cv::Mat& image, std::uint8_t value) {
    ComponentSearch search(value);
    for (int y = 0; y < image.rows; ++y) {
        search.add(image.ptr<std::uint8_t>(y), image.cols);
    }
    return search.finish();
}
