#include <gtest/gtest.h>
#include <cmath>
#include <opencv2/core.hpp>
#include <stdexcept>

#include "history/marker.h"
#include "path/edge_path.h"
#include "path/min_priority_queue.h"

namespace {

// Owns its pixels; image and labels are headers on them.
struct Scene {
    Scene(int width, int height, unsigned seed, int labelCodes)
        : pixels(height, width, CV_8UC3), codes(height, width, CV_8UC1) {
        cv::RNG random(seed);
        random.fill(pixels, cv::RNG::UNIFORM, 0, 256);
        random.fill(codes, cv::RNG::UNIFORM, 0, labelCodes);
    }
    std::vector<int> parents(int y, int x, double alpha) {
        return find_parent_info(&image, &labels, y, x, alpha);
    }

    cv::Mat3b pixels;
    cv::Mat1b codes;
    IplImage image = cvIplImage(pixels);
    IplImage labels = cvIplImage(codes);
};

// Cost of a permitted step between two neighbouring pixels, straight from the definition; infinite
// across the border of the object.
double stepCost(const Scene& scene, cv::Point a, cv::Point b, double alpha) {
    const auto side = [&](cv::Point p) {
        const int code = scene.codes(p);
        return code == 0 || code > 4 ? 0 : (code % 2 == 0 ? 1 : -1);
    };
    if (side(a) * side(b) < 0) {
        return HUGE_VAL;
    }
    const double colour = cv::norm(scene.pixels(a), scene.pixels(b), cv::NORM_L2SQR);
    return std::sqrt(alpha * (a - b).dot(a - b) + (1.0 - alpha) * colour / 3.0);
}

// Bellman-Ford: relax every edge until nothing changes.
cv::Mat1d shortestCosts(const Scene& scene, cv::Point start, double alpha) {
    cv::Mat1d cost(scene.pixels.size(), HUGE_VAL);
    cost(start) = 0.0;
    const int count = static_cast<int>(cost.total());
    for (bool changed = true; changed;) {
        changed = false;
        for (int i = 0; i < count * count; ++i) {
            const cv::Point a(i / count % cost.cols, i / count / cost.cols);
            const cv::Point b(i % count % cost.cols, i % count / cost.cols);
            if (a != b && std::abs(a.x - b.x) < 2 && std::abs(a.y - b.y) < 2 &&
                cost(a) + stepCost(scene, a, b, alpha) < cost(b)) {
                cost(b) = cost(a) + stepCost(scene, a, b, alpha);
                changed = true;
            }
        }
    }
    return cost;
}

void expectShortestPaths(Scene scene, cv::Point start, double alpha) {
    cv::Mat1d found(scene.pixels.size());
    IplImage costMap = cvIplImage(found);
    const std::vector<int> parents =
        find_parent_info(&scene.image, &scene.labels, start.y, start.x, alpha, &costMap);
    EXPECT_EQ(parents, scene.parents(start.y, start.x, alpha));
    ASSERT_EQ(parents.size(), found.total());
    const cv::Mat1d expected = shortestCosts(scene, start, alpha);
    const auto at = [&](int node) { return cv::Point(node % found.cols, node / found.cols); };
    for (std::size_t n = 0; n < parents.size(); ++n) {
        const cv::Point pixel = at(static_cast<int>(n));
        const double best = expected(pixel);
        ASSERT_EQ(parents[n] == -1, std::isinf(best));
        if (parents[n] == -1) {
            EXPECT_EQ(found(pixel), kPathUnreached);
            continue;
        }
        const double tolerance = 1e-9 * (1.0 + best);
        EXPECT_NEAR(found(pixel), best, tolerance);
        const cv::Point parent = at(parents[n]);
        EXPECT_EQ(parent == pixel, pixel == start);
        EXPECT_NEAR(expected(parent) + stepCost(scene, parent, pixel, alpha), best, tolerance);
    }
}

TEST(EdgePath, CostsAndParentsMatchBellmanFord) {
    unsigned seed = 0;
    for (const cv::Point size : {cv::Point(7, 5), {1, 9}, {9, 1}, {1, 1}, {4, 11}}) {
        for (const double alpha : {0.0, 0.3, 1.0}) {
            expectShortestPaths(Scene(size.x, size.y, ++seed, 1), {0, 0}, alpha);
            expectShortestPaths(Scene(size.x, size.y, ++seed, 6), {size.x - 1, size.y / 2}, alpha);
        }
    }
}

TEST(EdgePath, TheFirstOfTwoEqualOffersStands) {
    Scene scene(3, 3, 1, 1);
    scene.pixels.setTo(0);
    // With alpha 1 and one colour, (2, 1) is reached for 1 + sqrt(2) through (1, 0) and (1, 1); the
    // diagonal step to (1, 1) makes it the later one to be expanded.
    const std::vector<int> parents = scene.parents(0, 0, 1.0);
    EXPECT_EQ(parents[4], 0);
    EXPECT_EQ(parents[7], 3);
}

TEST(EdgePath, LabelsMayBeMissingOrBeTheCostMap) {
    Scene scene(9, 7, 3, 3);
    const std::vector<int> expected = scene.parents(3, 4, 1.0);
    EXPECT_EQ(find_parent_info(&scene.image, &scene.labels, 3, 4, 1.0, &scene.labels), expected);
    EXPECT_EQ(scene.codes(3, 4), 0);
    scene.codes.setTo(0);
    EXPECT_EQ(find_parent_info(&scene.image, nullptr, 2, 3, 0.3), scene.parents(2, 3, 0.3));
}

TEST(EdgePath, BadRequestsGiveNoPath) {
    Scene scene(4, 4, 1, 1);
    Scene narrow(3, 4, 1, 1);
    IplImage* image = &scene.image;
    IplImage* labels = &scene.labels;
    for (const std::vector<int>& parents :
         {find_parent_info(nullptr, labels, 0, 0, 0.5), find_parent_info(labels, labels, 0, 0, 0.5),
          find_parent_info(image, &narrow.labels, 0, 0, 0.5), scene.parents(4, 0, 0.5),
          scene.parents(0, -1, 0.5), find_parent_info(image, labels, 0, 0, 0.5, nullptr),
          find_parent_info(image, labels, 0, 0, 0.5, &narrow.labels)}) {
        EXPECT_TRUE(parents.empty());
    }
}

TEST(MinPriorityQueue, OfEqualOnesTheEarlierComesFirst) {
    MinPriorityQueue queue;
    for (int k = 0; k < 4; ++k) {
        queue.push({k, 7.0});
    }
    EXPECT_EQ(queue.m_position, (std::vector{1, 2, 3, 4}));
    // The last entry takes the root's place and, not dearer than its children, stays there.
    EXPECT_EQ(queue.pop_min().index, 0);
    EXPECT_EQ(queue.m_heap[1].index, 3);
}

TEST(MinPriorityQueue, EmptyPopPrintsAndReturnsTheSentinel) {
    MinPriorityQueue queue;
    testing::internal::CaptureStdout();
    const Qnode none = queue.pop_min();
    std::fflush(stdout);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "Empty queue\n");
    EXPECT_EQ(std::pair(none.index, none.cost), std::pair(-1, -1.0));
    queue.push({0, 2.0});
    EXPECT_THROW(queue.push({5, 1.0}), std::out_of_range);  // breaks the order of indices
}

}  // namespace
