// The exact nearest pixel in time proportional to the picture (Meijster, Roerdink and Hesselink 2000):
// per column the nearest row that shows something, then per row the columns whose parabolas of squared
// distances are the lowest somewhere.
#include "matting/unseen_colours.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace {

constexpr int kCheckedRows = 64;

// The nearest seen pixels of the columns, as rows. Small numbers where they do: this is the only
// memory here that grows with the picture.
template <typename Row>
std::vector<Row> nearestRows(Plane<const std::uint16_t> alpha,
                             const std::function<void()>& checkpoint) {
    constexpr Row kNone = std::numeric_limits<Row>::max();
    const auto width = static_cast<size_t>(alpha.width);
    std::vector<Row> nearest(width * static_cast<size_t>(alpha.height));
    for (int y = 0; y < alpha.height; ++y) {
        if (y % kCheckedRows == 0) {
            checkpoint();
        }
        const std::uint16_t* seen = alpha.row(y);
        Row* row = &nearest[static_cast<size_t>(y) * width];
        for (size_t x = 0; x < width; ++x) {
            const Row before = y > 0 ? row[x - width] : kNone;
            row[x] = seen[x] != 0 ? static_cast<Row>(y) : before;
        }
    }
    for (int y = alpha.height - 2; y >= 0; --y) {
        if (y % kCheckedRows == 0) {
            checkpoint();
        }
        Row* row = &nearest[static_cast<size_t>(y) * width];
        for (size_t x = 0; x < width; ++x) {
            const Row above = row[x];
            const Row below = row[x + width];
            const bool isNearer =
                below != kNone && (above == kNone || static_cast<std::int64_t>(below) - y <
                                                         y - static_cast<std::int64_t>(above));
            row[x] = isNearer ? below : above;
        }
    }
    return nearest;
}

// The columns of a row whose nearest pixels are the nearest ones of some pixels of the row.
template <typename Row>
class NearestColumns {
  public:
    explicit NearestColumns(int width)
        : m_columns(static_cast<size_t>(width)),
          m_from(static_cast<size_t>(width)),
          m_squares(static_cast<size_t>(width)) {}

    void find(const Row* nearest, int y, int width) {
        constexpr Row kNone = std::numeric_limits<Row>::max();
        m_count = 0;
        for (int x = 0; x < width; ++x) {
            if (nearest[x] == kNone) {
                continue;
            }
            const std::int64_t way = static_cast<std::int64_t>(nearest[x]) - y;
            const std::int64_t square = way * way + static_cast<std::int64_t>(x) * x;
            std::int64_t begin = 0;
            while (m_count > 0) {
                // The first pixel that is nearer to this column's than to the last one's.
                const int last = m_columns[m_count - 1];
                const std::int64_t numerator = square - m_squares[m_count - 1];
                const std::int64_t denominator = 2 * static_cast<std::int64_t>(x - last);
                begin = numerator < 0 ? 0 : numerator / denominator + 1;
                if (begin > m_from[m_count - 1]) {
                    break;
                }
                --m_count;
                begin = 0;
            }
            if (begin < width) {
                m_columns[m_count] = x;
                m_from[m_count] = static_cast<int>(begin);
                m_squares[m_count] = square;
                ++m_count;
            }
        }
    }

    bool isEmpty() const { return m_count == 0; }

    // Calls use(x, column) for all x from left to right.
    template <typename Use>
    void forEach(int width, Use&& use) const {
        size_t now = 0;
        for (int x = 0; x < width; ++x) {
            while (now + 1 < m_count && m_from[now + 1] <= x) {
                ++now;
            }
            use(x, m_columns[now]);
        }
    }

  private:
    std::vector<int> m_columns;
    std::vector<int> m_from;              // first pixel that each is nearest for
    std::vector<std::int64_t> m_squares;  // squared way in the column, and the column squared
    size_t m_count = 0;
};

template <typename Row, typename Value>
void spread(Plane<Value> picture, int channels, Plane<const std::uint16_t> alpha,
            const std::function<void()>& checkpoint) {
    const std::vector<Row> nearest = nearestRows<Row>(alpha, checkpoint);
    NearestColumns<Row> columns(alpha.width);
    for (int y = 0; y < alpha.height; ++y) {
        if (y % kCheckedRows == 0) {
            checkpoint();
        }
        const std::uint16_t* seen = alpha.row(y);
        Value* to = picture.row(y);
        if (std::all_of(seen, seen + alpha.width, [](std::uint16_t value) { return value != 0; })) {
            continue;
        }
        const Row* rows = &nearest[static_cast<size_t>(y) * static_cast<size_t>(alpha.width)];
        columns.find(rows, y, alpha.width);
        if (columns.isEmpty()) {
            std::fill_n(to, static_cast<std::ptrdiff_t>(alpha.width) * channels, Value{0});
            continue;
        }
        columns.forEach(alpha.width, [&](int x, int column) {
            if (seen[x] == 0) {
                const Value* from = picture.row(static_cast<int>(rows[column])) +
                                    static_cast<std::ptrdiff_t>(column) * channels;
                std::copy_n(from, channels, to + static_cast<std::ptrdiff_t>(x) * channels);
            }
        });
    }
}

}  // namespace

template <typename Value>
void spreadColours(Plane<Value> picture, int channels, Plane<const std::uint16_t> alpha,
                   const std::function<void()>& checkpoint) {
    if (alpha.height < std::numeric_limits<std::uint16_t>::max()) {
        spread<std::uint16_t>(picture, channels, alpha, checkpoint);
    } else {
        spread<std::uint32_t>(picture, channels, alpha, checkpoint);
    }
}

template void spreadColours(Plane<std::uint8_t>, int, Plane<const std::uint16_t>,
                            const std::function<void()>&);
template void spreadColours(Plane<std::uint16_t>, int, Plane<const std::uint16_t>,
                            const std::function<void()>&);
