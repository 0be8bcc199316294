#include "core_path.h"

#include <algorithm>
#include <array>
#include <limits>

namespace {

// Lengths of steps to the side and across a corner; their ratio is near that of a square's side and
// diagonal, and whole numbers have no rounding to decide ties (Borgefors 1986).
constexpr int kStraight = 5;
constexpr int kDiagonal = 7;
constexpr int kFar = std::numeric_limits<int>::max();

struct Move {
    cv::Point by;
    int length;
};
const std::array<Move, 8> kMoves{{{{0, -1}, kStraight},
                                  {{-1, 0}, kStraight},
                                  {{1, 0}, kStraight},
                                  {{0, 1}, kStraight},
                                  {{-1, -1}, kDiagonal},
                                  {{1, -1}, kDiagonal},
                                  {{-1, 1}, kDiagonal},
                                  {{1, 1}, kDiagonal}}};

// How far the core's pixels are from one of them, kFar where no way leads.
class Distances {
  public:
    Distances(const cv::Mat& core, cv::Point from) : m_of(core.size(), CV_32SC1, cv::Scalar(kFar)) {
        m_of.at<int>(from) = 0;
        // As no step is longer than kDiagonal, so many lists of pixels, taken in turn, hold every
        // distance that is still open.
        std::array<std::vector<cv::Point>, kDiagonal + 1> open;
        open[0].push_back(from);
        std::size_t waiting = 1;
        for (int distance = 0; waiting > 0; ++distance) {
            std::vector<cv::Point>& pixels = open[static_cast<std::size_t>(distance) % open.size()];
            waiting -= pixels.size();
            for (const cv::Point& pixel : pixels) {
                if (m_of.at<int>(pixel) != distance) {
                    continue;  // reached by a shorter way meanwhile
                }
                for (const Move& move : kMoves) {
                    const cv::Point next = pixel + move.by;
                    const int reached = distance + move.length;
                    if (core.at<std::uint8_t>(next) != 0 && reached < m_of.at<int>(next)) {
                        m_of.at<int>(next) = reached;
                        open[static_cast<std::size_t>(reached) % open.size()].push_back(next);
                        ++waiting;
                    }
                }
            }
            pixels.clear();
        }
    }

    cv::Point farthest() const {
        cv::Point found;
        int largest = -1;
        for (int y = 0; y < m_of.rows; ++y) {
            for (int x = 0; x < m_of.cols; ++x) {
                const int distance = m_of.at<int>(y, x);
                if (distance != kFar && distance > largest) {
                    largest = distance;
                    found = {x, y};
                }
            }
        }
        return found;
    }

    // Every pixel from `end` to where the distances are counted from.
    std::vector<cv::Point> wayFrom(cv::Point end) const {
        std::vector<cv::Point> way{end};
        while (m_of.at<int>(way.back()) > 0) {
            const cv::Point pixel = way.back();
            const auto* const move =
                std::find_if(kMoves.begin(), kMoves.end(), [&](const Move& candidate) {
                    return m_of.at<int>(pixel + candidate.by) ==
                           m_of.at<int>(pixel) - candidate.length;
                });
            way.push_back(pixel + move->by);
        }
        return way;
    }

  private:
    cv::Mat m_of;  // CV_32SC1
};

}  // namespace

std::vector<cv::Point> pathAlongCore(const cv::Mat& core, cv::Point middle) {
    const Distances fromMiddle(core, middle);
    const cv::Point first = fromMiddle.farthest();
    const cv::Point last = Distances(core, first).farthest();
    std::vector<cv::Point> path = fromMiddle.wayFrom(first);
    const std::vector<cv::Point> back = fromMiddle.wayFrom(last);
    path.insert(path.end(), back.rbegin() + 1, back.rend());
    return path;
}
