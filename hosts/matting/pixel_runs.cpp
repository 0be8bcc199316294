#include "matting/pixel_runs.h"

#include <algorithm>

PixelRuns::PixelRuns(int width, int height)
    : m_width(width), m_height(height), m_firstOfRow(static_cast<size_t>(height)) {}

void PixelRuns::add(int row, int begin, int end) {
    begin = std::max(begin, 0);
    end = std::min(end, m_width);
    if (begin >= end) {
        return;
    }
    if (m_nextRow == row + 1 && count() > firstOf(row) && m_runs.back().end >= begin) {
        m_size += std::max(end - m_runs.back().end, 0);
        m_runs.back().end = std::max(m_runs.back().end, end);
        return;
    }
    for (; m_nextRow <= row; ++m_nextRow) {
        m_firstOfRow[static_cast<size_t>(m_nextRow)] = count();
    }
    m_runs.push_back({row, begin, end, m_size});
    m_size += end - begin;
}

const PixelRun* PixelRuns::find(int row, int column) const {
    if (row < 0 || row >= m_height) {
        return nullptr;
    }
    const auto first = m_runs.begin() + firstOf(row);
    const auto last = m_runs.begin() + firstOf(row + 1);
    const auto after = std::upper_bound(
        first, last, column, [](int value, const PixelRun& run) { return value < run.begin; });
    return after != first && (after - 1)->end > column ? &*(after - 1) : nullptr;
}

PixelRuns grown(const PixelRuns& pixels, int reach) {
    PixelRuns result(pixels.width() + 2 * reach, pixels.height() + 2 * reach);
    std::vector<PixelRun> near;
    for (int row = 0; row < result.height(); ++row) {
        const int top = std::max(row - 2 * reach, 0);
        const int bottom = std::min(row + 1, pixels.height());
        near.assign(pixels.runs().begin() + pixels.firstOf(top),
                    pixels.runs().begin() + pixels.firstOf(bottom));
        std::sort(near.begin(), near.end(),
                  [](const PixelRun& a, const PixelRun& b) { return a.begin < b.begin; });
        for (const PixelRun& run : near) {
            result.add(row, run.begin, run.end + 2 * reach);
        }
    }
    return result;
}
