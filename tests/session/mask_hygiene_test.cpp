// Each kind of tidying against a plain flood fill or count of its own.
#include <gtest/gtest.h>
#include <cstdlib>
#include <opencv2/core.hpp>
#include <random>
#include <stdexcept>

#include "session/mask_hygiene.h"

namespace {

struct Piece {
    std::vector<cv::Point> pixels;
    bool reachesBorder = false;
};

// The pieces of pixels of one kind, in the order of their first pixels.
std::vector<Piece> piecesOf(const cv::Mat& mask, bool object, bool throughCorners) {
    cv::Mat open = mask.clone();
    std::vector<Piece> pieces;
    for (int start = 0; start < static_cast<int>(mask.total()); ++start) {
        std::vector<cv::Point> reached{{start % mask.cols, start / mask.cols}};
        Piece piece;
        while (!reached.empty()) {
            const cv::Point at = reached.back();
            reached.pop_back();
            if (!at.inside({0, 0, mask.cols, mask.rows}) ||
                open.at<std::uint8_t>(at) != (object ? 255 : 0)) {
                continue;
            }
            open.at<std::uint8_t>(at) = 1;
            piece.pixels.push_back(at);
            piece.reachesBorder = piece.reachesBorder || at.x == 0 || at.y == 0 ||
                                  at.x == mask.cols - 1 || at.y == mask.rows - 1;
            for (int dy = -1; dy <= 1; ++dy) {
                for (int dx = -1; dx <= 1; ++dx) {
                    if (throughCorners || dx == 0 || dy == 0) {
                        reached.emplace_back(at.x + dx, at.y + dy);
                    }
                }
            }
        }
        if (!piece.pixels.empty()) {
            pieces.push_back(piece);
        }
    }
    return pieces;
}

void paint(const Piece& piece, int value, cv::Mat& mask) {
    for (const cv::Point& pixel : piece.pixels) {
        mask.at<std::uint8_t>(pixel) = static_cast<std::uint8_t>(value);
    }
}

cv::Mat plainlyFilled(cv::Mat mask, std::size_t pixels) {
    for (const Piece& piece : piecesOf(mask, false, false)) {
        if (!piece.reachesBorder && piece.pixels.size() <= pixels) {
            paint(piece, 255, mask);
        }
    }
    return mask;
}

cv::Mat plainlyDropped(cv::Mat mask, std::size_t pixels) {
    for (const Piece& piece : piecesOf(mask, true, true)) {
        if (piece.pixels.size() <= pixels) {
            paint(piece, 0, mask);
        }
    }
    return mask;
}

cv::Mat plainlyLargest(const cv::Mat& mask) {
    Piece largest;
    for (const Piece& piece : piecesOf(mask, true, true)) {
        largest = piece.pixels.size() > largest.pixels.size() ? piece : largest;
    }
    cv::Mat kept = cv::Mat::zeros(mask.size(), CV_8UC1);
    paint(largest, 255, kept);
    return kept;
}

cv::Mat plainlySmoothed(const cv::Mat& mask, int radius) {
    cv::Mat smooth = mask.clone();
    for (int y = 0; y < mask.rows; ++y) {
        for (int x = 0; x < mask.cols; ++x) {
            int object = 0;
            int rest = 0;
            for (int v = 0; v < mask.rows; ++v) {
                for (int u = 0; u < mask.cols; ++u) {
                    if ((u - x) * (u - x) + (v - y) * (v - y) <= radius * radius) {
                        ++(mask.at<std::uint8_t>(v, u) != 0 ? object : rest);
                    }
                }
            }
            if (object != rest) {
                smooth.at<std::uint8_t>(y, x) = object > rest ? 255 : 0;
            }
        }
    }
    return smooth;
}

bool same(const cv::Mat& a, const cv::Mat& b) {
    return a.type() == b.type() && a.size() == b.size() && cv::norm(a, b, cv::NORM_INF) == 0.0;
}

TEST(MaskHygiene, IsWhatPlainFloodFillsAndCountsFind) {
    std::mt19937 random(1);
    for (int trial = 0; trial < 600; ++trial) {
        cv::Mat mask(1 + trial % 13, 1 + trial / 13 % 17, CV_8UC1);
        const unsigned share = 1 + static_cast<unsigned>(trial) % 7;
        for (int i = 0; i < static_cast<int>(mask.total()); ++i) {
            mask.data[i] = random() % 8 < share ? 255 : 0;
        }
        SCOPED_TRACE(testing::Message() << mask);
        const int few = trial % 5;
        const auto count = static_cast<std::size_t>(few);
        EXPECT_TRUE(same(withHolesFilled(mask, few), plainlyFilled(mask.clone(), count)));
        EXPECT_TRUE(same(withoutIslands(mask, few), plainlyDropped(mask.clone(), count)));
        EXPECT_TRUE(same(largestPiece(mask), plainlyLargest(mask)));
        EXPECT_TRUE(same(smoothed(mask, few), plainlySmoothed(mask, few)));
        const cv::Mat all = plainlyLargest(
            plainlyDropped(plainlyFilled(plainlySmoothed(mask, few), 2 * count + 1), count + 2));
        EXPECT_TRUE(same(tidied(mask / 255, {few, 2 * few + 1, few + 2, true}), all));
        ASSERT_FALSE(HasFailure());
    }
}

// What the header promises: edges stay, thin lines and gaps go, thick ones stay.
TEST(MaskHygiene, SmoothsLinesAwayAndLeavesStraightEdges) {
    cv::Mat mask = cv::Mat::zeros(30, 120, CV_8UC1);
    mask.colRange(60, 120).setTo(255);
    EXPECT_TRUE(same(smoothed(mask, 10), mask));
    const cv::Mat edge = mask.clone();
    mask.colRange(20, 27).setTo(255);  // 0.7 of the radius
    mask.colRange(90, 97).setTo(0);
    EXPECT_TRUE(same(smoothed(mask, 10), edge));
    mask.colRange(20, 29).setTo(255);  // 0.9
    EXPECT_EQ(smoothed(mask, 10).at<std::uint8_t>(15, 24), 255);
}

// Eight pixels around an island: with the island gone first, the hole would be too large.
TEST(MaskHygiene, FillsAHoleWithWhatIsInIt) {
    cv::Mat ring(5, 5, CV_8UC1, cv::Scalar(255));
    ring(cv::Rect(1, 1, 3, 3)).setTo(0);
    ring.at<std::uint8_t>(2, 2) = 255;
    EXPECT_EQ(cv::countNonZero(tidied(ring, {0, 8, 1, false})), 25);
    EXPECT_EQ(cv::countNonZero(tidied(ring, {0, 7, 1, true})), 16);
}

TEST(MaskHygiene, RefusesWhatIsOutOfRange) {
    const cv::Mat mask = cv::Mat::zeros(4, 4, CV_8UC1);
    EXPECT_THROW(smoothed(mask, kLargestSmoothing + 1), std::invalid_argument);
    EXPECT_THROW(smoothed(mask, -1), std::invalid_argument);
    EXPECT_THROW(withHolesFilled(mask, -1), std::invalid_argument);
    EXPECT_THROW(withoutIslands(cv::Mat::zeros(4, 4, CV_8UC3), 1), std::invalid_argument);
    EXPECT_THROW(smoothed(mask, 1, [] { throw std::runtime_error("stopped"); }),
                 std::runtime_error);
}

}  // namespace
