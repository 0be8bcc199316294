// The walk keeps the object on its right hand. A row-wise scan meets each contour first at its topmost
// horizontal piece, whose upper side tells an object's border from a hole's; the pieces that a walk
// passed are remembered, so that each contour is walked once. What lies around a contour is told by the
// next border to the left of where it was met: that one was met earlier.
#include "session/mask_contours.h"

#include <algorithm>

namespace {

enum Direction { kRight, kDown, kLeft, kUp };

Direction turnedRight(Direction direction) {
    return static_cast<Direction>((direction + 1) % 4);
}

Direction turnedLeft(Direction direction) {
    return static_cast<Direction>((direction + 3) % 4);
}

// A vertical piece of border at the left edge of column `x`.
struct Crossing {
    int x;
    int contour;
};

class Tracer {
  public:
    explicit Tracer(const cv::Mat& mask)
        : m_mask(mask),
          m_walked(static_cast<std::size_t>(mask.cols) * (static_cast<std::size_t>(mask.rows) + 1)),
          m_crossings(static_cast<std::size_t>(mask.rows)),
          m_met(static_cast<std::size_t>(mask.rows)) {}

    std::vector<Contour> trace() {
        for (int y = 0; y < m_mask.rows; ++y) {
            for (int x = 0; x < m_mask.cols; ++x) {
                if (isObject(x, y) != isObject(x, y - 1) && !m_walked[pieceAt(x, y)]) {
                    meet(x, y);
                }
            }
        }
        for (int y = 0; y < m_mask.rows; ++y) {
            findParents(y);
        }
        return std::move(m_contours);
    }

  private:
    bool isObject(int x, int y) const {
        return x >= 0 && y >= 0 && x < m_mask.cols && y < m_mask.rows &&
               m_mask.at<std::uint8_t>(y, x) != 0;
    }
    // The horizontal piece at the upper edge of pixel (x, y).
    std::size_t pieceAt(int x, int y) const {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(m_mask.cols) +
               static_cast<std::size_t>(x);
    }

    void meet(int x, int y) {
        Contour contour;
        contour.isHole = isObject(x, y - 1);
        const int number = static_cast<int>(m_contours.size());
        contour.corners =
            contour.isHole ? walk({x + 1, y}, kLeft, number) : walk({x, y}, kRight, number);
        m_contours.push_back(std::move(contour));
        m_met[static_cast<std::size_t>(y)].push_back({x, number});
    }

    std::vector<cv::Point> walk(cv::Point start, Direction first, int number) {
        std::vector<cv::Point> corners;
        cv::Point at = start;
        Direction direction = first;
        do {
            step(at, direction, number);
            const Direction next = nextDirection(at, direction);
            if (next != direction) {
                corners.push_back(at);
            }
            direction = next;
        } while (at != start || direction != first);
        return corners;
    }

    void step(cv::Point& at, Direction direction, int number) {
        switch (direction) {
            case kRight:
                m_walked[pieceAt(at.x++, at.y)] = true;
                break;
            case kLeft:
                m_walked[pieceAt(--at.x, at.y)] = true;
                break;
            case kDown:
                m_crossings[static_cast<std::size_t>(at.y++)].push_back({at.x, number});
                break;
            case kUp:
                m_crossings[static_cast<std::size_t>(--at.y)].push_back({at.x, number});
                break;
        }
    }

    // Left before straight on before right: where two pixels touch at a corner the walk goes on to the
    // other one.
    Direction nextDirection(cv::Point at, Direction direction) const {
        // The pixels ahead, on either hand.
        const bool isUpperLeft = isObject(at.x - 1, at.y - 1);
        const bool isUpperRight = isObject(at.x, at.y - 1);
        const bool isLowerLeft = isObject(at.x - 1, at.y);
        const bool isLowerRight = isObject(at.x, at.y);
        bool onLeft = false;
        bool onRight = false;
        switch (direction) {
            case kRight:
                onLeft = isUpperRight;
                onRight = isLowerRight;
                break;
            case kDown:
                onLeft = isLowerRight;
                onRight = isLowerLeft;
                break;
            case kLeft:
                onLeft = isLowerLeft;
                onRight = isUpperLeft;
                break;
            case kUp:
                onLeft = isUpperLeft;
                onRight = isUpperRight;
                break;
        }
        if (onLeft) {
            return turnedLeft(direction);
        }
        return onRight ? direction : turnedRight(direction);
    }

    // For the contours that were met in a row. The border next to the left is of the other kind when
    // it is the one around, and otherwise a neighbour within the same one.
    void findParents(int y) {
        const std::vector<Crossing>& met = m_met[static_cast<std::size_t>(y)];
        if (met.empty()) {
            return;
        }
        std::vector<Crossing>& crossings = m_crossings[static_cast<std::size_t>(y)];
        const auto isFurtherLeft = [](const Crossing& a, const Crossing& b) { return a.x < b.x; };
        std::sort(crossings.begin(), crossings.end(), isFurtherLeft);
        for (const Crossing& start : met) {
            const auto own =
                std::lower_bound(crossings.begin(), crossings.end(), start, isFurtherLeft);
            if (own == crossings.begin()) {
                continue;
            }
            const int left = std::prev(own)->contour;
            Contour& contour = contourAt(start.contour);
            contour.parent =
                contour.isHole == contourAt(left).isHole ? contourAt(left).parent : left;
        }
    }

    Contour& contourAt(int number) { return m_contours[static_cast<std::size_t>(number)]; }

    const cv::Mat& m_mask;
    std::vector<bool> m_walked;                      // horizontal pieces
    std::vector<std::vector<Crossing>> m_crossings;  // of each row
    std::vector<std::vector<Crossing>> m_met;        // where the contours of each row were met
    std::vector<Contour> m_contours;
};

}  // namespace

std::vector<Contour> contoursOf(const cv::Mat& mask) {
    return Tracer(mask).trace();
}
