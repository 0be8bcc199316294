// The exact distance is found in two steps: per column the way up and down to the next change of side,
// then per row the nearest of the columns around. The first step runs over strips of rows, so that its
// memory does not grow with the picture.
#include "matting/outline_band.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace {

constexpr int kStripRows = 64;

// A strip of rows with `reach` rows above and below it.
struct Strip {
    int width = 0;
    int top = 0;  // row of the picture that is the first one here
    int rows = 0;
    std::vector<std::uint8_t> side;  // 0 or 1
    std::vector<std::uint8_t> up;    // rows to the next change of side, `none` when too far
    std::vector<std::uint8_t> down;

    size_t at(int row) const { return static_cast<size_t>(row - top) * static_cast<size_t>(width); }
};

// Whether both sides occur.
bool readSides(Plane<const std::uint8_t> mask, int top, int bottom, Strip& strip) {
    strip.width = mask.width;
    strip.top = top;
    strip.rows = bottom - top;
    const size_t size = static_cast<size_t>(strip.rows) * static_cast<size_t>(mask.width);
    strip.side.resize(size);
    strip.up.resize(size);
    strip.down.resize(size);
    unsigned any = 0;
    unsigned all = 1;
    for (int y = top; y < bottom; ++y) {
        const std::uint8_t* from = mask.row(y);
        std::uint8_t* to = &strip.side[strip.at(y)];
        for (int x = 0; x < mask.width; ++x) {
            to[x] = from[x] != 0 ? 1 : 0;
            any |= to[x];
            all &= to[x];
        }
    }
    return any != all;
}

void countRows(Strip& strip, std::uint8_t none) {
    const auto step = [&](std::vector<std::uint8_t>& ways, int row, int before) {
        const std::uint8_t* side = &strip.side[strip.at(row)];
        const std::uint8_t* sideBefore = &strip.side[strip.at(before)];
        const std::uint8_t* wayBefore = &ways[strip.at(before)];
        std::uint8_t* way = &ways[strip.at(row)];
        for (int x = 0; x < strip.width; ++x) {
            const int longer = std::min<int>(wayBefore[x] + 1, none);
            way[x] = static_cast<std::uint8_t>(side[x] == sideBefore[x] ? longer : 1);
        }
    };
    const int bottom = strip.top + strip.rows;
    std::fill_n(&strip.up[strip.at(strip.top)], strip.width, none);
    for (int y = strip.top + 1; y < bottom; ++y) {
        step(strip.up, y, y - 1);
    }
    std::fill_n(&strip.down[strip.at(bottom - 1)], strip.width, none);
    for (int y = bottom - 2; y >= strip.top; --y) {
        step(strip.down, y, y + 1);
    }
}

class RowSearch {
  public:
    RowSearch(const Strip& strip, int row, int reach)
        : m_side(&strip.side[strip.at(row)]),
          m_up(&strip.up[strip.at(row)]),
          m_down(&strip.down[strip.at(row)]),
          m_row(row),
          m_width(strip.width),
          m_reach(reach) {}

    void addTo(OutlineBand& band) {
        int x = nextEvent(0);
        while (x < m_width) {
            const int begin = std::max(x - m_reach, 0);
            int end = x;
            for (; x < m_width && x <= end + 2 * m_reach + 1; x = nextEvent(x + 1)) {
                end = x;
            }
            addColumns(begin, std::min(end + m_reach + 1, m_width), band);
        }
    }

  private:
    // Whether the next change of side is near in this column, or between it and the one before.
    bool isEvent(int x) const {
        return m_up[x] <= m_reach || m_down[x] <= m_reach || (x > 0 && m_side[x] != m_side[x - 1]);
    }

    int nextEvent(int x) const {
        constexpr int kWord = 8;
        while (x < m_width) {
            if (x > 0 && x + kWord <= m_width) {  // most of a picture is far from the outline
                std::uint64_t words[4];
                std::memcpy(&words[0], m_up + x, kWord);
                std::memcpy(&words[1], m_down + x, kWord);
                std::memcpy(&words[2], m_side + x, kWord);
                std::memcpy(&words[3], m_side + x - 1, kWord);
                const std::uint64_t far = 0x0101010101010101U * static_cast<unsigned>(m_reach + 1);
                if (words[0] == far && words[1] == far && words[2] == words[3]) {
                    x += kWord;
                    continue;
                }
            }
            if (isEvent(x)) {
                return x;
            }
            ++x;
        }
        return m_width;
    }

    void addColumns(int begin, int end, OutlineBand& band) {
        for (int x = begin; x < end; ++x) {
            AcrossOutline across{};
            if (search(x, across)) {
                band.pixels.add(m_row, x, x + 1);
                band.across.push_back(across);
                band.inside.push_back(m_side[x]);
                const float distance = std::sqrt(static_cast<float>(across.squaredLength())) - 0.5F;
                band.distance.push_back(m_side[x] != 0 ? distance : -distance);
            }
        }
    }

