#include "session/mask_hygiene.h"

#include <algorithm>
#include <cstdint>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <vector>

namespace {

constexpr int kThroughCorners = 8;
constexpr int kThroughSides = 4;

void requireMask(const cv::Mat& mask, int value, int most) {
    if (mask.type() != CV_8UC1) {
        throw std::invalid_argument("a mask has one channel of 8 bits");
    }
    if (value < 0 || value > most) {
        throw std::invalid_argument(std::to_string(value) + " is not 0 to " + std::to_string(most));
    }
}

// Pieces of what is not 0, numbered from 1 on, and their areas.
struct Pieces {
    Pieces(const cv::Mat& image, int connectivity) {
        cv::Mat middles;
        count = cv::connectedComponentsWithStats(image, number, figures, middles, connectivity);
    }
    int area(int piece) const { return figures.at<int>(piece, cv::CC_STAT_AREA); }
    cv::Rect around(int piece) const {
        return {figures.at<int>(piece, cv::CC_STAT_LEFT), figures.at<int>(piece, cv::CC_STAT_TOP),
                figures.at<int>(piece, cv::CC_STAT_WIDTH),
                figures.at<int>(piece, cv::CC_STAT_HEIGHT)};
    }

    int count = 0;  // with number 0, which is no piece
    cv::Mat number;
    cv::Mat figures;
};

// Sets the pixels of those pieces to `value`.
template <typename Wanted>
void paint(const Pieces& pieces, int value, Wanted&& isWanted, cv::Mat& image) {
    std::vector<std::uint8_t> painted(static_cast<std::size_t>(pieces.count), 0);
    for (int piece = 1; piece < pieces.count; ++piece) {
        painted[static_cast<std::size_t>(piece)] = isWanted(piece) ? 1 : 0;
    }
    for (int y = 0; y < image.rows; ++y) {
        const auto* piece = pieces.number.ptr<int>(y);
        auto* out = image.ptr<std::uint8_t>(y);
        for (int x = 0; x < image.cols; ++x) {
            if (painted[static_cast<std::size_t>(piece[x])] != 0) {
                out[x] = static_cast<std::uint8_t>(value);
            }
        }
    }
}

int firstOf(const Pieces& pieces, int area) {
    for (int y = 0; y < pieces.number.rows; ++y) {
        const auto* piece = pieces.number.ptr<int>(y);
        for (int x = 0; x < pieces.number.cols; ++x) {
            if (piece[x] != 0 && pieces.area(piece[x]) == area) {
                return piece[x];
            }
        }
    }
    return 0;
}

// How far the disc reaches to either side in the rows 0, 1, ... radius away from its middle.
std::vector<int> halfWidths(int radius) {
    std::vector<int> halves;
    int half = radius;
    for (int away = 0; away <= radius; ++away) {
        while (half * half + away * away > radius * radius) {
            --half;
        }
        halves.push_back(half);
    }
    return halves;
}

// Sums of object pixels along the rows around the one in work: at x, of the pixels before x.
class RowSums {
  public:
    RowSums(const cv::Mat& object, int radius)
        : m_object(object), m_sums(2 * radius + 1, object.cols + 1, CV_32SC1) {}

    void take(int y) {
        const auto* row = m_object.ptr<std::uint8_t>(y);
        auto* sums = m_sums.ptr<int>(y % m_sums.rows);
        sums[0] = 0;
        for (int x = 0; x < m_object.cols; ++x) {
            sums[x + 1] = sums[x] + (row[x] != 0 ? 1 : 0);
        }
    }
    const int* of(int y) const { return m_sums.ptr<int>(y % m_sums.rows); }