    bool search(int x, AcrossOutline& nearest) const {
        int best = m_reach * m_reach + 1;
        const auto look = [&](int dx) {
            const int column = x + dx;
            if (column < 0 || column >= m_width) {
                return;
            }
            int dy = 0;
            if (m_side[column] == m_side[x]) {
                dy = m_up[column] <= m_down[column] ? -m_up[column] : m_down[column];
            }
            const int squared = dx * dx + dy * dy;
            if (squared < best) {
                best = squared;
                nearest = {static_cast<std::int8_t>(dx), static_cast<std::int8_t>(dy)};
            }
        };
        look(0);
        for (int dx = 1; dx * dx < best; ++dx) {
            look(-dx);
            look(dx);
        }
        return best <= m_reach * m_reach;
    }

    const std::uint8_t* m_side;
    const std::uint8_t* m_up;
    const std::uint8_t* m_down;
    int m_row;
    int m_width;
    int m_reach;
};

}  // namespace

OutlineBand outlineBand(Plane<const std::uint8_t> mask, int reach,
                        const std::function<void()>& checkpoint) {
    reach = std::clamp(reach, 1, kFarthestReach);
    OutlineBand band;
    band.pixels = PixelRuns(mask.width, mask.height);
    Strip strip;
    for (int top = 0; top < mask.height; top += kStripRows) {
        checkpoint();
        const int bottom = std::min(top + kStripRows, mask.height);
        if (!readSides(mask, std::max(top - reach, 0), std::min(bottom + reach, mask.height),
                       strip)) {
            continue;
        }
        countRows(strip, static_cast<std::uint8_t>(reach + 1));
        for (int y = top; y < bottom; ++y) {
            RowSearch(strip, y, reach).addTo(band);
        }
    }
    return band;
}

void refineDistances(Plane<const std::uint16_t> covered, int full, OutlineBand& band) {
    for (const PixelRun& run : band.pixels.runs()) {
        for (int x = run.begin; x < run.end; ++x) {
            const auto pixel = static_cast<size_t>(run.numberOf(x));
            const AcrossOutline across = band.across[pixel];
            const float length = std::sqrt(static_cast<float>(across.squaredLength()));
            const auto step = [&](int way) {
                return static_cast<int>(std::floor(static_cast<float>(way) / length + 0.5F));
            };
            // The pixel across and its neighbour on the way back, which the outline runs between. What
            // the object lacks of the one or has of the other moves the outline by as much.
            const int column = x + across.dx;
            const int row = run.row + across.dy;
            const int sum = covered.row(row)[column] +
                            covered.row(row - step(across.dy))[column - step(across.dx)];
            band.distance[pixel] += static_cast<float>(sum) / static_cast<float>(full) - 1.0F;
        }
    }
}

std::vector<float> smoothed(const PixelRuns& pixels, const std::vector<float>& values) {
    constexpr std::array<float, 3> kWeights = {0.4991F, 0.2285F, 0.0219F};  // 0, 1, 2 pixels away
    std::vector<float> along(values.size());
    for (const PixelRun& run : pixels.runs()) {
        const float* from = &values[static_cast<size_t>(run.first)];
        for (int i = 0; i < run.length(); ++i) {
            const auto at = [&](int other) {
                return from[other >= 0 && other < run.length() ? other : i];
            };
            along[static_cast<size_t>(run.first + i)] = kWeights[0] * at(i) +
                                                        kWeights[1] * (at(i - 1) + at(i + 1)) +
                                                        kWeights[2] * (at(i - 2) + at(i + 2));
        }
    }
    std::vector<float> result(values.size());
    for (size_t pixel = 0; pixel < along.size(); ++pixel) {
        result[pixel] = (kWeights[0] + 2.0F * (kWeights[1] + kWeights[2])) * along[pixel];
    }
    // Where there is another row's pixel, it takes the place of the pixel itself.
    for (int way = -2; way <= 2; ++way) {
        if (way == 0) {
            continue;
        }
        const float weight = kWeights[static_cast<size_t>(std::abs(way))];
        for (const PixelRun& run : pixels.runs()) {
            const int row = run.row + way;
            if (row < 0 || row >= pixels.height()) {
                continue;
            }
            for (int number = pixels.firstOf(row); number < pixels.firstOf(row + 1); ++number) {
                const PixelRun& other = pixels.runs()[static_cast<size_t>(number)];
                const int end = std::min(run.end, other.end);
                for (int x = std::max(run.begin, other.begin); x < end; ++x) {
                    const auto pixel = static_cast<size_t>(run.numberOf(x));
                    result[pixel] +=
                        weight * (along[static_cast<size_t>(other.numberOf(x))] - along[pixel]);
                }
            }
        }
    }
    return result;
}