  private:
    const cv::Mat& m_object;
    cv::Mat m_sums;
};

// More than 0 when most of the disc's pixels are object.
int majorityAt(const RowSums& sums, cv::Size size, const std::vector<int>& halves, int x, int y) {
    const int radius = static_cast<int>(halves.size()) - 1;
    int balance = 0;
    for (int row = std::max(y - radius, 0); row <= std::min(y + radius, size.height - 1); ++row) {
        const int half = halves[static_cast<std::size_t>(std::abs(row - y))];
        const int left = std::max(x - half, 0);
        const int right = std::min(x + half, size.width - 1) + 1;
        const int* sum = sums.of(row);
        balance += 2 * (sum[right] - sum[left]) - (right - left);
    }
    return balance;
}

// Where the square around the disc holds both kinds; elsewhere the disc changes nothing.
cv::Mat mixedPart(const cv::Mat& object, int radius) {
    const cv::Mat square(2 * radius + 1, 2 * radius + 1, CV_8UC1, cv::Scalar(1));
    cv::Mat grown;
    cv::Mat shrunk;
    cv::dilate(object, grown, square);
    cv::erode(object, shrunk, square);
    return grown != shrunk;
}

}  // namespace

cv::Mat withHolesFilled(const cv::Mat& mask, int pixels) {
    requireMask(mask, pixels, INT32_MAX);
    cv::Mat filled = mask != 0;
    const cv::Rect around = cv::boundingRect(filled);
    if (pixels == 0 || around.empty()) {
        return filled;
    }
    // Background that reaches the side of this part goes on beyond it, or is at the border of the mask.
    cv::Mat object = filled(around);
    const Pieces gaps(object == 0, kThroughSides);
    const cv::Rect inner(1, 1, around.width - 2, around.height - 2);
    const auto isHole = [&](int piece) {
        return gaps.area(piece) <= pixels && (gaps.around(piece) & inner) == gaps.around(piece);
    };
    paint(gaps, 255, isHole, object);
    return filled;
}

cv::Mat withoutIslands(const cv::Mat& mask, int pixels) {
    requireMask(mask, pixels, INT32_MAX);
    cv::Mat kept = mask != 0;
    const Pieces islands(kept, kThroughCorners);
    paint(
        islands, 0, [&](int piece) { return islands.area(piece) <= pixels; }, kept);
    return kept;
}

cv::Mat largestPiece(const cv::Mat& mask) {
    requireMask(mask, 0, 0);
    cv::Mat kept = mask != 0;
    const Pieces pieces(kept, kThroughCorners);
    int most = 0;
    for (int piece = 1; piece < pieces.count; ++piece) {
        most = std::max(most, pieces.area(piece));
    }
    const int largest = firstOf(pieces, most);
    paint(
        pieces, 0, [largest](int piece) { return piece != largest; }, kept);
    return kept;
}

cv::Mat smoothed(const cv::Mat& mask, int radius, const std::function<void()>& checkpoint) {
    requireMask(mask, radius, kLargestSmoothing);
    const cv::Mat object = mask != 0;
    cv::Mat smooth = object.clone();
    const cv::Mat mixed = mixedPart(object, radius);
    const std::vector<int> halves = halfWidths(radius);
    RowSums sums(object, radius);
    int taken = 0;
    for (int y = 0; y < object.rows; ++y) {
        if (checkpoint) {
            checkpoint();
        }
        for (; taken < std::min(y + radius + 1, object.rows); ++taken) {
            sums.take(taken);
        }
        const auto* isMixed = mixed.ptr<std::uint8_t>(y);
        auto* out = smooth.ptr<std::uint8_t>(y);
        for (int x = 0; x < object.cols; ++x) {
            const int balance = isMixed[x] != 0 ? majorityAt(sums, object.size(), halves, x, y) : 0;
            if (balance != 0) {
                out[x] = balance > 0 ? 255 : 0;
            }
        }
    }
    return smooth;
}

cv::Mat tidied(const cv::Mat& mask, const MaskHygiene& wanted,
               const std::function<void()>& checkpoint) {
    cv::Mat tidy = smoothed(mask, wanted.smooth, checkpoint);
    tidy = withHolesFilled(tidy, wanted.fillHoles);
    tidy = withoutIslands(tidy, wanted.dropIslands);
    return wanted.keepLargest ? largestPiece(tidy) : tidy;
}
